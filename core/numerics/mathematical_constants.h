// SPDX-License-Identifier: MIT
// Mathematical constants that several files need.
#pragma once

// The nearest doubles.
inline constexpr double Pi = 3.14159265358979323846;
inline constexpr double RootThree = 1.7320508075688772;
inline constexpr double RootFive = 2.23606797749979;
inline constexpr double RootFifteen = 3.872983346207417;

// The square root of three in eight digits and its inverse: on purpose, the results of integrals over p and d orbitals
// depend on it.
inline constexpr double RoundedRootThree = 1.7320508;
inline constexpr double InverseOfRoundedRoot = 1.0 / RoundedRootThree;
