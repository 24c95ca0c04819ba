// SPDX-License-Identifier: MIT
// An atom of the calculation as the shielding terms see it.
#pragma once

#include "molecule/element_tables.h"
#include "molecule/selected_atoms.h"
#include "nmr/pair_integrals.h"

inline constexpr double IsotropicFactor = 17.7504539779;  // 1e6 alpha^2 / 3
inline constexpr double LondonFactor = 8.87522698895;     // half of it

// 1e6 alpha / sqrt(3), over the scale of the field.
inline double ParamagneticFactor() {
    return 4213.0981 / Run.Options.FinitePerturbation;
}

struct ShieldingAtom {
    const double* Position;   // bohr
    const double* Exponents;  // s, p, d of ShieldingExponents, 1/bohr
    int Shell;                // valence shell, 1 to 3
    int OrbitalCount;         // 1, 4 or 9
    OrbitalRange Range;       // in the density

    // For the pair integrals, which know a shell 3 with d orbitals only: where there are none, their exponent may be
    // anything above 0.
    PairOrbitals Orbitals() const {
        return {Shell, {Exponents[0], Exponents[1], OrbitalCount > 4 ? Exponents[2] : Exponents[0]}};
    }
};

// Whether two atoms have shielding terms in common. Atoms at one place have none, as they have no repulsion either, and
// beyond the largest distance nothing is left of any term.
inline bool HavePairTerms(const double* a, const double* b) {
    const double distance = Distance(a, b);
    return distance >= 0.001 && distance <= 1e6;  // bohr
}

// The atom at a place of the list; it must have orbitals.
inline ShieldingAtom AtomAt(int place) {
    const OrbitalRange& range = Run.Basis.OrbitalRanges[place];
    return {SelectedPosition(place), Run.Shielding.ShieldingExponents + 3LL * place,
            ValenceShellTable[SelectedAtom(place).AtomicNumber - 1], range.Last - range.First + 1, range};
}
