// SPDX-License-Identifier: MIT
// The two inner steps of the three-centre quadrature, each over the 14 outer nodes u side by side in lanes. Both are
// built for several instruction sets (numerics/instruction_set.h); every sum has one order, so that all give the same
// bytes.
#pragma once

#include "numerics/quadrature_rules.h"

// A pair of exponents at the outer nodes. X Y of the quadrature is (Slope t^2 + Start) / 4.
struct LaneMoments {
    double Ratio[OuterLanes];    // 1/(2 Y)
    double Slope[OuterLanes];    // 4 Y |P - A|^2
    double Start[OuterLanes];    // 4 Y u (1 - u) |B - C|^2
    double Zero[4][OuterLanes];  // sum over t of w t^(2m) K_0(x) for m = 0 to 3
    double One[4][OuterLanes];   // sum over t of w t^(2m) x K_1(x)
};

// Weights of an orbital's exponential as a superposition of Gaussians: s^(-3/2) (Constant + Inverse / s).
struct SuperpositionWeight {
    double Constant;  // z for 1s and 2p, -1 for 2s
    double Inverse;   // 0 for 1s and 2p, z^2 / 2 for 2s
};

// The pairs of an s or p orbital of B with one of C; a null pointer leaves that pair out.
struct LanePairs {
    const LaneMoments* Moments[4];  // s-s, s-p, p-s, p-p
    SuperpositionWeight First[4];   // the weight on B
    SuperpositionWeight Second[4];  // the weight on C
};

// Where the sums of each pair start among the results of WeightedSums; what each one is stands in PutSS to PutPP of the
// template.
constexpr int SumsOfSS = 0;
constexpr int SumsOfSP = 4;
constexpr int SumsOfPS = 13;
constexpr int SumsOfPP = 22;
constexpr int SumCount = 47;

// The kernels of one instruction set.
struct ThreeCentreKernels {
    // Fills Zero and One from Slope and Start, for x >= 2 everywhere, that is Start >= 4.
    void (*InnerSums)(LaneMoments& moments);

    // sums[SumCount]: the scalar functions of u that the tables are linear in, times OuterFactors, summed over the
    // outer nodes as ((0 + 4) + (2 + 6)) + ((1 + 5) + (3 + 7)) after lanes i and i + 8 were added.
    void (*WeightedSums)(const LanePairs& pairs, double* sums);
};

// One source file each.
extern const ThreeCentreKernels BaselineThreeCentreKernels;
#if defined(__x86_64__)
extern const ThreeCentreKernels Avx2ThreeCentreKernels;
extern const ThreeCentreKernels Avx512ThreeCentreKernels;
#endif

// Those of the instruction set in use.
const ThreeCentreKernels& KernelsOfThreeCentres();
