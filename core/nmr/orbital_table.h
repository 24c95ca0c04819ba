// SPDX-License-Identifier: MIT
// Tables over the orbitals of two atoms, and their contraction with blocks of a density.
#pragma once

#include "ground/run_state.h"

#include <algorithm>

inline constexpr int LargestOrbitals = 9;  // of one atom

// Rows and columns in the order s, px, py, pz, dz2, dxz, dyz, dx2-y2, dxy.
using OrbitalTable = double[LargestOrbitals][LargestOrbitals];

inline void ClearTable(OrbitalTable& table) {
    std::fill(&table[0][0], &table[0][0] + LargestOrbitals * LargestOrbitals, 0.0);
}

// Sum over mu of atom a and nu of atom b, by their ranges, of density(mu, nu) table(mu, nu).
inline double Contract(const double* density, const OrbitalRange& a, const OrbitalRange& b, const OrbitalTable& table) {
    double sum = 0.0;
    for (int mu = a.First - 1; mu < a.Last; ++mu) {
        const double* row = density + static_cast<long long>(mu) * Run.Basis.OrbitalCount;
        for (int nu = b.First - 1; nu < b.Last; ++nu) {
            sum += row[nu] * table[mu - a.First + 1][nu - b.First + 1];
        }
    }
    return sum;
}

// The same over one atom with the indices of the table exchanged.
inline double ContractTransposed(const double* density, const OrbitalRange& a, const OrbitalTable& table) {
    double sum = 0.0;
    for (int mu = a.First - 1; mu < a.Last; ++mu) {
        const double* row = density + static_cast<long long>(mu) * Run.Basis.OrbitalCount;
        for (int nu = a.First - 1; nu < a.Last; ++nu) {
            sum += row[nu] * table[nu - a.First + 1][mu - a.First + 1];
        }
    }
    return sum;
}
