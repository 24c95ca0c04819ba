// SPDX-License-Identifier: MIT
// The multi-precision reference values of the integrals, row by row.
#pragma once

struct AuxiliaryARow {
    double P;
    int N;
    double Exact;
};

struct AuxiliaryBRow {
    double Q;
    int Order;
    int N;
    int Terms;  // of the series, 0 for recursion and limit values
    double Exact;
    double Formula;  // the series as it is cut, without rounding
};

struct IntegralE1Row {
    double X;
    double Exact;
    double Formula;
};

struct ExponentialPairRow {
    double A;
    double B;
    double Plus;
    double Minus;
};

struct CoulombRow {
    int N1;
    int N2;
    double Zeta1;
    double Zeta2;
    double Distance;
    double Exact;
    double Formula;
};

struct OneCentreRow {
    int N1;
    int N2;
    double Zeta1;
    double Zeta2;
    double Exact;
};

struct OverlapRow {
    int N1;
    int N2;
    int Orbital1;  // 0 s; 1 to 3 px, py, pz; 4 to 8 dz2, dxz, dyz, dx2-y2, dxy
    int Orbital2;
    double Zeta1;
    double Zeta2;
    double Vector[3];  // from the first atom to the second
    double Exact;
};

#include "tests/unit/integrals/integral_reference.inc"
