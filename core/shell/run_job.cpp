// SPDX-License-Identifier: MIT
// Drives one run: composes its file names, reads its input, computes, writes its results.
#include "shell/run_job.h"

#include "files/atom_selection.h"
#include "files/parameter_files.h"
#include "files/result_writer.h"
#include "files/run_input.h"
#include "ground/file_path.h"
#include "ground/memory.h"
#include "ground/recovery_frame.h"
#include "ground/run_state.h"
#include "nmr/calculate_nmr_parameters.h"

#include <cstring>

// Files of the two kinds of run in the work directory.
static constexpr struct {
    const char* Input;
    const char* Output;
} FileNames[] = {{"nmrparam.in", "nmrparam.out"}, {"nmrspect.in", "nmrspect.out"}};

// Copies a field to a directory, and appends a backslash unless it has one.
static void FormDirectory(const char* field, bool terminated, char* directory) {
    std::strcpy(directory, field);
    if (!terminated) {
        std::strcat(directory, "\\");
    }
}

// The test of the parameter directory looks, on purpose, at the work directory: at the place where the parameter
// directory ends. Front ends that hand over the same directory twice never notice; the others put up with it.
static void FormDirectories() {
    const std::size_t length = std::strlen(Run.Job.ParameterField);
    const std::size_t workLength = std::strlen(Run.Job.WorkField);
    const bool terminated = length > 0 && length <= workLength && Run.Job.WorkField[length - 1] == '\\';
    const bool workTerminated = workLength > 0 && Run.Job.WorkField[workLength - 1] == '\\';
    FormDirectory(Run.Job.ParameterField, terminated, Run.Job.ParameterDirectory);
    FormDirectory(Run.Job.WorkField, workTerminated, Run.Job.WorkDirectory);
}

static void ComputeAndReport() {
    CalculateNmrParameters();
    WriteResults();
}

void RunOneJob(int kind) {
    RecoveryFrame frame;
    PushRecoveryFrame(frame);
    if (SAVE_CONTEXT(frame)) {
        FreeRunData();
        FreeNotedArrays();  // of the parameter files, which are read before the first call of FreeRunData
        PopRecoveryFrame(0);
        return;
    }
    Run.Job.RunKind = kind;
    Run.Job.QuietFlag = 0;
    Run.Job.SystemCount = 1;
    FormDirectories();
    Run.Report.LogEnabled = Run.Job.LogFilePath[0] != '\0' ? 1 : 0;
    ComposePath(FileNames[kind - 1].Input, Run.Job.WorkDirectory, Run.Job.InputFilePath);
    ComposePath(FileNames[kind - 1].Output, Run.Job.WorkDirectory, Run.Job.OutputFilePath);
    if (kind == ParameterRun) {
        ReadParameterFiles();
    }
    FreeRunData();
    ReadRunInput();
    if (kind == ParameterRun) {
        BuildCappingAtoms();
        BuildSelectedAtomList();
    }
    ComputeAndReport();
    PopRecoveryFrame(0);  // the run's data stay: the process is about to end
}
