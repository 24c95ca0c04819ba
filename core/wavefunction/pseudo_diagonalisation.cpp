// SPDX-License-Identifier: MIT
// Rotates pairs of an occupied and an empty level whose Fock matrix element matters. Energies and elements stay those
// of the start throughout: no Jacobi sweep, on purpose.
#include "wavefunction/pseudo_diagonalisation.h"

#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "numerics/polling_product.h"

#include <algorithm>
#include <cmath>
#include <limits>

static constexpr double TinyShare = 0.05;  // of the largest element

// Ten times the square root of the machine's precision: a smaller rotation changes nothing that matters.
static double SmallestRotation() {
    return 10.0 * std::sqrt(std::numeric_limits<double>::epsilon());
}

// Fock matrix elements between empty levels (rows) and occupied levels (columns), into the first scratch buffer; the
// occupied coefficients pass through the second one transposed, after the products of the Fock matrix.
static void BuildOccupiedVirtualBlock() {
    const int n = Run.Basis.OrbitalCount;
    const int occupied = Run.Basis.OccupiedLevels;
    const int empty = n - occupied;
    double* transposed = Run.Field.FirstScratch;                        // [n][occupied]
    double* products = Run.Field.SecondScratch;                         // [empty][n]
    double* block = transposed + static_cast<long long>(n) * occupied;  // [empty][occupied]
    for (int level = 0; level < occupied; ++level) {
        for (int a = 0; a < n; ++a) {
            transposed[static_cast<long long>(a) * occupied + level] =
                Run.Field.MolecularOrbitals[static_cast<long long>(level) * n + a];
        }
    }
    PollingProduct(Run.Field.MolecularOrbitals + static_cast<long long>(occupied) * n, n, Run.Field.FockMatrix, n,
                   products, n, empty, n, n);
    PollingProduct(products, n, transposed, occupied, block, occupied, empty, occupied, n);
}

// Both rows from their old values.
static void RotateLevels(double* occupied, double* empty, double alpha, double beta) {
    for (int a = 0; a < Run.Basis.OrbitalCount; ++a) {
        const double old = occupied[a];
        occupied[a] = alpha * old + beta * empty[a];
        empty[a] = alpha * empty[a] - beta * old;
    }
}

static void RotatePair(int occupied, int empty, double element) {
    const double difference = Run.Field.OrbitalEnergiesRaw[occupied] - Run.Field.OrbitalEnergiesRaw[empty];
    if (std::fabs(element / difference) < SmallestRotation()) {
        return;
    }
    const double root = std::sqrt(difference * difference + 4.0 * element * element);
    const double signedRoot = difference >= 0.0 ? root : -root;
    const double alpha = std::sqrt(0.5 * (1.0 + difference / signedRoot));
    const double size = std::sqrt(1.0 - alpha * alpha);
    const long long n = Run.Basis.OrbitalCount;
    RotateLevels(Run.Field.MolecularOrbitals + occupied * n, Run.Field.MolecularOrbitals + empty * n, alpha,
                 element >= 0.0 ? -size : size);
}

void PseudoDiagonalise() {
    BuildOccupiedVirtualBlock();
    const int n = Run.Basis.OrbitalCount;
    const int occupied = Run.Basis.OccupiedLevels;
    const double* block = Run.Field.FirstScratch + static_cast<long long>(n) * occupied;
    const long long size = static_cast<long long>(n - occupied) * occupied;
    double largest = 0.0;
    for (long long k = 0; k < size; ++k) {
        largest = std::max(largest, std::fabs(block[k]));
    }
    const double tiny = TinyShare * largest;
    for (int empty = occupied; empty < n; ++empty) {
        for (int level = 0; level < occupied; ++level) {
            const double element = *block++;
            if (std::fabs(element) < tiny) {  // what isn't a number rotates
                continue;
            }
            RotatePair(level, empty, element);
        }
        PollMessages(n);
    }
}
