// SPDX-License-Identifier: MIT
// Terms 8, 9 and 10: both orbitals on atoms beside the nucleus's own. One evaluation of the integrals serves a pair of
// atoms in both orders.
#include "ground/message_poll.h"
#include "nmr/orbital_table.h"
#include "nmr/shielding_atoms.h"
#include "nmr/shielding_constants.h"
#include "nmr/shielding_terms.h"
#include "nmr/three_centre_integrals.h"

static ThreeCentreTables Tables;  // of the triple in hand

// The integrals of the magnetic operator change sign when bra and ket change places, and so do the phase and the
// density of the field: both orders give the same.
static void AddTriple(int place, const double* nucleus, const SlaterAtom& b, const SlaterAtom& c) {
    ThreeCentreIntegrals(b, c, nucleus, Tables);
    Run.Shielding.ShieldingTerms[7][place] +=
        IsotropicFactor * (Contract(Run.Field.TotalDensity, b.Range, c.Range, Tables.Gauge) +
                           Contract(Run.Field.TotalDensity, b.Range, c.Range, Tables.ReverseGauge));
    for (int k = 0; k < 3; ++k) {
        const int x = (k + 1) % 3;
        const int y = (k + 2) % 3;
        const double phase = c.Position[x] * b.Position[y] - c.Position[y] * b.Position[x];
        Run.Shielding.ShieldingTerms[8][place] -=
            2.0 * LondonFactor * phase * Contract(Run.Field.TotalDensity, b.Range, c.Range, Tables.Magnetic[k]);
        Run.Shielding.ShieldingTerms[9][place] +=
            2.0 * ParamagneticFactor() *
            Contract(Run.Shielding.MagneticDensities[k], b.Range, c.Range, Tables.Magnetic[k]);
    }
}

static bool FormTriple(int a, int b, int c) {
    return HavePairTerms(SelectedPosition(a), SelectedPosition(b)) &&
           HavePairTerms(SelectedPosition(a), SelectedPosition(c)) &&
           HavePairTerms(SelectedPosition(b), SelectedPosition(c));
}

void ComputeThreeCentreTerms() {
    for (int a = 0; a < Run.Molecule.SelectedAtomCount; ++a) {
        if (!ShieldingIsShown(a)) {
            continue;
        }
        for (int b = 0; b < Run.Molecule.SelectedAtomCount; ++b) {
            for (int c = b + 1; b != a && HasOrbitals(b) && c < Run.Molecule.SelectedAtomCount; ++c) {
                if (c != a && HasOrbitals(c) && FormTriple(a, b, c)) {
                    AddTriple(a, SelectedPosition(a), AtomAt(b), AtomAt(c));
                    PollMessages(500);
                }
            }
        }
    }
}
