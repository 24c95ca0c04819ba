// SPDX-License-Identifier: MIT
// Fixed tables by element. The element code is 1 to 18 for hydrogen to argon and 18 + Z for a capping atom of element
// Z; the tables of 36 rows have the row of code c at c - 1.
#pragma once

// The last code of the ordinary elements of a calculation, and of the capping series.
inline constexpr int LastElement = 18;
inline constexpr int LastElementCode = 36;

inline constexpr int ElementNameCount = 108;

extern int OrbitalCountTable[LastElementCode];         // orbitals; PrepareSystem sets rows 11 to 18 to 4 or 9
extern const int ValenceShellTable[LastElementCode];   // principal quantum number of the valence shell
extern const double CoreChargeTable[LastElementCode];  // charge of the core, in elementary charges
extern const double AtomicMassTable[LastElementCode];  // atomic mass units
extern const char ElementLabel[LastElementCode][3];    // right-aligned symbols for listings
extern const char ElementNames[ElementNameCount][4];   // by atomic number; 0 is a lone pair, "Lp"
