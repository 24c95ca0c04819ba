// SPDX-License-Identifier: MIT
// Looks at the message queue from within the readers and the numeric loops.
#include "ground/message_poll.h"

#include "ground/fatal_error.h"
#include "ground/platform.h"
#include "ground/recovery_frame.h"
#include "ground/run_state.h"

static constexpr int ReadingUnits = 4096;  // between two looks of a reader

void PollMessages(int units) {
    if ((Run.Report.PollCounter >> Run.Report.PollShift) != 0) {
        YieldMessages();
        Run.Report.PollCounter = 0;
    }
    Run.Report.PollCounter += units;
}

// False if there is no message.
static bool LookAtMessage() {
    PlatformMessage message;
    if (!TakeMessage(&message)) {
        DeliverPendingRaise();  // taking a message can run the window procedure
        return false;
    }
    if (message.Id == QuitMessage) {
        Run.Process.QuitRequested = 1;
        Run.Report.ReportFatalFlag = 0;
        FatalError(Message::SilentStop);  // on purpose an id without text: the stop of a run is silent
    }
    DispatchPlatformMessage(&message);
    DeliverPendingRaise();
    return true;
}

void YieldMessages() {
    LookAtMessage();
}

void PollReading(int units) {
    if (Run.Report.PollCounter >= ReadingUnits) {
        YieldMessages();
        Run.Report.PollCounter = 0;
    }
    Run.Report.PollCounter += units;
}

void YieldAllMessages() {
    while (LookAtMessage()) {
    }
}
