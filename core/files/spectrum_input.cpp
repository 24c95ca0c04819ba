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
    const char* path = Run.Job.InputFilePath;
    FatalError(Message::UnreadableLine, step, path);
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
    Run.Options.CalculateSpectra = 1;
    Run.Options.CalculateShielding = 0;
    Run.Options.CalculateCoupling = 0;
    Run.Options.LogPrintLevel = 0;
    Run.Options.NMRFrequency = 100;
}

static void AllocateSpinSystem() {
    const long long n = Run.Spins.SpinGroupCount;
    if (!AllocateArray(Run.Spins.IsotopicNumbers, n) || !AllocateArray(Run.Spins.NucleiInGroup, n) ||
        !AllocateArray(Run.Spins.ChemicalShifts, n) || !AllocateArray(Run.Spins.CouplingMatrix, n * n)) {
        FatalError(Message::MoleculeTooLarge);
    }
}

// Isotopic numbers, which must all be there, then numbers of nuclei: from the first that is missing on they are 1.
static void ReadIsotopesAndNuclei(std::FILE* file, int step) {
    char line[LineSize];
    ReadStepLine(file, step, line);
    const char* text = line;
    for (int i = 0; i < Run.Spins.SpinGroupCount; ++i) {
        if (!ScanInteger(text, &Run.Spins.IsotopicNumbers[i])) {
            FailAtStep(step);
        }
    }
    bool missing = false;
    for (int i = 0; i < Run.Spins.SpinGroupCount; ++i) {
        missing = missing || !ScanInteger(text, &Run.Spins.NucleiInGroup[i]);
        if (missing) {
            Run.Spins.NucleiInGroup[i] = 1;
        } else if (Run.Spins.NucleiInGroup[i] < 0 || Run.Spins.NucleiInGroup[i] > LargestGroup) {
            FailAtStep(step);
        }
    }
}

// A line of SpinGroupCount numbers of a size that can be rounded to thousandths.
static void ReadRealRow(std::FILE* file, int step, double* row) {
    char line[LineSize];
    ReadStepLine(file, step, line);
    const char* text = line;
    for (int i = 0; i < Run.Spins.SpinGroupCount; ++i) {
        if (!ScanReal(text, &row[i]) || !CanBeRounded(row[i])) {
            FailAtStep(step);
        }
    }
}

static void ReadCouplings(std::FILE* file, int firstStep) {
    const int n = Run.Spins.SpinGroupCount;
    for (int i = 0; i < n; ++i) {
        ReadRealRow(file, firstStep + i, Run.Spins.CouplingMatrix + static_cast<long long>(i) * n);
    }
    for (int i = 0; i < n; ++i) {
        for (int j = i + 1; j < n; ++j) {
            Run.Spins.CouplingMatrix[j * n + i] = Run.Spins.CouplingMatrix[i * n + j];
        }
    }
}

static void ReadMinimalIntensity(std::FILE* file, int step) {
    if (!ReadReal(file, &Run.Options.MinimalIntensity)) {
        FailAtStep(step);
    }
    if (Run.Options.MinimalIntensity <= SmallestMinimalIntensity) {
        char text[LineSize];
        std::snprintf(text, sizeof text, "The minimal inetensity (%e) you have set may be too small",
                      Run.Options.MinimalIntensity);
        WriteFatalFile(text);  // on purpose the end of the run, in spite of the wording
    }
}

void ReadSpectrumInput(std::FILE* file) {
    const char* path = Run.Job.InputFilePath;
    SetDefaults();
    ReadHeading(file, 1);
    Run.Spins.SpinGroupCount = ReadIntegerLine(file, 2);
    const int n = Run.Spins.SpinGroupCount;
    if (n <= 0) {
        FatalError(Message::NmrAtomCountNotPositive, n, path);
    }
    AllocateSpinSystem();
    ReadIsotopesAndNuclei(file, 3);
    ReadHeading(file, 4);
    Run.Options.NMRFrequency = ReadIntegerLine(file, 5);
    if (Run.Options.NMRFrequency == 0) {
        FatalError(Message::SpectrometerFrequencyZero, path);
    }
    ReadHeading(file, 6);
    ReadRealRow(file, 7, Run.Spins.ChemicalShifts);
    ReadHeading(file, 8);
    ReadCouplings(file, 9);
    ReadHeading(file, n + 9);
    ReadMinimalIntensity(file, n + 10);
    ReadHeading(file, n + 11);
    Run.Options.UseWeakCoupling = ReadIntegerLine(file, n + 12);
    const bool damaged = std::ferror(file) != 0;
    std::fclose(file);
    if (damaged) {
        FatalError(Message::UnreadableInput, path);
    }
}
