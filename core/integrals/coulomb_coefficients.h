// SPDX-License-Identifier: MIT
// The expansion coefficients of TwoCentreCoulomb. n1 is 1 to 3 and n2 is 2 to 5; rows of n2 are at n2 - 2, rows
// of n1 at n1 - 1, and unused entries are 0.
#pragma once

inline constexpr int CoulombFirstShells = 3;
inline constexpr int CoulombShells = 4;
inline constexpr int CoulombPowers = 2 * CoulombFirstShells;
inline constexpr int CoulombScreeningPowers = 10;
inline constexpr int CoulombEntries = CoulombScreeningPowers - 1 + CoulombPowers;

// [n2][k][j] factor of A(N - j) B(j) in the double integral of (xi - eta)^(2 n2 - 1) (xi + eta)^k e^(-p xi - q
// eta), where N = 2 n2 - 1 + k and j goes from 0 to N. Integers.
extern const double CoulombProducts[CoulombShells][CoulombPowers][CoulombEntries];

// [n1][n2][k] factor of (2 zeta2 R)^(2 n2 + 1) (2 zeta1 R)^k and that integral, for k from 0 to 2 n1 - 1; n1 <= n2.
extern const double CoulombWeights[CoulombFirstShells][CoulombShells][CoulombPowers];

// [n2][k] factor of (2 zeta2 R)^k in the screening of the second cloud's unit charge, for k from 0 to 2 n2 - 1.
extern const double CoulombScreening[CoulombShells][CoulombScreeningPowers];
