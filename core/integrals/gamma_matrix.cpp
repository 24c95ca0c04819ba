// SPDX-License-Identifier: MIT
// Fills the gamma matrix atom pair by atom pair: at most four different numbers a pair.
#include "integrals/gamma_matrix.h"

#include "integrals/auxiliary_functions.h"
#include "integrals/two_centre_coulomb.h"
#include "molecule/selected_atoms.h"
#include "numerics/factorial.h"
#include "numerics/mirrored_triangle.h"

static constexpr double FarDistance = 100.0;  // bohr
static constexpr double NearDistance = 0.001;

// One atom of a pair.
struct GammaAtom {
    int Place;  // in the list of the calculation
    OrbitalRange Range;
    int Shell;         // principal quantum number
    double ExponentS;  // of its s and p cloud, 1/bohr
    double ExponentD;  // of its d cloud; of no meaning without d orbitals
    bool HasD;
};

// Repulsions of the clouds of two atoms A and B, Hartree: the first letter is A's cloud.
struct GammaValues {
    double SpSp;
    double SpD;
    double DSp;
    double DD;
};

double OneCentreCoulomb(int n1, int n2, double zeta1, double zeta2) {
    const double a = 2.0 * zeta1;
    const double b = 2.0 * zeta2;
    const int m = 2 * n1;
    const int k = 2 * n2;
    double sum = 0.0;
    for (int j = 1; j <= k; ++j) {
        const double divisor = PowerOf(a + b, m + k - j) * FactorialTable[k - j];
        sum += j * PowerOf(b, k - j) * FactorialTable[m + k - j - 1] / divisor;
    }
    const double bracket = FactorialTable[m - 1] / PowerOf(a, m) - sum / k;
    return PowerOf(a, m + 1) * bracket / FactorialTable[m];
}

// False for an atom without orbitals.
static bool ReadAtom(int place, GammaAtom* atom) {
    const AtomRecord& record = SelectedAtom(place);
    if (record.AtomicNumber < 1) {
        return false;
    }
    atom->Place = place;
    atom->Range = Run.Basis.OrbitalRanges[place];
    atom->Shell = Run.Basis.OrbitalPrincipalNumbers[atom->Range.First - 1];
    atom->ExponentS = ParametersOf(record).SlaterExponentS;
    atom->ExponentD = ParametersOf(record).SlaterExponentD;
    atom->HasD = atom->Range.Last > atom->Range.LastSP;
    return true;
}

static void OneCentreValues(const GammaAtom& atom, GammaValues* values) {
    const int n = atom.Shell;
    if (atom.HasD) {
        values->DSp = OneCentreCoulomb(n, n, atom.ExponentD, atom.ExponentS);
        values->SpD = OneCentreCoulomb(n, n, atom.ExponentS, atom.ExponentD);
        values->DD = OneCentreCoulomb(n, n, atom.ExponentD, atom.ExponentD);
    }
    values->SpSp = OneCentreCoulomb(n, n, atom.ExponentS, atom.ExponentS);
}

// The integral of A's cloud with B's, by the class whose first shell is the smaller one.
static double CloudPair(const GammaAtom& a, double zetaA, const GammaAtom& b, double zetaB, double distance) {
    if (a.Shell <= b.Shell) {
        return TwoCentreCoulomb(a.Shell, b.Shell, zetaA, zetaB, distance);
    }
    return TwoCentreCoulomb(b.Shell, a.Shell, zetaB, zetaA, distance);
}

static bool HasClass(int shell) {
    return shell >= 1 && shell <= 3;
}

static void TwoCentreValues(const GammaAtom& a, const GammaAtom& b, GammaValues* values) {
    const double distance = Distance(SelectedPosition(a.Place), SelectedPosition(b.Place));
    if (distance >= FarDistance || distance <= NearDistance) {
        *values = {0.0, 0.0, 0.0, 0.0};  // on purpose neither the inverse distance nor a limit
        return;
    }
    if (!HasClass(a.Shell) || !HasClass(b.Shell)) {
        return;  // the pair before stands; no atom of a calculation comes here
    }
    values->SpSp = CloudPair(a, a.ExponentS, b, b.ExponentS, distance);
    if (b.HasD) {
        values->SpD = CloudPair(a, a.ExponentS, b, b.ExponentD, distance);
    }
    if (a.HasD) {
        values->DSp = CloudPair(a, a.ExponentD, b, b.ExponentS, distance);
    }
    if (a.HasD && b.HasD) {
        values->DD = CloudPair(a, a.ExponentD, b, b.ExponentD, distance);
    }
}

static void StoreValues(const GammaAtom& a, const GammaAtom& b, const GammaValues& values, double* gamma) {
    for (int row = a.Range.First; row <= a.Range.Last; ++row) {
        double* target = gamma + static_cast<long long>(row - 1) * Run.Basis.OrbitalCount - 1;
        const bool rowIsD = row > a.Range.LastSP;
        for (int column = b.Range.First; column <= b.Range.LastSP; ++column) {
            target[column] = rowIsD ? values.DSp : values.SpSp;
        }
        for (int column = b.Range.LastSP + 1; column <= b.Range.Last; ++column) {
            target[column] = rowIsD ? values.DD : values.SpD;
        }
    }
}

void BuildGammaMatrix(double* gamma) {
    GammaValues values = {0.0, 0.0, 0.0, 0.0};
    for (int placeA = 0; placeA < Run.Molecule.SelectedAtomCount; ++placeA) {
        GammaAtom a;
        if (!ReadAtom(placeA, &a)) {
            continue;
        }
        for (int placeB = 0; placeB < placeA; ++placeB) {
            GammaAtom b;
            if (ReadAtom(placeB, &b)) {
                TwoCentreValues(a, b, &values);
                StoreValues(a, b, values, gamma);
            }
        }
        OneCentreValues(a, &values);
        StoreValues(a, a, values, gamma);
    }
    MirrorLowerTriangle(gamma, Run.Basis.OrbitalCount);
}
