// SPDX-License-Identifier: MIT
// The three-centre quadrature of one order at a time, node by node: what the shared inner sums of the program must
// reproduce.
#pragma once

#include "numerics/quadrature_rules.h"

// The weights of the outer rule on (-1, 1), without the factor 1/2 of the mapping
constexpr double OuterWeights[OuterLanes] = {
    0.03511946033175186,
    0.080158087159760208,
    0.12151857068790319,
    0.15720316715819355,
    0.18553839747793782,
    0.2051984637212956,
    0.21526385346315779,
    0.21526385346315779,
    0.2051984637212956,
    0.18553839747793782,
    0.15720316715819355,
    0.12151857068790319,
    0.080158087159760208,
    0.03511946033175186,
    0.0,
    0.0,
};

// What does not change between the orders of one element.
struct QuadratureContext {
    double SquareBC;  // |B - C|^2
    double Dot;       // (C - A) . (B - C)
    double SquareAC;  // |C - A|^2
    double SquareB;   // z_b^2
    double SquareC;   // z_c^2
};

// The integral over u and t of u^(k1/2) (1 - u)^(k2/2) t^(2m) 2^(|k3| - 2 |nu|) x^|nu| K_|nu|(x) / Y^|nu|, nu = k3 + 1,
// by the 14 x 32 rule.
double ThreeCentreQuadrature(int m, int k1, int k2, int k3, const QuadratureContext& context);

// The element of one pair of orbitals (0: 1s, 1: 2s, 2 to 4: 2px, 2py, 2pz) by that quadrature, with its own
// exponents. component: -1 gauge, 0 to 2 magnetic. The elements that have an s orbital on one side only, and p-p not.
double QuadratureElement(int component, int bra, int ket, double zetaB, double zetaC, const double* a, const double* b,
                         const double* c);

// Any element by the moments of a Gaussian, node by node, with L acting on the bra: an arrangement of its own, with
// ReducedBessel at every node.
double NodewiseElement(int component, int bra, int ket, double zetaB, double zetaC, const double* a, const double* b,
                       const double* c);
