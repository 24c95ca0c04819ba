// SPDX-License-Identifier: MIT
// The weak-coupling simulator: each transition of each group by perturbation theory, nothing is diagonalised and
// nothing limits the number of groups.
#pragma once

// Reads the spin system of Run, fills SpectrumLines and SpectrumLineCount: frequencies (Hz) to second, intensities to
// first order in the couplings. Refuses systems with two shifts less than 1e-05 Hz apart; raises NoNmrAtom without
// groups, OutOfMemory without memory.
void ComputeWeakCouplingSpectrum();

// Writes the same lines, not yet finished, for a prepared spin system, and returns their number. If apart, a line
// stands for all states of the groups that don't couple to its own (spectrum/spectator_states.h); otherwise there is
// one for each. Raises OutOfMemory.
long long WriteWeakLines(bool apart);
