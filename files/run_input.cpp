// SPDX-License-Identifier: MIT
// Opens the input file of a run, has it read, and does the closing steps.
#include "files/run_input.h"

#include "files/parameter_input.h"
#include "files/spectrum_input.h"
#include "shell/fatal_error.h"
#include "shell/memory.h"
#include "shell/platform.h"
#include "shell/recovery_frame.h"
#include "shell/run_state.h"

static void FinishRunInput() {
    if (Run.CalculateSpectra && (Run.CalculateShielding || Run.CalculateCoupling)) {
        FatalError(24707);
    }
    if (Run.RunKind == ParameterRun) {
        CheckNeighbours();
    }
    if (Run.LogEnabled && Run.LogPrintLevel >= 10) {
        Run.LogEnabled = 0;
    }
    Run.ActiveRunKind = Run.RunKind;
    PopRecoveryFrame(0);
}

void ReadRunInput() {
    RecoveryFrame frame;
    PushRecoveryFrame(frame);
    if (SAVE_CONTEXT(frame)) {
        FreeArray(Run.NucleiInGroup);
        FreeArray(Run.ChemicalShifts);
        FreeArray(Run.CouplingMatrix);
        FreeArray(Run.NMRAtomList);
        FreeArray(Run.AtomRecords);
        FreeArray(Run.AtomCoordinates);
        FreeParameterInputWork();
        PopRecoveryFrame(0);
        RaiseError();  // what unwinds without an error of its own, as a nested run does, goes on too
        return;
    }
    const char* path = Run.InputFilePath;
    std::FILE* file = OpenFile(path, "r");
    if (file == nullptr) {
        FatalError(24608, path);
    }
    if (Run.RunKind == SpectrumRun) {
        ReadSpectrumInput(file);
    } else {
        ReadParameterInput(file);
    }
    FinishRunInput();
}
