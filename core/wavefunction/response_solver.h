// SPDX-License-Identifier: MIT
// Solves the coupled first-order equations A X = B of several perturbations at once: block Lanczos (Golub, Underwood
// 1977) with the factors of its matrix carried along (Paige, Saunders 1975; O'Leary 1980), which for a positive
// definite A is the block method of conjugate gradients, and goes on where A isn't one.
#pragma once

#include "wavefunction/response_operator.h"

// Bytes of the work of the solver and of the lowest eigenvalue, for the orbitals, levels and options of Run.
double ResponseWorkBytes();

// Most perturbations that are solved at once.
int ResponseBatch();

// Allocates the work for so many perturbations, after PrepareFirstOrderOrbitals. Raises OutOfMemory.
void PrepareResponses(int count);

// The perturbations, [count][occupied][empty], to be filled with B, Hartree, before each solution; and the amplitudes
// of the same shape that come out.
double* ResponsePerturbations();
const double* ResponseAmplitudes();

// Work for products with the levels, [count][occupied][N].
double* ResponseRows();

// What came out: for each perturbation how far the density is from the solution, as far as one step tells, and whether
// a vector with a negative expectation value of A has been met.
struct ResponseOutcome {
    const double* Differences;  // [count] root of the summed squares of the change of the density
    double Limit;               // in force: the one asked for, or what rounding allows
    bool Unstable;
};

// Solves until no difference is above the limit, at most up to SCFIterationLimit. Without an iteration the
// amplitudes are 0, with one alone they are B over the gaps. logDifference is called with the place of a perturbation,
// the iteration and the difference: for the largest of each iteration, and for all of the last. Spoils FockMatrix and
// HalfDensity.
ResponseOutcome SolveResponses(const ResponseOperator& kind, int count, double limit,
                               void (*logDifference)(int perturbation, int iteration, double difference));

// The lowest eigenvalue of A, Hartree; see wavefunction/response_stability.h.
double LowestEigenvalue(const ResponseOperator& kind);
