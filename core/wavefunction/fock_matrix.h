// SPDX-License-Identifier: MIT
// The two-electron part of the TNDO/1 and TNDO/2 methods.
#pragma once

// Adds the two-electron part to fock[N][N], which holds H on entry, from Run.Field.TotalDensity, HalfDensity and
// GammaMatrix; Hartree. (Pople, Segal 1966; Pople, Beveridge, Dobosh 1967.)
void BuildFockMatrix(double* fock);
