// SPDX-License-Identifier: MIT
// The linear operator of the coupled first-order equations, over amplitudes X between occupied levels i and empty ones
// a (Gerratt, Mills 1968): (A X)(i, a) = (e(a) - e(i)) X(i, a) - (W P)(i, a), P being the density of X and W P its
// exchange, between orbitals. A is symmetric. Under a perturbation V the amplitudes solve A X = B, with B = -V(i, a)
// for a symmetric V, V(i, a) for an antisymmetric one.
#pragma once

// One kind of response.
struct ResponseOperator {
    double Symmetry;        // of perturbation and density, and
    double DensityFactor;   // factor of the density, see wavefunction/first_order_orbitals.h
    const double* Weights;  // [N][N] Hartree, W P has these times the elements of P
    void (*SubtractOneCentreExchange)(double* fock, const double* density);  // takes the rest of W P off; null: none
};

// Amplitudes of one perturbation: [occupied][empty].
long long AmplitudeCount();

// e(a) - e(i) of all amplitudes, Hartree.
void FillLevelGaps(double* gaps);

// fock[N][N] := -W P for density[N][N], Hartree.
void BuildExchange(const ResponseOperator& kind, const double* density, double* fock);

// Replaces amplitudes[count][occupied][empty] by the second part of A times them, the exchange, Hartree.
// rows[count][occupied][N] is work. Spoils FockMatrix and HalfDensity. After PrepareFirstOrderOrbitals.
void ApplyExchange(const ResponseOperator& kind, double* amplitudes, int count, double* rows);

// The first-order change of the occupied orbitals, change[count][occupied][N], of amplitudes.
void FormFirstOrderOrbitals(const double* amplitudes, int count, double* change);

// matrix(i, a) of a matrix[N][N], in amplitudes[occupied][empty]; rows[occupied][N] is work.
void ProjectOnLevels(const double* matrix, double* rows, double* amplitudes);

// products[count] := those of amplitudes with each vector of block[count][occupied][empty].
void DotAmplitudes(const double* block, int count, const double* amplitudes, double* products);

// amplitudes += the sum of the vectors of the block times factors[count].
void AddAmplitudes(const double* block, int count, const double* factors, double* amplitudes);

// target[rows] -= factors[rows][count] times the vectors of the block, for up to LargestBlock vectors; rows of factors
// are stride numbers apart.
inline constexpr int LargestBlock = 96;  // room for all nuclei of a molecule: their couplings converge with the square
void SubtractCombinations(const double* factors, int stride, int rows, const double* block, int count, double* target);
