// SPDX-License-Identifier: MIT
// The window procedure message by message, and the process from its entry to its exit with messages posted
// ahead.
#include "ground/platform.h"
#include "ground/platform_linux.h"
#include "shell/process_entry.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

static constexpr char OneSpin[] = "title\n1\n1\nh\n100\nh\n1.25\nh\n0\nh\n0.001\nh\n0\n";
static constexpr char OneSpinResult[] =
    "This is a comment line.\n1\nFREQUNCY INTENSITY DEGENERACY LINEWIDTH\n125.000 1.000 1 0\n";

static const std::string Twelve =
    "title\n6\n1 1 1 1 1 1\nh\n100\nh\n1 2 3 4 5 6\nh\n0 5 5 5 5 5\n0 0 5 5 5 5\n0 0 0 5 5 5\n"
    "0 0 0 0 5 5\n0 0 0 0 0 5\n0 0 0 0 0 0\nh\n0.001\nh\n0\n";
static const std::string Progress = "\nComputing the NMR spectrum ...\n";

class WindowProcedure : public testing::Test {
protected:
    void SetUp() override {
        ResetRun();
        Drain();
        RegisterWindowClass("braisag", MainWindowProc);
        Window = CreateMainWindow("braisag", "Velkoran");
    }
    void TearDown() override {
        Drain();
        ResetRun();
    }
    static void Drain() {
        PlatformMessage message;
        while (TakeMessage(&message)) {
        }
    }
    // The id of the next message, or 0.
    static unsigned NextMessage() {
        PlatformMessage message;
        return TakeMessage(&message) ? message.Id : 0;
    }
    PlatformWindow* Window = nullptr;
};

TEST_F(WindowProcedure, ExternalEventStoresItsWords) {
    EXPECT_EQ(MainWindowProc(Window, ExternalEventMessage, 99, 0x1234abcd), 0);
    EXPECT_EQ(::Run.Process.ExternalEventSeen, 1);
    EXPECT_EQ(::Run.Process.ExternalEventHigh, 0x1234u);
    EXPECT_EQ(::Run.Process.ExternalEventLow, 0xabcdu);
}

TEST_F(WindowProcedure, IconRefusesToBeRestored) {
    EXPECT_EQ(MainWindowProc(Window, QueryOpenMessage, 0, 0), 0);
}

TEST_F(WindowProcedure, CloseDestroysTheWindowAndQuits) {
    EXPECT_EQ(MainWindowProc(Window, CloseMessage, 0, 0), 0);
    EXPECT_EQ(NextMessage(), QuitMessage);
    MainWindowProc(Window, CloseMessage, 0, 0);
    EXPECT_EQ(NextMessage(), 0u);  // there is no window any more that could be destroyed
}

TEST_F(WindowProcedure, CloseWaitsForTheAboutBox) {
    ::Run.Process.AboutDialog = Window;  // stands for the open box
    EXPECT_EQ(MainWindowProc(Window, CloseMessage, 0, 0), 0);
    EXPECT_EQ(::Run.Process.CloseAfterAbout, 1);
    EXPECT_EQ(NextMessage(), 0u);
    ::Run.Process.AboutDialog = nullptr;  // the box has been closed
    EXPECT_EQ(MainWindowProc(Window, SystemCommandMessage, 100, 0), 0);
    EXPECT_EQ(NextMessage(), QuitMessage);
}

TEST_F(WindowProcedure, AboutBoxAloneClosesNothing) {
    EXPECT_EQ(MainWindowProc(Window, SystemCommandMessage, 100, 0), 0);
    EXPECT_EQ(NextMessage(), 0u);
}

TEST_F(WindowProcedure, OtherSystemCommandsGoToTheDefault) {
    ::Run.Process.CloseAfterAbout = 1;
    MainWindowProc(Window, SystemCommandMessage, 101, 0);
    EXPECT_EQ(NextMessage(), 0u);
}

TEST_F(WindowProcedure, DestroyTakesTheAboutBoxAlong) {
    ::Run.Process.AboutDialog = Window;
    MainWindowProc(Window, DestroyMessage, 0, 0);
    EXPECT_EQ(::Run.Process.AboutDialog, nullptr);
}

TEST_F(WindowProcedure, UnknownMessagesDoNothing) {
    EXPECT_EQ(MainWindowProc(Window, 15, 1, 2), 0);
    EXPECT_EQ(NextMessage(), 0u);
}

// The process with a command line and with messages in the queue before its own start message.
struct ProcessOutcome {
    int ExitCode;
    std::string Output;
    std::string Log;
};

static ProcessOutcome RunProcess(
    const std::string& input, const std::vector<unsigned>& posted, const std::function<void()>& before = [] {}) {
    TemporaryDirectory work;
    WriteText(work.Path + "/nmrspect.in", input);
    ProcessOutcome outcome;
    outcome.ExitCode = ExitCodeOfChild([&] {
        RegisterWindowClass("braisag", MainWindowProc);
        PlatformWindow* window = CreateMainWindow("braisag", "Velkoran");
        for (const unsigned id : posted) {
            PostWindowMessage(window, id);
        }
        before();
        const std::string commandLine = work.Path + " " + work.Path + " 2 " + work.Path + "/run.log";
        std::exit(ProcessEntry(commandLine.c_str()));
    });
    outcome.Output = ReadText(work.Path + "/nmrspect.out");
    outcome.Log = ReadText(work.Path + "/run.log");
    return outcome;
}

