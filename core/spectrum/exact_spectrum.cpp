// SPDX-License-Identifier: MIT
// Simulates the connected parts of a spin system one by one and puts their lines together.
#include "spectrum/exact_spectrum.h"

#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/run_state.h"
#include "spectrum/level_coincidences.h"
#include "spectrum/line_list.h"
#include "spectrum/part_simulation.h"
#include "spectrum/spectator_states.h"
#include "spectrum/spin_system.h"

#include <algorithm>

// Work of a system, in cubed dimensions of its blocks: up to that of ten single nuclei, some milliseconds, it doesn't
// pay to look for parts; up to that of twelve the whole is cheap.
static constexpr double SmallWork = 3.9e7;
static constexpr double CheapWork = 2.1e9;

// Hz. The perturbation of 1e-10 Hz mixes levels at distance d by 1e-10 / d, which shows in a line of intensity 1e-10 up
// to 1e-5 Hz. The eigensolver may mix them somewhat further; the further this reaches, the more systems are simulated
// whole: one in ten of two times six nuclei.
static constexpr double CoincidenceDistance = 3e-4;

static double WorkOfWhole() {
    double work = 0.0;
    for (int s = 0; s < SubMatrices.SubMatrixCount; ++s) {
        for (int k = 0; k < SubMatrices.SubSubMatrixCounts[s]; ++k) {
            const double dimension =
                SubMatrices.SubSubMatrixDimensions[static_cast<long long>(k) * SubMatrices.SubMatrixCount + s];
            work += dimension * dimension * dimension;
        }
    }
    return work;
}

static void CheckMemory(const SpinPart* parts, int count) {
    double largest = 0.0;
    for (int p = 0; p < count; ++p) {
        largest = std::max(largest, PartBytes(parts[p]));
    }
    if (!MemoryCanServe(largest)) {
        FatalError(Message::OutOfMemory);
    }
}

long long SimulateWhole() {
    const SpinPart whole = WholeSystem();
    CheckMemory(&whole, 1);
    StartSpectators();
    return SimulatePart(whole, 0, false);
}

static void CountSpectatorsOf(const SpinPart& part) {
    StartSpectators();
    const int* end = part.Groups + part.GroupCount;
    for (int g = 0; g < Run.Spins.SpinGroupCount; ++g) {
        if (std::find(part.Groups, end, g) == end) {
            AddSpectatorGroup(Run.Spins.NucleiInGroup[g]);
        }
    }
}

long long SimulateParts(const SpinPart* parts, int count, bool notesLevels) {
    CheckMemory(parts, count);
    StartLevels();
    long long lineCount = 0;
    for (int p = 0; p < count; ++p) {
        CountSpectatorsOf(parts[p]);
        lineCount = SimulatePart(parts[p], lineCount, notesLevels);
    }
    return lineCount;
}

// On purpose, where levels of different parts coincide the whole decides for how many transitions a line counts, as
// long as the whole is cheap; beyond, each transition of a part counts once for each state of the others.
static long long SimulateSystem() {
    const double work = WorkOfWhole();
    SpinPart parts[LargestGroupCount];
    const int count = FindConnectedParts(parts);
    if (work <= SmallWork || (count == 1 && parts[0].ClassCount == 1)) {
        return SimulateWhole();
    }
    const bool wholeIsCheap = work <= CheapWork;
    const long long lineCount = SimulateParts(parts, count, wholeIsCheap);
    return wholeIsCheap && LevelsCoincide(CoincidenceDistance) ? SimulateWhole() : lineCount;
}

void ComputeExactSpectrum() {
    PrepareSpinSystem();
    BuildSubMatrices(Run.Spins.SpinGroupCount, Run.Spins.NucleiInGroup);
    const long long lineCount = SimulateSystem();
    FreeLevels();
    FreeArraysOf(SubMatrices);
    FreeArraysOf(Spectators);
    FinishLineList(lineCount);
}
