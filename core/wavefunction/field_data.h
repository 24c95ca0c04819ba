// SPDX-License-Identifier: MIT
// The self-consistent field of a parameter run.
#pragma once

// Matrices are square and row-major, both triangles filled, N = OrbitalCount: allocated by PrepareSystem, filled by
// SolveWavefunction, spoilt by the responses where it says so. The scratch buffers hold PaddedRows rows, N rounded up
// to an even number.
struct FieldData {
    double* CoreHamiltonian = nullptr;     // [N][N] Hartree
    double* GammaMatrix = nullptr;         // [N][N] Coulomb integrals of orbital pairs, Hartree
    double* FirstScratch = nullptr;        // [PaddedRows][N], or [NMRAtomCount][SelectedAtomCount] if that is more
    double* SecondScratch = nullptr;       // [PaddedRows][N]
    double* FockMatrix = nullptr;          // [PaddedRows][N] Hartree
    double* MolecularOrbitals = nullptr;   // [PaddedRows][N] coefficients of one level in each row
    double* HalfDensity = nullptr;         // [N][N] alpha density
    double* TotalDensity = nullptr;        // [N][N]
    double* PreviousDensity = nullptr;     // [N][N] total density of the iteration before
    double* DiagonalHistory = nullptr;     // [N] diagonal of the total density two iterations back
    double* CoreDiagonal = nullptr;        // [N] the orbital's own energy parameter, Hartree
    double* OrbitalEnergiesRaw = nullptr;  // [N] as the eigensolver leaves them, Hartree
    double* OrbitalEnergies = nullptr;     // [N] Hartree
    double* CommutatorHistory = nullptr;   // [5][N][N] with SCFAccelerateConvergence only
    double* FockHistory = nullptr;         // [5][N][N] the same
    float* NetCharges = nullptr;           // [SelectedAtomCount] by place in SelectedAtomList, elementary charges
    double CoreRepulsion = 0;              // Hartree
    double EnvironmentEnergy = 0;          // of the charges outside the selection, Hartree
    int ScfPassCounter = -1;               // 0 in the first call of SolveWavefunction
    int LevelShiftStartIteration = 0;      // BuildSelectedAtomList lowers it to -1, and the level shifter stays off
};
