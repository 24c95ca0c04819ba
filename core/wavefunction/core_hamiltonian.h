// SPDX-License-Identifier: MIT
// The one-electron part of the TNDO/1 and TNDO/2 methods.
#pragma once

// Turns the overlap matrix in coreHamiltonian[N][N] into H (Hartree), in place; fills CoreDiagonal and CoreRepulsion of
// Run. Needs GammaMatrix and the tables by orbital. Raises OutOfMemory. (Pople, Segal 1966; Pople, Beveridge, Dobosh
// 1967.)
void BuildCoreHamiltonian(double* coreHamiltonian, const double* gamma);