TEST(ProcessEntry, RunsItsJobAndEnds) {
    const ProcessOutcome outcome = RunProcess(OneSpin, {});
    EXPECT_EQ(outcome.ExitCode, 0);
    EXPECT_EQ(outcome.Output, OneSpinResult);
}

TEST(ProcessEntry, OtherMessagesDoNoHarm) {
    const ProcessOutcome outcome = RunProcess(OneSpin, {QueryOpenMessage, ExternalEventMessage, SystemCommandMessage});
    EXPECT_EQ(outcome.ExitCode, 0);
    EXPECT_EQ(outcome.Output, OneSpinResult);
}

// A close message that waits when the run starts is seen at the first poll, and the stop at a poll after it.
TEST(ProcessEntry, CloseBeforeTheFirstPollStopsTheRun) {
    const ProcessOutcome outcome = RunProcess(OneSpin, {StartMessage, CloseMessage});
    EXPECT_EQ(outcome.ExitCode, 0);
    EXPECT_EQ(outcome.Output, "(no file)");
    EXPECT_EQ(outcome.Log, "(no file)");  // the reader looks first
}

// What stands behind a spectrum input keeps its reader from the end of the file, where it would take all messages: its
// few other looks take one of these each, and the calculation meets what is posted behind them.
static const std::string Behind = "end\n";
static constexpr int HarmlessMessages = 4;

static std::vector<unsigned> ForTheCalculation(unsigned message) {
    std::vector<unsigned> messages(1 + HarmlessMessages, QueryOpenMessage);
    messages.front() = StartMessage;
    messages.push_back(message);
    return messages;
}

TEST(ProcessEntry, CloseAtAPollOfTheCalculation) {
    const ProcessOutcome outcome = RunProcess(Twelve + Behind, ForTheCalculation(CloseMessage));
    EXPECT_EQ(outcome.ExitCode, 0);
    EXPECT_EQ(outcome.Output, "(no file)");
    EXPECT_EQ(outcome.Log.find(Progress), 0u);
    EXPECT_EQ(outcome.Log.find("NMR Spectrum ==="), std::string::npos);
}

TEST(ProcessEntry, CloseBeforeTheStartMeansNoRun) {
    const ProcessOutcome outcome = RunProcess(OneSpin, {CloseMessage});
    EXPECT_EQ(outcome.ExitCode, 0);
    EXPECT_EQ(outcome.Output, "(no file)");
    EXPECT_EQ(outcome.Log, "(no file)");
}

TEST(ProcessEntry, SignalBeforeTheStartMeansNoRun) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        const ProcessOutcome outcome = RunProcess(OneSpin, {}, [signal] {
            InstallStopSignals();
            std::raise(signal);
            std::raise(signal);
        });
        EXPECT_EQ(outcome.ExitCode, 0) << signal;
        EXPECT_EQ(outcome.Output, "(no file)") << signal;
    }
}

TEST(ProcessEntry, IgnoredSignalsStayIgnored) {
    for (const int signal : {SIGINT, SIGHUP}) {
        const ProcessOutcome outcome = RunProcess(OneSpin, {}, [signal] {
            std::signal(signal, SIG_IGN);
            InstallStopSignals();
            std::raise(signal);
        });
        EXPECT_EQ(outcome.ExitCode, 0) << signal;
        EXPECT_EQ(outcome.Output, OneSpinResult) << signal;
    }
}

TEST(ProcessEntry, IgnoredTerminationIsTakenBack) {
    const ProcessOutcome outcome = RunProcess(OneSpin, {}, [] {
        std::signal(SIGTERM, SIG_IGN);
        InstallStopSignals();
        std::raise(SIGTERM);
    });
    EXPECT_EQ(outcome.ExitCode, 0);
    EXPECT_EQ(outcome.Output, "(no file)");
}

// On purpose a second start message during a run isn't held off: it starts a nested run, whose result is the
// one that stands, and whose close message then ends the process.
TEST(ProcessEntry, SecondStartMessageStartsANestedRun) {
    const ProcessOutcome alone = RunProcess(Twelve + Behind, {});
    const ProcessOutcome nested = RunProcess(Twelve + Behind, ForTheCalculation(StartMessage));
    EXPECT_EQ(nested.ExitCode, 0);
    EXPECT_EQ(nested.Output, alone.Output);
    const std::size_t first = nested.Log.find(Progress);
    ASSERT_NE(first, std::string::npos);
    EXPECT_NE(nested.Log.find(Progress, first + 1), std::string::npos);
}

// The run that it interrupts is unwound from its reader and calculates nothing.
TEST(ProcessEntry, SecondStartMessageWithinTheReader) {
    const ProcessOutcome alone = RunProcess(Twelve, {});
    const ProcessOutcome nested = RunProcess(Twelve, {StartMessage});
    EXPECT_EQ(nested.ExitCode, 0);
    EXPECT_EQ(nested.Output, alone.Output);
    EXPECT_EQ(nested.Log, alone.Log);
}

TEST(ProcessEntry, ManyStartMessagesKeepWithinTheirBuffers) {
    const std::vector<unsigned> starts(10, StartMessage);
    const ProcessOutcome outcome = RunProcess(OneSpin, starts);
    EXPECT_EQ(outcome.ExitCode, 0);
    EXPECT_EQ(outcome.Output, OneSpinResult);
}
