// SPDX-License-Identifier: MIT
// Shows warnings and fatal errors, and starts the unwinding of a run.
#include "ground/fatal_error.h"

#include "ground/log.h"
#include "ground/output_file.h"
#include "ground/platform.h"
#include "ground/printable_text.h"
#include "ground/recovery_frame.h"
#include "ground/run_state.h"

#include <cstdio>

static constexpr int TextLimit = 256;      // characters loaded of a catalogue text
static constexpr int ExpandedLimit = 400;  // characters of a filled message

void WriteFatalFile(const char* text) {
    EndWithOutput("ERRMSG: ", text, "\n");
}

void ShowMessage(bool isFatal, const char* text) {
    if (Run.Process.ConsoleMode) {  // set-up has no output file yet, also not for a fatal message
        PutPrintable(stdout, text);
        std::fputc('\n', stdout);
        std::fflush(stdout);
        return;
    }
    if (isFatal) {
        WriteFatalFile(text);
    }
    LogAppend(text);
}

void ReportWarning(Message id, const MessageArgument* arguments) {
    ReleaseMouseCapture();
    char text[ExpandedLimit];
    ExpandCatalogueText(id, arguments, TextLimit, text, ExpandedLimit);
    ShowMessage(false, text);
}

// The report proper, under a guard: an error raised within it resumes here and ends the report.
static void ReportUnderGuard(Message id, const MessageArgument* arguments) {
    RecoveryFrame guard = {};
    RecoveryFrame* const top = Run.Report.ErrorFrameTop;
    PushRecoveryFrame(guard);
    Run.Report.ErrorFrameTop = top;  // the guard isn't part of the chain
    Run.Report.FatalGuardFrame = &guard;
    if (!SAVE_CONTEXT(guard)) {
        ReleaseMouseCapture();
        Run.Report.LastErrorCode = static_cast<int>(id);
        if (Run.Report.ReportFatalFlag) {
            char text[ExpandedLimit];
            ExpandCatalogueText(id, arguments, TextLimit, text, ExpandedLimit);
            ShowMessage(true, text);
        } else {
            Run.Report.ReportFatalFlag = 1;
        }
    }
    Run.Report.FatalGuardFrame = nullptr;
}

void ReportFatalError(Message id, const MessageArgument* arguments) {
    if (Run.Report.FatalGuardFrame == nullptr) {
        ReportUnderGuard(id, arguments);
    }
    RaiseError();
    EndProcess(3);  // a fatal error is raised at the depth of its frame, and so RaiseError doesn't come back
}
