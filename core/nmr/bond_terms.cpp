// SPDX-License-Identifier: MIT
// Terms 5, 6 and 7: one orbital on the nucleus's atom and one on another, in both orders.
#include "ground/message_poll.h"
#include "nmr/orbital_table.h"
#include "nmr/pair_integrals.h"
#include "nmr/pair_rotation.h"
#include "nmr/shielding_atoms.h"
#include "nmr/shielding_constants.h"
#include "nmr/shielding_terms.h"

#include <cmath>

static constexpr double SmallestPhase = 1e-16;  // bohr^2: below it a pair has no London term

// Component k of the vector product.
static double CrossComponent(const double* a, const double* b, int k) {
    const int x = (k + 1) % 3;
    const int y = (k + 2) % 3;
    return a[x] * b[y] - a[y] * b[x];
}

static PairBondIntegrals Integrals;  // of the pair in hand

static void AddTerm5(int place, const SlaterAtom& a, const SlaterAtom& b) {
    RotatePairScalars(a.Position, b.Position, Integrals.Charge, b.OrbitalCount, a.OrbitalCount);
    RotatePairScalars(a.Position, b.Position, Integrals.Gauge, a.OrbitalCount, b.OrbitalCount);
    Run.Shielding.ShieldingTerms[4][place] += Contract(Run.Field.TotalDensity, b.Range, a.Range, Integrals.Charge) +
                                              Contract(Run.Field.TotalDensity, a.Range, b.Range, Integrals.Gauge);
}

// The integrals <bra|L_A,k/r_A^3|ket> of one order of the pair, in pair axes, contribute to term 6 with the phase of
// bra and ket and the total density, to term 7 with the density of the field.
static void AddMagneticTerms(int place, const SlaterAtom& a, const SlaterAtom& b, const SlaterAtom& bra,
                             const SlaterAtom& ket, const OrbitalTable (&local)[3]) {
    for (int k = 0; k < 3; ++k) {
        OrbitalTable table;
        RotatePairVector(a.Position, b.Position, k, local, table, bra.OrbitalCount, ket.OrbitalCount);
        const double phase = CrossComponent(ket.Position, bra.Position, k);
        if (!(std::fabs(phase) < SmallestPhase)) {  // on purpose also for what isn't a number
            Run.Shielding.ShieldingTerms[5][place] -=
                phase * LondonFactor * Contract(Run.Field.TotalDensity, bra.Range, ket.Range, table);
        }
        Run.Shielding.ShieldingTerms[6][place] +=
            ParamagneticFactor() * Contract(Run.Shielding.MagneticDensities[k], bra.Range, ket.Range, table);
    }
}

void ComputeBondTerms() {
    for (int i = 0; i < Run.Molecule.SelectedAtomCount; ++i) {
        if (!ShieldingIsShown(i)) {
            continue;
        }
        for (int j = 0; j < Run.Molecule.SelectedAtomCount; ++j) {
            if (j == i || !HasOrbitals(j) || !HavePairTerms(SelectedPosition(i), SelectedPosition(j))) {
                continue;
            }
            const SlaterAtom a = AtomAt(i);
            const SlaterAtom b = AtomAt(j);
            BondPairIntegrals(a, b, Distance(a.Position, b.Position), Integrals);
            AddTerm5(i, a, b);
            AddMagneticTerms(i, a, b, b, a, Integrals.Bond);
            AddMagneticTerms(i, a, b, a, b, Integrals.Cross);
            PollMessages(500);
        }
    }
}
