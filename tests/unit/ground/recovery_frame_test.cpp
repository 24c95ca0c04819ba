// SPDX-License-Identifier: MIT
// The chain of recovery frames, where an error resumes and how it is passed on; polling and the silent stop.
#include "ground/fatal_error.h"
#include "ground/message_poll.h"
#include "ground/platform.h"
#include "ground/recovery_frame.h"
#include "shell/process_entry.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

static constexpr int StopCode = static_cast<int>(Message::SilentStop);
static std::string Trace;  // what the frames did, in order

class RecoveryFrames : public testing::Test {
protected:
    void SetUp() override {
        ResetRun();
        Trace.clear();
        PlatformMessage message;
        while (TakeMessage(&message)) {
        }
    }
    void TearDown() override { ResetRun(); }
};

// A scope that notes its clean-up and passes the error on.
static void GuardedScope(const char* name, void (*inner)()) {
    RecoveryFrame frame;
    PushRecoveryFrame(frame);
    if (SAVE_CONTEXT(frame)) {
        Trace += std::string(name) + " ";
        PopRecoveryFrame(0);
        return;
    }
    inner();
    PopRecoveryFrame(0);
}

static void Raise() {
    ::Run.Report.LastErrorCode = StopCode;
    RaiseError();
}

static void RaiseWithoutCode() {
    ::Run.Report.LastErrorCode = 0;
    RaiseError();
}

// The outermost scope, which ends the error as the process does.
static void OutermostScope(void (*inner)()) {
    RecoveryFrame frame;
    PushRecoveryFrame(frame);
    if (SAVE_CONTEXT(frame)) {
        Trace += "process ";
        PopRecoveryFrame(1);
        return;
    }
    inner();
    PopRecoveryFrame(1);
}

TEST_F(RecoveryFrames, ChainUnwindsFromTheNewestToTheOldest) {
    OutermostScope([] { GuardedScope("run", [] { GuardedScope("reader", Raise); }); });
    EXPECT_EQ(Trace, "reader run process ");
    EXPECT_EQ(::Run.Report.LastErrorCode, 0);
    EXPECT_EQ(::Run.Report.ErrorFrameTop, nullptr);
}

TEST_F(RecoveryFrames, ErrorWithoutCodeIsNotPassedOn) {
    OutermostScope([] { GuardedScope("run", [] { GuardedScope("reader", RaiseWithoutCode); }); });
    EXPECT_EQ(Trace, "reader ");
}

TEST_F(RecoveryFrames, OrdinaryWayOutRaisesNothing) {
    OutermostScope([] { GuardedScope("run", [] { ::Run.Report.LastErrorCode = StopCode; }); });
    EXPECT_EQ(Trace, "");
    EXPECT_EQ(::Run.Report.LastErrorCode, 0);  // the last frame clears it
}

TEST_F(RecoveryFrames, FinalPopKeepsTheCodeWhileAnOlderFrameIsRaised) {
    RecoveryFrame older;
    RecoveryFrame newer;
    PushRecoveryFrame(older);
    PushRecoveryFrame(newer);
    older.Raised = 1;
    ::Run.Report.LastErrorCode = StopCode;
    PopRecoveryFrame(1);
    EXPECT_EQ(::Run.Report.LastErrorCode, StopCode);
    EXPECT_EQ(::Run.Report.ErrorFrameTop, &older);
    PopRecoveryFrame(1);
    EXPECT_EQ(::Run.Report.LastErrorCode, 0);
}

TEST_F(RecoveryFrames, FinalPopKeepsTheCodeUnderAGuard) {
    RecoveryFrame frame;
    RecoveryFrame guard;
    PushRecoveryFrame(frame);
    ::Run.Report.FatalGuardFrame = &guard;
    ::Run.Report.LastErrorCode = StopCode;
    PopRecoveryFrame(0);
    EXPECT_EQ(::Run.Report.LastErrorCode, StopCode);
    ::Run.Report.FatalGuardFrame = nullptr;
}

TEST_F(RecoveryFrames, PushFillsTheFrame) {
    RecoveryFrame older;
    RecoveryFrame newer;
    newer.Raised = 5;
    PushRecoveryFrame(older);
    PushRecoveryFrame(newer);
    EXPECT_EQ(newer.Previous, &older);
    EXPECT_EQ(newer.Raised, 0);
    EXPECT_EQ(::Run.Report.ErrorFrameTop, &newer);
    ::Run.Report.ErrorFrameTop = nullptr;
}

