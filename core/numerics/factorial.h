// SPDX-License-Identifier: MIT
// Factorials, for the multiplicities of composite spins and for the auxiliary functions of Slater integrals.
#pragma once

// 0! to 24!. From 16! on the stored values carry ten significant digits only, on purpose: results depend on them.
extern const double FactorialTable[25];

// The largest number of nuclei of a group: the factorials of its multiplicities still fit into a double.
inline constexpr int LargestGroup = 169;

// n! for 0 <= n <= 170: the table, continued by multiplication.
double Factorial(int n);
