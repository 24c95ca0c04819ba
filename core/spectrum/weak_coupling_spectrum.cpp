// SPDX-License-Identifier: MIT
// Writes the lines of each group: its own frequency, split and shifted by every state of the groups that couple to it.
#include "spectrum/weak_coupling_spectrum.h"

#include "ground/fatal_error.h"
#include "ground/log.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "spectrum/spectator_states.h"
#include "spectrum/spin_system.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

static constexpr double SmallestDistance = 1e-05;  // Hz between two shifts
static constexpr double LargestRatio = 10.0;       // of the largest coupling to a distance of shifts
static constexpr double LargestCount = 9.0e18;     // that an array's length can be
static constexpr long long PollBlock = 1 << 16;    // numbers or lines written between two polls
static constexpr double SmallList = 1 << 20;       // lines of a whole system that are written one by one

// Working storage of one simulation; N is SpinGroupCount, S the largest number of product states of the groups that
// couple to one group, in one combination of their total spins.
static struct {
    int* SpinCountOfGroup;    // [N] total-spin values of each group
    int* Partners;            // [PartnerCount] the groups that couple to the group in hand, in their order; room for N
    int PartnerCount;         // of the group in hand; the others are spectators
    bool AllArePartners;      // also groups that don't couple
    int* SpectatorSpinTable;  // [PartnerCount][Columns] 2J of the partners, one column for each combination
    long long Columns;        // combinations for the group in hand
    double* FrequencyTerms;   // [S] terms of one partner, Hz, one for each of its states
    double* IntensityTerms;   // [S] the same for the intensity
    double* FrequencySums;    // [S] sums over the partners so far, one for each of their product states
    double* IntensitySums;    // [S] the same for the intensity
    long long LineCount;      // lines written
} Work;

// An array of so many records, counted in floating point since the count may exceed any integer.
template <class Record> static void AllocateCounted(Record*& array, double count) {
    if (!(count < LargestCount) || !AllocateArray(array, static_cast<long long>(count))) {
        FatalError(Message::OutOfMemory);
    }
}

static double LargestCoupling() {
    const int n = Run.Spins.SpinGroupCount;
    double largest = 0.0;
    for (int i = 0; i < n; ++i) {
        for (int j = i + 1; j < n; ++j) {
            largest = std::max(largest, std::fabs(Run.Spins.CouplingMatrix[i * n + j]));
        }
    }
    return largest;
}

// Every pair is tested, coupled or not and of whichever isotopes, and the ratio is that of the system's largest
// coupling: on purpose, the approximation is judged for the whole system.
static void CheckApplicability() {
    const double largest = LargestCoupling();
    bool doubtful = false;
    for (int i = 0; i < Run.Spins.SpinGroupCount; ++i) {
        for (int j = i + 1; j < Run.Spins.SpinGroupCount; ++j) {
            const double distance =
                std::fabs((Run.Spins.ChemicalShifts[i] - Run.Spins.ChemicalShifts[j]) * Run.Options.NMRFrequency);
            if (distance < SmallestDistance) {
                char text[256];
                std::snprintf(text, sizeof text,
                              "Weak coupling approximation cannot be applied, because the chemical shifts %.7f and "
                              "%.7f are so close.",
                              Run.Spins.ChemicalShifts[i], Run.Spins.ChemicalShifts[j]);
                WriteFatalFile(text);
            }
            doubtful = doubtful || largest / distance > LargestRatio;
        }
    }
    if (doubtful) {
        LogAppend("Weak coupling approximation may not be reliable, it may be fixed by increasing the Spectrometer "
                  "Frequency in the Spectral Options dialog box.");
    }
}

// Number of transitions of group g for one state of the others: 2J summed over its total spins.
static double TransitionCount(int g) {
    double count = 0.0;
    for (int twoJ = Run.Spins.NucleiInGroup[g]; twoJ > 0; twoJ -= 2) {
        count += twoJ;
    }
    return count;
}

static void FindPartners(int g) {
    Work.PartnerCount = 0;
    for (int h = 0; h < Run.Spins.SpinGroupCount; ++h) {
        if (h != g && (Work.AllArePartners || AreCoupled(g, h))) {
            Work.Partners[Work.PartnerCount++] = h;
        }
    }
}

