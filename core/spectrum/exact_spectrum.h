// SPDX-License-Identifier: MIT
// The exact simulator: block-wise diagonalisation of the spin Hamiltonian of composite particles.
#pragma once

// Reads the spin system of Run, fills SpectrumLines and SpectrumLineCount (frequencies in Hz). Raises NoNmrAtom without
// groups, OutOfMemory for too large a system, and refuses more than 32 groups.
void ComputeExactSpectrum();
