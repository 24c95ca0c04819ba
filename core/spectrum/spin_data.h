// SPDX-License-Identifier: MIT
// The spin system of a spectrum run.
#pragma once

// N = SpinGroupCount: filled by files/spectrum_input.cpp, rounded by PrepareSpinSystem.
struct SpinData {
    int SpinGroupCount = 0;            // groups of equivalent spin-1/2 nuclei
    int* IsotopicNumbers = nullptr;    // [N] mass number; compared for equality only
    int* NucleiInGroup = nullptr;      // [N] equivalent nuclei in the group, 0 or more
    double* ChemicalShifts = nullptr;  // [N] ppm
    double* CouplingMatrix = nullptr;  // [N][N] Hz; upper triangle all pairs, lower triangle like isotopes only
};