// What the groups need: the largest of each, and the sum of the lines.
struct WorkSizes {
    double TableEntries = 1.0;
    double States = 1.0;  // S
    double Lines = 0.0;
};

// The combinations needn't be walked: the largest number of product states belongs to the highest spins, and the sum
// over all combinations is a product of sums.
static void AddSizesOf(int g, WorkSizes& sizes) {
    FindPartners(g);
    double entries = Work.PartnerCount;
    double states = 1.0;
    double allStates = 1.0;
    for (int k = 0; k < Work.PartnerCount; ++k) {
        const int h = Work.Partners[k];
        entries *= Work.SpinCountOfGroup[h];
        states *= Run.Spins.NucleiInGroup[h] + 1;
        double sum = 0.0;
        for (int twoJ = Run.Spins.NucleiInGroup[h]; twoJ >= 0; twoJ -= 2) {
            sum += twoJ + 1;
        }
        allStates *= sum;
    }
    sizes.TableEntries = std::max(sizes.TableEntries, entries);
    sizes.States = std::max(sizes.States, states);
    sizes.Lines += allStates * TransitionCount(g);
}

static WorkSizes SizesOfAll() {
    WorkSizes sizes;
    for (int g = 0; g < Run.Spins.SpinGroupCount; ++g) {
        AddSizesOf(g, sizes);
    }
    return sizes;
}

static void CountTotalSpins() {
    AllocateCounted(Work.SpinCountOfGroup, Run.Spins.SpinGroupCount);
    AllocateCounted(Work.Partners, Run.Spins.SpinGroupCount);
    for (int g = 0; g < Run.Spins.SpinGroupCount; ++g) {
        Work.SpinCountOfGroup[g] = Run.Spins.NucleiInGroup[g] / 2 + 1;
    }
}

static void AllocateWork() {
    const WorkSizes sizes = SizesOfAll();
    const double work = 4 * sizeof(double) * sizes.States + sizeof(int) * sizes.TableEntries;
    const double listBytes = sizeof(SpectrumLine) * sizes.Lines;
    if (!MemoryCanServe(listBytes + std::max(work, listBytes))) {  // the sort takes as much again, without the work
        FatalError(Message::OutOfMemory);
    }
    AllocateCounted(Work.SpectatorSpinTable, sizes.TableEntries);
    for (double** vector : {&Work.FrequencyTerms, &Work.IntensityTerms, &Work.FrequencySums, &Work.IntensitySums}) {
        AllocateCounted(*vector, sizes.States);
    }
    ReserveLines(static_cast<long long>(sizes.Lines) + 1);  // one slot more: WriteLine writes ahead of the list
    Work.LineCount = 0;
}

// The rows are the partners in their order, the first of them varies fastest across the columns.
static void BuildSpectatorSpinTable() {
    Work.Columns = 1;
    for (int k = 0; k < Work.PartnerCount; ++k) {
        Work.Columns *= Work.SpinCountOfGroup[Work.Partners[k]];
    }
    int* row = Work.SpectatorSpinTable;
    long long run = 1;
    for (int k = 0; k < Work.PartnerCount; ++k, row += Work.Columns) {
        const int h = Work.Partners[k];
        for (long long column = 0; column < Work.Columns; ++column) {
            const long long step = column / run % Work.SpinCountOfGroup[h];
            row[column] = Run.Spins.NucleiInGroup[h] - 2 * static_cast<int>(step);
            if (column % PollBlock == 0) {
                PollMessages(1);
            }
        }
        run *= Work.SpinCountOfGroup[h];
    }
}

static void CountSpectators(int g) {
    StartSpectators();
    const int* end = Work.Partners + Work.PartnerCount;
    for (int h = 0; h < Run.Spins.SpinGroupCount; ++h) {
        if (h != g && std::find(static_cast<const int*>(Work.Partners), end, h) == end) {
            AddSpectatorGroup(Run.Spins.NucleiInGroup[h]);
        }
    }
}

