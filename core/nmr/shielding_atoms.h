// SPDX-License-Identifier: MIT
// An atom of the calculation as the shielding terms see it.
#pragma once

#include "molecule/element_tables.h"
#include "molecule/selected_atoms.h"
#include "nmr/slater_atom.h"

// Whether anybody sees the shielding of the atom at a place: the result file has those of the NMR atoms, the log has
// all. The terms of the others stay 0, as those of a lone pair do; no nucleus shares its sums with another one.
inline bool ShieldingIsShown(int place) {
    return HasOrbitals(place) && (Run.Report.LogEnabled || NMRRowOf(place) >= 0);
}

// Whether two atoms have shielding terms in common. Atoms at one place have none, as they have no repulsion either, and
// beyond the largest distance nothing is left of any term.
inline bool HavePairTerms(const double* a, const double* b) {
    const double distance = Distance(a, b);
    return distance >= 0.001 && distance <= 1e6;  // bohr
}

// The atom at a place of the list; it must have orbitals. The pair integrals know a shell 3 with d orbitals only: where
// there are none, their exponent may be anything above 0.
inline SlaterAtom AtomAt(int place) {
    const OrbitalRange& range = Run.Basis.OrbitalRanges[place];
    const double* zeta = Run.Shielding.ShieldingExponents + 3LL * place;
    const int count = range.Last - range.First + 1;
    return {ValenceShellTable[SelectedAtom(place).AtomicNumber - 1],
            {zeta[0], zeta[1], count > 4 ? zeta[2] : zeta[0]},
            count,
            SelectedPosition(place),
            range};
}
