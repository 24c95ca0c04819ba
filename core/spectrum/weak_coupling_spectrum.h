// SPDX-License-Identifier: MIT
// The weak-coupling simulator: each transition of each group by perturbation theory, nothing is diagonalised and
// nothing limits the number of groups.
#pragma once

// Reads the spin system of Run, fills SpectrumLines and SpectrumLineCount: frequencies (Hz) to second, intensities to
// first order in the couplings. Refuses systems with two shifts less than 1e-05 Hz apart; raises NoNmrAtom without
// groups, OutOfMemory without memory.
void ComputeWeakCouplingSpectrum();