// The terms of the states of group h, of total spin twoJ / 2, in the lines of group g from its level upperM; returns
// their number.
static int ComputeTerms(int g, double upperM, int h, int twoJ) {
    const int n = Run.Spins.SpinGroupCount;
    const double full = Run.Spins.CouplingMatrix[std::min(g, h) * n + std::max(g, h)];
    const double flipping = Run.Spins.CouplingMatrix[std::max(g, h) * n + std::min(g, h)];
    const double delta =
        Run.Options.NMRFrequency * Run.Spins.ChemicalShifts[g] - Run.Options.NMRFrequency * Run.Spins.ChemicalShifts[h];
    const double j = 0.5 * twoJ;
    for (int step = 0; step <= twoJ; ++step) {
        const double m = j - step;
        Work.FrequencyTerms[step] =
            m * full + (2.0 * m * upperM + j * (j + 1.0) - m * (m + 1.0)) * full * flipping / (2.0 * delta);
        Work.IntensityTerms[step] = m * flipping / delta;
    }
    return twoJ + 1;
}

// Each sum plus each term, in place from the last sum backwards; returns the new number of sums.
static long long ExpandSums(long long sums, int terms) {
    for (long long s = sums - 1; s >= 0; --s) {
        const double frequency = Work.FrequencySums[s];
        const double intensity = Work.IntensitySums[s];
        for (int t = terms - 1; t >= 0; --t) {
            Work.FrequencySums[s * terms + t] = frequency + Work.FrequencyTerms[t];
            Work.IntensitySums[s * terms + t] = intensity + Work.IntensityTerms[t];
        }
        if (s % PollBlock == 0) {
            PollMessages(static_cast<int>(PollBlock));
        }
    }
    return sums * terms;
}

// Lines of the transition of group g from level upperM, of squared lowering element p, for one combination of the
// partners' spins.
static void WriteCombination(int g, double upperM, double p, double groupWeight, long long column) {
    double weight = groupWeight;
    long long sums = 1;
    Work.FrequencySums[0] = 0.0;
    Work.IntensitySums[0] = 0.0;
    const int* entry = Work.SpectatorSpinTable + column;
    for (int k = 0; k < Work.PartnerCount; ++k, entry += Work.Columns) {
        const int h = Work.Partners[k];
        weight *= GroupSpinMultiplicity(Run.Spins.NucleiInGroup[h], *entry);
        sums = ExpandSums(sums, ComputeTerms(g, upperM, h, *entry));
    }
    WeighLines(weight);
    const double frequency = Run.Options.NMRFrequency * Run.Spins.ChemicalShifts[g];
    for (long long e = 0; e < sums; ++e) {
        Work.LineCount = WriteWeightedLine(Work.LineCount, frequency + Work.FrequencySums[e],
                                           (1.0 - 2.0 * Work.IntensitySums[e]) * p);
        if (e % PollBlock == 0) {
            PollMessages(1);
        }
    }
}

static void WriteGroup(int g) {
    const int n = Run.Spins.NucleiInGroup[g];
    FindPartners(g);
    BuildSpectatorSpinTable();
    CountSpectators(g);
    for (int twoJ = n; twoJ > 0; twoJ -= 2) {
        const double groupWeight = GroupSpinMultiplicity(n, twoJ);
        for (int twoM = twoJ; twoM > -twoJ; twoM -= 2) {
            const double p = 0.25 * (twoM + twoJ) * (twoJ - twoM + 2);
            for (long long column = 0; column < Work.Columns; ++column) {
                WriteCombination(g, 0.5 * twoM, p, groupWeight, column);
            }
        }
    }
}

long long WriteWeakLines(bool apart) {
    CountTotalSpins();
    Work.AllArePartners = !apart;
    AllocateWork();
    for (int g = 0; g < Run.Spins.SpinGroupCount; ++g) {
        WriteGroup(g);
    }
    FreeArraysOf(Work);
    FreeArraysOf(Spectators);
    return Work.LineCount;
}

static bool ListIsSmall() {
    CountTotalSpins();
    Work.AllArePartners = true;
    return SizesOfAll().Lines <= SmallList;
}

void ComputeWeakCouplingSpectrum() {
    PrepareSpinSystem();
    CheckApplicability();
    FinishLineList(WriteWeakLines(!ListIsSmall()));
}
