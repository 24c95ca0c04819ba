// SPDX-License-Identifier: MIT
// Finds the connected parts of a spin system.
#include "spectrum/spin_part.h"

#include "ground/run_state.h"
#include "spectrum/spin_system.h"

#include <algorithm>

static void AddGroup(SpinPart& part, int g) {
    part.Groups[part.GroupCount] = g;
    part.Nuclei[part.GroupCount] = Run.Spins.NucleiInGroup[g];
    part.Classes[part.GroupCount] = 0;
    ++part.GroupCount;
}

SpinPart WholeSystem() {
    SpinPart whole = {};
    whole.ClassCount = 1;
    for (int g = 0; g < Run.Spins.SpinGroupCount; ++g) {
        AddGroup(whole, g);
    }
    return whole;
}

// Marks what is connected with a group, and the group.
static void MarkConnected(int g, bool* marked) {
    marked[g] = true;
    for (int h = 0; h < Run.Spins.SpinGroupCount; ++h) {
        if (h != g && !marked[h] && AreCoupled(g, h)) {
            MarkConnected(h, marked);
        }
    }
}

static int NucleiOfIsotope(const SpinPart& part, int isotope) {
    int nuclei = 0;
    for (int i = 0; i < part.GroupCount; ++i) {
        nuclei += Run.Spins.IsotopicNumbers[part.Groups[i]] == isotope ? part.Nuclei[i] : 0;
    }
    return nuclei;
}

// A class for each isotope, the isotope of the most nuclei first.
static void ClassifyByIsotope(SpinPart& part) {
    int isotopes[LargestGroupCount];
    for (int i = 0; i < part.GroupCount; ++i) {
        isotopes[i] = Run.Spins.IsotopicNumbers[part.Groups[i]];
    }
    std::sort(isotopes, isotopes + part.GroupCount);
    int* end = std::unique(isotopes, isotopes + part.GroupCount);
    std::sort(isotopes, end, [&part](int a, int b) {
        const int nucleiOfA = NucleiOfIsotope(part, a);
        const int nucleiOfB = NucleiOfIsotope(part, b);
        return nucleiOfA != nucleiOfB ? nucleiOfA > nucleiOfB : a < b;
    });
    part.ClassCount = static_cast<int>(end - isotopes);
    for (int i = 0; i < part.GroupCount; ++i) {
        part.Classes[i] =
            static_cast<int>(std::find(isotopes, end, Run.Spins.IsotopicNumbers[part.Groups[i]]) - isotopes);
    }
}

int FindConnectedParts(SpinPart* parts) {
    bool placed[LargestGroupCount] = {};
    int count = 0;
    for (int first = 0; first < Run.Spins.SpinGroupCount; ++first) {
        if (placed[first]) {
            continue;
        }
        bool connected[LargestGroupCount] = {};
        MarkConnected(first, connected);
        SpinPart& part = parts[count++] = {};
        for (int g = 0; g < Run.Spins.SpinGroupCount; ++g) {
            if (connected[g]) {
                AddGroup(part, g);
                placed[g] = true;
            }
        }
        ClassifyByIsotope(part);
    }
    return count;
}
