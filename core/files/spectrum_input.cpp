// SPDX-License-Identifier: MIT
// Reads nmrspect.in line by line. A step's number is what a failure reports.
#include "files/spectrum_input.h"

#include "files/text_scan.h"
#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/run_state.h"
#include "numerics/factorial.h"
#include "spectrum/spin_system.h"

static constexpr double SmallestMinimalIntensity = 1e-08;

[[noreturn]] static void FailAtStep(int step) {
    const char* path = Run.InputFilePath;
    FatalError(24626, step, path);
}

// Reads the line of a step into line[LineSize].
static void ReadStepLine(std::FILE* file, int step, char* line) {
    if (!ReadLine(file, line)) {
        FailAtStep(step);
    }
}

// A heading: a line that must be there and isn't used.
static void ReadHeading(std::FILE* file, int step) {
    char line[LineSize];
    ReadStepLine(file, step, line);
}

static int ReadIntegerLine(std::FILE* file, int step) {
    int value;
    if (!ReadInteger(file, &value)) {
        FailAtStep(step);
    }
    return value;
}

static void SetDefaults() {
    Run.CalculateSpectra = 1;
    Run.CalculateShielding = 0;
    Run.CalculateCoupling = 0;
    Run.LogPrintLevel = 0;
    Run.NMRFrequency = 100;
}

static void AllocateSpinSystem() {
    FreeArray(Run.IsotopicNumbers);
    FreeArray(Run.NucleiInGroup);
    FreeArray(Run.ChemicalShifts);
    FreeArray(Run.CouplingMatrix);
    const long long n = Run.SpinGroupCount;
    Run.IsotopicNumbers = AllocateArray<int>(n);
    Run.NucleiInGroup = AllocateArray<int>(n);
    Run.ChemicalShifts = AllocateArray<double>(n);
    Run.CouplingMatrix = AllocateArray<double>(n * n);
    if (Run.IsotopicNumbers == nullptr || Run.NucleiInGroup == nullptr || Run.ChemicalShifts == nullptr ||
        Run.CouplingMatrix == nullptr) {
        FatalError(24576);
    }
}

// Isotopic numbers, which must all be there, then numbers of nuclei: from the first that is missing on they are 1.
static void ReadIsotopesAndNuclei(std::FILE* file, int step) {
    char line[LineSize];
    ReadStepLine(file, step, line);
    const char* text = line;
    for (int i = 0; i < Run.SpinGroupCount; ++i) {
        if (!ScanInteger(text, &Run.IsotopicNumbers[i])) {
            FailAtStep(step);
        }
    }
    bool missing = false;
    for (int i = 0; i < Run.SpinGroupCount; ++i) {
        missing = missing || !ScanInteger(text, &Run.NucleiInGroup[i]);
        if (missing) {
            Run.NucleiInGroup[i] = 1;
        } else if (Run.NucleiInGroup[i] < 0 || Run.NucleiInGroup[i] > LargestGroup) {
            FailAtStep(step);
        }
    }
}

// A line of SpinGroupCount numbers of a size that can be rounded to thousandths.
static void ReadRealRow(std::FILE* file, int step, double* row) {
    char line[LineSize];
    ReadStepLine(file, step, line);
    const char* text = line;
    for (int i = 0; i < Run.SpinGroupCount; ++i) {
        if (!ScanReal(text, &row[i]) || !CanBeRounded(row[i])) {
            FailAtStep(step);
        }
    }
}

static void ReadCouplings(std::FILE* file, int firstStep) {
    const int n = Run.SpinGroupCount;
    for (int i = 0; i < n; ++i) {
        ReadRealRow(file, firstStep + i, Run.CouplingMatrix + static_cast<long long>(i) * n);
    }
    for (int i = 0; i < n; ++i) {
        for (int j = i + 1; j < n; ++j) {
            Run.CouplingMatrix[j * n + i] = Run.CouplingMatrix[i * n + j];
        }
    }
}

static void ReadMinimalIntensity(std::FILE* file, int step) {
    if (!ReadReal(file, &Run.MinimalIntensity)) {
        FailAtStep(step);
    }
    if (Run.MinimalIntensity <= SmallestMinimalIntensity) {
        char text[LineSize];
        std::snprintf(text, sizeof text, "The minimal inetensity (%e) you have set may be too small",
                      Run.MinimalIntensity);
        WriteFatalFile(text);  // on purpose the end of the run, in spite of the wording
    }
}

void ReadSpectrumInput(std::FILE* file) {
    const char* path = Run.InputFilePath;
    SetDefaults();
    ReadHeading(file, 1);
    Run.SpinGroupCount = ReadIntegerLine(file, 2);
    const int n = Run.SpinGroupCount;
    if (n <= 0) {
        FatalError(24610, n, path);
    }
    AllocateSpinSystem();
    ReadIsotopesAndNuclei(file, 3);
    ReadHeading(file, 4);
    Run.NMRFrequency = ReadIntegerLine(file, 5);
    if (Run.NMRFrequency == 0) {
        FatalError(24627, path);
    }
    ReadHeading(file, 6);
    ReadRealRow(file, 7, Run.ChemicalShifts);
    ReadHeading(file, 8);
    ReadCouplings(file, 9);
    ReadHeading(file, n + 9);
    ReadMinimalIntensity(file, n + 10);
    ReadHeading(file, n + 11);
    Run.UseWeakCoupling = ReadIntegerLine(file, n + 12);
    const bool damaged = std::ferror(file) != 0;
    std::fclose(file);
    if (damaged) {
        FatalError(24624, path);
    }
}
