// SPDX-License-Identifier: MIT
// Tests of the instance set-up and of the window procedure on a platform that writes down what it is asked for.
#include "ground/memory.h"
#include "ground/platform.h"
#include "ground/run_state.h"
#include "shell/process_entry.h"
#include "tests/instance_setup/fake_platform.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <unistd.h>

static void StartAfresh() {
    FreeArray(Run.Job.ParameterField);
    FreeArray(Run.Job.WorkField);
    FreeArray(Run.Job.LogFilePath);
    FreeArray(Run.Job.ParameterDirectory);
    FreeArray(Run.Job.WorkDirectory);
    Run = RunState();
    Fake = FakePlatformState();
}

class InstanceSetup : public testing::Test {
protected:
    void SetUp() override { StartAfresh(); }
    void TearDown() override { StartAfresh(); }
};

static bool WasAsked(const std::string& call) {
    return std::find(Fake.Calls.begin(), Fake.Calls.end(), call) != Fake.Calls.end();
}

// Runs the process with standard output on standard error, where a death test looks.
static void RunProcess() {
    dup2(STDERR_FILENO, STDOUT_FILENO);
    ProcessEntry("");
}

TEST_F(InstanceSetup, AsksThePlatformInOrder) {
    Fake.Messages = {QuitMessage};
    EXPECT_EQ(ProcessEntry("p w 2 l"), 0);
    const std::vector<std::string> expected = {"StartSockets 257",
                                               "ReadRegistryWord \"\" UseSockets",
                                               "RegisterWindowClass braisag",
                                               "RegisterFormat Packet",
                                               "CreateMainWindow braisag Velkoran",
                                               "GetWindowMenu",
                                               "DeleteMenuEntry 8",
                                               "DeleteMenuEntry 7",
                                               "DeleteMenuEntry 5",
                                               "DeleteMenuEntry 4",
                                               "DeleteMenuEntry 3",
                                               "DeleteMenuEntry 2",
                                               "DeleteMenuEntry 0",
                                               "AppendMenuSeparator",
                                               "AppendMenuEntry 100 About Velkoran...",
                                               "ShowWindowMinimised",
                                               "PostWindowMessage 1024"};
    EXPECT_EQ(Fake.Calls, expected);
    EXPECT_STREQ(::Run.Job.ParameterField, "p");
    EXPECT_STREQ(::Run.Job.WorkField, "w");
    EXPECT_STREQ(::Run.Job.LogFilePath, "l");
    EXPECT_EQ(::Run.Job.RunKind, SpectrumRun);
    EXPECT_EQ(::Run.Process.PacketFormat, 49152u);
}

TEST_F(InstanceSetup, EndsAtOnceWithoutSockets) {
    Fake.Failing = "StartSockets";
    EXPECT_EQ(ProcessEntry("p w 2 l"), 0);
    EXPECT_EQ(Fake.Calls.size(), 1u);
}

TEST_F(InstanceSetup, RegistersNoFormatWhenSocketsAreUsed) {
    Fake.RegistryAnswer = 1;
    Fake.RegistryValue = 5;
    Fake.Messages = {QuitMessage};
    ProcessEntry("");
    EXPECT_EQ(::Run.Process.UseSockets, 1u);
    EXPECT_FALSE(WasAsked("RegisterFormat Packet"));
}

TEST_F(InstanceSetup, RegistersTheFormatWhenTheValueIsZeroOrUnreadable) {
    for (const int answer : {0, 1}) {
        StartAfresh();
        Fake.RegistryAnswer = answer;
        Fake.RegistryValue = answer == 0 ? 5 : 0;  // a value that couldn't be read doesn't count
        Fake.Messages = {QuitMessage};
        ProcessEntry("");
        EXPECT_EQ(::Run.Process.UseSockets, 0u);
        EXPECT_TRUE(WasAsked("RegisterFormat Packet"));
    }
}

// Set-up has no output file yet, so the message goes to standard output, and there is no frame to resume: the process
// ends abnormally.
TEST_F(InstanceSetup, SaysOnStandardOutputWhatFails) {
    for (const char* operation : {"RegisterWindowClass", "CreateMainWindow", "GetWindowMenu"}) {
        Fake.Failing = operation;
        EXPECT_EXIT(RunProcess(), testing::ExitedWithCode(3), "This application has exhausted all available memory.")
            << operation;
    }
    Fake.Failing = "";
    for (const unsigned id : {0u, 49151u, 65536u}) {
        Fake.FormatId = id;
        EXPECT_EXIT(RunProcess(), testing::ExitedWithCode(3), "This application has exhausted all available memory.")
            << id;
    }
}

TEST_F(InstanceSetup, AnswersTheMessagesOfTheWindow) {
    PlatformWindow* window = CreateMainWindow("braisag", "Velkoran");
    EXPECT_EQ(MainWindowProc(window, QueryOpenMessage, 0, 0), 0);
    EXPECT_EQ(MainWindowProc(window, SystemCommandMessage, 61536, 0), 77);
    EXPECT_EQ(MainWindowProc(window, 5, 0, 0), 77);
    EXPECT_EQ(MainWindowProc(window, ExternalEventMessage, 0, 0x00070009), 0);
    EXPECT_EQ(::Run.Process.ExternalEventSeen, 1);
    EXPECT_EQ(::Run.Process.ExternalEventHigh, 7u);
    EXPECT_EQ(::Run.Process.ExternalEventLow, 9u);
}

TEST_F(InstanceSetup, ClosesTheWindowWhenNoAboutBoxIsOpen) {
    PlatformWindow* window = CreateMainWindow("braisag", "Velkoran");
    MainWindowProc(window, CloseMessage, 0, 0);
    EXPECT_TRUE(WasAsked("DestroyPlatformWindow main"));
    EXPECT_TRUE(WasAsked("PostQuit"));
}

TEST_F(InstanceSetup, KeepsACloseRequestUntilTheAboutBoxIsClosed) {
    PlatformWindow* window = CreateMainWindow("braisag", "Velkoran");
    Fake.DialogMessages = {CloseMessage};
    EXPECT_EQ(MainWindowProc(window, SystemCommandMessage, 100, 0), 0);
    EXPECT_EQ(::Run.Process.CloseAfterAbout, 1);
    const std::vector<std::string> expected = {"CreateMainWindow braisag Velkoran", "RunAboutDialog",
                                               "DestroyPlatformWindow main", "PostQuit"};
    EXPECT_EQ(Fake.Calls, expected);
}

TEST_F(InstanceSetup, DestroysAnOpenAboutBoxWithItsWindow) {
    PlatformWindow* window = CreateMainWindow("braisag", "Velkoran");
    Fake.DialogMessages = {DestroyMessage};
    MainWindowProc(window, SystemCommandMessage, 100, 0);
    EXPECT_TRUE(WasAsked("DestroyPlatformWindow dialog"));
    EXPECT_TRUE(WasAsked("PostQuit"));
}
