// SPDX-License-Identifier: MIT
// First-order change of the occupied orbitals under a perturbed Fock matrix, and the density that it makes.
#pragma once

#include "ground/run_state.h"

// Occupied levels and empty ones.
inline int OccupiedCount() {
    return Run.Basis.DoublyOccupiedLevels;
}
inline int EmptyCount() {
    return Run.Basis.OrbitalCount - Run.Basis.DoublyOccupiedLevels;
}

// Bytes of the work of the first-order steps, for the orbitals and levels of Run.
double FirstOrderWorkBytes();

// Allocates the work of the first-order steps for the orbitals in MolecularOrbitals and gathers their transposes; to be
// called after each wavefunction, before the steps below. Raises OutOfMemory.
void PrepareFirstOrderOrbitals();

// What PrepareFirstOrderOrbitals has gathered: the coefficients of the occupied levels, [N][occupied], and of the empty
// ones, [N][empty], transposed.
const double* TransposedOccupiedLevels();
const double* TransposedEmptyLevels();

// Symmetry of a first-order matrix: real perturbations are symmetric, imaginary ones antisymmetric.
inline constexpr double Symmetric = 1.0;
inline constexpr double Antisymmetric = -1.0;

// Row i of u[DoublyOccupiedLevels][N] := the first-order change of occupied orbital i under fock[N][N] (Hartree) of the
// given symmetry, by the perturbation sum over empty levels (Pople, McIver, Ostlund 1968).
void SolveFirstOrderOrbitals(const double* fock, double symmetry, double* u);

// density[N][N] := factor times the sum over occupied i of c(i) u(i)' + symmetry u(i) c(i)'.
void BuildFirstOrderDensity(const double* u, double factor, double symmetry, double* density);

// How far a first-order density has moved: the root of the summed squares divided by N squared, outside the root on
// purpose; 99.9 at iteration 0. Copies the density to previous.
double MeasureDensityChange(const double* density, double* previous, int iteration);
