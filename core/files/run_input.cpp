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