// An error raised within the reporting of one resumes the guard, not the run: the frame of the run is only
// marked.
static void RaiseUnderANewerGuard() {
    RecoveryFrame guard = {};
    if (SAVE_CONTEXT(guard)) {
        Trace += "guard ";
        ::Run.Report.FatalGuardFrame = nullptr;
        EXPECT_EQ(::Run.Report.ErrorFrameTop->Raised, 1);
        return;
    }
    ::Run.Report.FatalGuardFrame = &guard;
    ::Run.Report.LastErrorCode = 1;
    RaiseError();
}

TEST_F(RecoveryFrames, NewerGuardIsResumedFirst) {
    OutermostScope([] { GuardedScope("run", RaiseUnderANewerGuard); });
    EXPECT_EQ(Trace, "guard process ");
}

TEST_F(RecoveryFrames, EmptyChainEndsTheProcess) {
    EXPECT_EQ(ExitCodeOfChild([] { RaiseError(); }), 3);
}

TEST_F(RecoveryFrames, SilentFatalErrorUnwindsAndResetsItsFlag) {
    TemporaryDirectory work;
    UseFilesIn(work.Path);
    OutermostScope([] {
        GuardedScope("run", [] {
            ::Run.Report.ReportFatalFlag = 0;
            FatalError(Message::SilentStop);
        });
    });
    EXPECT_EQ(Trace, "run process ");
    EXPECT_EQ(::Run.Report.ReportFatalFlag, 1);
    EXPECT_EQ(::Run.Report.FatalGuardFrame, nullptr);
    EXPECT_EQ(::Run.Report.LastErrorCode, 0);
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), "(no file)");
    EXPECT_EQ(ReadText(work.Path + "/run.log"), "(no file)");
    ::Run.Job.LogFilePath = nullptr;
}

class Polling : public RecoveryFrames {
protected:
    void SetUp() override {
        RecoveryFrames::SetUp();
        RegisterWindowClass("braisag", MainWindowProc);
        Window = CreateMainWindow("braisag", "Velkoran");
    }
    PlatformWindow* Window = nullptr;
};

TEST_F(Polling, YieldsOnceEnoughWorkHasComeTogether) {
    ::Run.Report.PollShift = 13;
    PostWindowMessage(Window, ExternalEventMessage);
    PollMessages(8191);
    PollMessages(1);
    EXPECT_EQ(::Run.Process.ExternalEventSeen, 0);
    EXPECT_EQ(::Run.Report.PollCounter, 8192);
    PollMessages(5);
    EXPECT_EQ(::Run.Process.ExternalEventSeen, 1);
    EXPECT_EQ(::Run.Report.PollCounter, 5);
}

TEST_F(Polling, WithoutAShiftEveryCallWithACounterYields) {
    PostWindowMessage(Window, ExternalEventMessage);
    PollMessages(1);
    EXPECT_EQ(::Run.Process.ExternalEventSeen, 0);
    PollMessages(0);
    EXPECT_EQ(::Run.Process.ExternalEventSeen, 1);
    EXPECT_EQ(::Run.Report.PollCounter, 0);
}

TEST_F(Polling, CounterIsShiftedArithmetically) {
    ::Run.Report.PollShift = 13;
    ::Run.Report.PollCounter = -1;
    PostWindowMessage(Window, ExternalEventMessage);
    PollMessages(2);
    EXPECT_EQ(::Run.Process.ExternalEventSeen, 1);
    EXPECT_EQ(::Run.Report.PollCounter, 2);
}

TEST_F(Polling, OneYieldHandlesOneMessage) {
    PostWindowMessage(Window, ExternalEventMessage);
    PostWindowMessage(Window, QuitMessage + 1);
    PostQuit();
    YieldMessages();
    EXPECT_EQ(::Run.Process.ExternalEventSeen, 1);
    PlatformMessage message;
    ASSERT_TRUE(TakeMessage(&message));
    EXPECT_EQ(message.Id, QueryOpenMessage);
    EXPECT_EQ(::Run.Process.QuitRequested, 0);
}

TEST_F(Polling, QuitMessageUnwindsSilently) {
    TemporaryDirectory work;
    UseFilesIn(work.Path);
    PostQuit();
    OutermostScope([] { GuardedScope("run", YieldMessages); });
    EXPECT_EQ(Trace, "run process ");
    EXPECT_EQ(::Run.Process.QuitRequested, 1);
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), "(no file)");
    ::Run.Job.LogFilePath = nullptr;
}

TEST_F(Polling, CloseMessageDestroysTheWindowAndTheNextPollStops) {
    PostWindowMessage(Window, CloseMessage);
    OutermostScope([] {
        GuardedScope("run", [] {
            YieldMessages();
            Trace += "closed ";
            YieldMessages();
            Trace += "never ";
        });
    });
    EXPECT_EQ(Trace, "closed run process ");
}
