// SPDX-License-Identifier: MIT
// Chooses the simulator, and writes the listing of a spectrum.
#include "spectrum/compute_spectrum.h"

#include "ground/log.h"
#include "ground/message_poll.h"
#include "ground/number_row.h"
#include "ground/run_state.h"
#include "spectrum/exact_spectrum.h"
#include "spectrum/weak_coupling_spectrum.h"

#include <cstdio>

static constexpr int BlockColumns = 6;

void ListTable(const double* values, int rows, int columns) {
    for (int first = 0; first < columns; first += BlockColumns) {
        const int rest = columns - first;
        const int width = rest < BlockColumns ? rest : BlockColumns;
        for (int row = 0; row < rows; ++row) {
            LogNumberRow(values + static_cast<long long>(row) * columns + first, width);
        }
        if (width == BlockColumns) {
            LogMessage(Message::EmptyLine);  // on purpose an id without text: an empty line
        }
    }
}

static void ListSpinSystem() {
    const int n = Run.Spins.SpinGroupCount;
    // on purpose the number of groups, under a wording that speaks of nuclei
    LogMessage(Message::SpinHalfNucleusCount, n);
    for (int i = 0; i < n; ++i) {
        char line[128];
        std::snprintf(line, sizeof line, "Number of Nuclei in Group (%2d) = %2d with Isotopic Number = %3d", i + 1,
                      Run.Spins.NucleiInGroup[i], Run.Spins.IsotopicNumbers[i]);
        LogAppend(line);
    }
    LogMessage(Message::SpectrometerFrequency, Run.Options.NMRFrequency);
    LogMessage(Message::InputShiftsHeading);
    ListTable(Run.Spins.ChemicalShifts, 1, n);
    LogMessage(Message::InputCouplingsHeading);
    ListTable(Run.Spins.CouplingMatrix, n, n);
}

static void ListSpectrum() {
    if (Run.Options.UseWeakCoupling) {
        LogAppend("\nWeak coupling approximation (perturbation theory) is used.");
    }
    ListSpinSystem();
    LogMessage(Message::SpectrumOpeningRule);
    LogMessage(Message::SpectrumHeading);
    LogMessage(Message::SpectrumClosingRule);
    LogMessage(Message::SpectrumColumns);
    for (int i = 0; i < Run.Lines.SpectrumLineCount; ++i) {
        const SpectrumLine& line = Run.Lines.SpectrumLines[i];
        LogMessage(Message::SpectrumRow, i + 1, static_cast<double>(line.Frequency),
                   static_cast<double>(line.Intensity), line.Degeneracy);
        PollMessages(ListedLineUnits);
    }
}

void ComputeSpectrum() {
    if (Run.Options.UseWeakCoupling) {
        ComputeWeakCouplingSpectrum();
    } else {
        ComputeExactSpectrum();
    }
    if (Run.Report.LogEnabled) {
        ListSpectrum();
    }
}
