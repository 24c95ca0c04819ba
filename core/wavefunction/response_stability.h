// SPDX-License-Identifier: MIT
// The lowest eigenvalue of the operator of a response: below 0 the wavefunction isn't stable against changes of that
// kind (Cizek, Paldus 1967).
#pragma once

#include "wavefunction/response_operator.h"

// Bytes of the work, for the orbitals and levels of Run.
double StabilityWorkBytes();

// The lowest eigenvalue, Hartree, to six digits, by Davidson's method (1975) with the gaps as preconditioner.
// gaps[occupied][empty] Hartree; rows[occupied][N] is work. Spoils FockMatrix and HalfDensity. After
// PrepareFirstOrderOrbitals, and only where there are amplitudes. Raises OutOfMemory.
double LowestResponseEigenvalue(const ResponseOperator& kind, const double* gaps, double* rows);
