// SPDX-License-Identifier: MIT
// What both simulators share of the spin system: groups of magnetically equivalent spin-1/2 nuclei, each treated as a
// composite particle of total spin J. Spins and projections are stored doubled, as integers.
#pragma once

// True for a shift or coupling that rounding to thousandths takes: finite and within a 64-bit integer of thousandths.
bool CanBeRounded(double value);

// Rounds the shifts (ppm) and couplings (Hz) of Run to three decimals, in place, and gives the two triangles of
// CouplingMatrix their meaning: the upper one holds the coupling of every pair, the lower one the same for groups of
// equal isotopic number and 0 for others, so that an unlike pair couples to first order only. Raises NoNmrAtom without
// groups.
void PrepareSpinSystem();

// True for two groups of the prepared system with a coupling, of whichever isotopes.
bool AreCoupled(int g, int h);

// How often total spin twoJ / 2 occurs among n spin-1/2 nuclei (n and twoJ of the same parity; Wigner 1931).
double GroupSpinMultiplicity(int n, int twoJ);

// The degeneracy of lines of statistical weight w: w + 0.01 cut to an integer, at most the largest 32-bit one.
int DegeneracyOfWeight(double w);
