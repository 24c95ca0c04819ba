// SPDX-License-Identifier: MIT
// Factors of the Slater-Condon constants G1 and F2 in one-centre exchange.
#pragma once

inline constexpr double Third = 0.3333333333333;  // of G1: on purpose thirteen threes, not the nearest double
inline constexpr double TwentyFifth = 0.04;       // of F2
