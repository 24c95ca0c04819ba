// SPDX-License-Identifier: MIT
// Opens the input file of a run, has it read, and does the closing steps.
#include "files/run_input.h"

#include "files/parameter_input.h"
#include "files/spectrum_input.h"
#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/platform.h"
#include "ground/recovery_frame.h"
#include "ground/run_state.h"

static void FinishRunInput() {
    if (Run.Options.CalculateSpectra && (Run.Options.CalculateShielding || Run.Options.CalculateCoupling)) {
        FatalError(Message::ParametersAndSpectrumAtOnce);
    }
    if (Run.Job.RunKind == ParameterRun) {
        CheckNeighbours();
    }
    if (Run.Report.LogEnabled && Run.Options.LogPrintLevel >= 10) {
        Run.Report.LogEnabled = 0;
    }
    Run.Job.ActiveRunKind = Run.Job.RunKind;
    PopRecoveryFrame(0);
}

void ReadRunInput() {
    RecoveryFrame frame;
    PushRecoveryFrame(frame);
    if (SAVE_CONTEXT(frame)) {
        FreeNotedArrays();
        PopRecoveryFrame(0);
        return;
    }
    const char* path = Run.Job.InputFilePath;
    std::FILE* file = OpenFile(path, "r");
    if (file == nullptr) {
        FatalError(Message::InputFileNotOpened, path);
    }
    if (Run.Job.RunKind == SpectrumRun) {
        ReadSpectrumInput(file);
    } else {
        ReadParameterInput(file);
    }
    FinishRunInput();
}
