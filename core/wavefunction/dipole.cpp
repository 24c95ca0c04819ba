// SPDX-License-Identifier: MIT
// Computes the dipole moment.
#include "wavefunction/dipole.h"

#include "ground/fatal_error.h"
#include "ground/log.h"
#include "ground/memory.h"
#include "integrals/auxiliary_functions.h"
#include "molecule/element_tables.h"
#include "molecule/selected_atoms.h"
#include "molecule/units.h"

#include <cmath>
#include <initializer_list>

static constexpr double SmallestIonCharge = 0.5;

// A row of the dipole table: x, y, z and length, Debye.
struct DipoleRow {
    double Component[4];
};

struct DipoleFactor {
    double Sp;  // of the products of s and p orbitals, Debye
    double Pd;  // of the products of p and d orbitals, Debye
};

static double ReferencePoint[3];               // bohr
static DipoleFactor* DipoleFactors = nullptr;  // [SelectedAtomCount]

void ComputeReferencePoint() {
    double mass = 0.0;
    double sum[3] = {};
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const int code = SelectedAtom(place).AtomicNumber;
        for (int k = 0; code >= 1 && k < 3; ++k) {
            sum[k] += AtomicMassTable[code - 1] * SelectedPosition(place)[k];
        }
        mass += code >= 1 ? AtomicMassTable[code - 1] : 0.0;
    }
    const bool ion = Run.Molecule.SelectedAtomCount >= 2 &&
                     std::fabs(static_cast<double>(Run.Options.TotalCharge)) > SmallestIonCharge;
    for (int k = 0; k < 3; ++k) {
        ReferencePoint[k] = ion && mass > 0.0 ? sum[k] / mass : 0.0;
    }
}

// Shells 2 and 3; there are no others beside shell 1, which has no factors.
static DipoleFactor FactorsOf(int shell, const AtomTypeParameters& parameters) {
    const double zs = parameters.SlaterExponentS;
    const double zp = parameters.SlaterExponentP;
    const double zd = parameters.SlaterExponentD;
    DipoleFactor factor = {0.0, 0.0};
    if (shell >= 2 && zs != 0.0) {
        factor.Sp = (shell == 2 ? 7.33697 : 10.27175) / zs;
    }
    if (shell == 3 && zp + zd != 0.0) {
        factor.Pd = std::sqrt(PowerOf(zd * zp, 7)) * 2036.8554 / PowerOf(zp + zd, 8);
    }
    return factor;
}

double DipoleFactorBytes() {
    return static_cast<double>(sizeof(DipoleFactor)) * Run.Molecule.SelectedAtomCount;
}

void PrepareDipoleFactors() {
    if (!AllocateZeroed(DipoleFactors, Run.Molecule.SelectedAtomCount)) {
        FatalError(Message::OutOfMemory);
    }
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const AtomRecord& atom = SelectedAtom(place);
        if (atom.AtomicNumber >= 1) {
            DipoleFactors[place] = FactorsOf(ValenceShellTable[atom.AtomicNumber - 1], ParametersOf(atom));
        }
    }
}

static void AddPointCharges(DipoleRow& row) {
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const AtomRecord& atom = SelectedAtom(place);
        for (int k = 0; atom.AtomicNumber >= 1 && k < 3; ++k) {
            row.Component[k] +=
                (SelectedPosition(place)[k] - ReferencePoint[k]) * static_cast<double>(Run.Field.NetCharges[place]);
        }
    }
    for (int k = 0; k < 3; ++k) {
        row.Component[k] *= DebyesPerChargeBohr;
    }
}

// One triangle of the density only; the factors hold the rest. Negative, for electrons.
static void SubtractHybridTerms(const OrbitalRange& range, const DipoleFactor& factor, DipoleRow& sp, DipoleRow& pd) {
    const long long n = Run.Basis.OrbitalCount;
    const double* density = Run.Field.TotalDensity;
    const long long s = range.First - 1;
    const auto at = [&](long long row, long long column) { return density[(s + row) * n + s + column]; };
    if (range.LastSP > range.First) {
        for (int k = 0; k < 3; ++k) {
            sp.Component[k] -= factor.Sp * at(k + 1, 0);
        }
    }
    if (range.Last > range.LastSP) {
        const int x = 1, y = 2, z = 3, dz2 = 4, dxz = 5, dyz = 6, dx2 = 7, dxy = 8;
        const double c = 0.5773503;
        pd.Component[0] -= (at(dxz, z) + at(dx2, x) + at(dxy, y) - c * at(dz2, x)) * factor.Pd;
        pd.Component[1] -= (at(dxy, x) - at(dx2, y) + at(dyz, z) - c * at(dz2, y)) * factor.Pd;
        pd.Component[2] -= (1.1547005 * at(dz2, z) + at(dyz, y) + at(dxz, x)) * factor.Pd;
    }
}

static void SetLength(DipoleRow& row) {
    const double* v = row.Component;
    row.Component[3] = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
}

static void ListDipole(const DipoleRow& point, const DipoleRow& sp, const DipoleRow& pd, const DipoleRow& sum) {
    const double* a = point.Component;
    const double* b = sp.Component;
    const double* c = pd.Component;
    const double* d = sum.Component;
    LogMessage(Message::DipoleHeading);
    LogMessage(Message::DipolePointCharges, a[0], a[1], a[2], a[3]);
    LogMessage(Message::DipoleSpHybrid, b[0], b[1], b[2], b[3]);
    LogMessage(Message::DipolePdHybrid, c[0], c[1], c[2], c[3]);
    LogMessage(Message::DipoleSum, d[0], d[1], d[2], d[3]);
}

void ComputeDipole() {
    if (Run.Molecule.SelectedAtomCount < 2) {
        return;
    }
    DipoleRow point = {};
    DipoleRow sp = {};
    DipoleRow pd = {};
    AddPointCharges(point);
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        SubtractHybridTerms(Run.Basis.OrbitalRanges[place], DipoleFactors[place], sp, pd);
    }
    DipoleRow sum = {};
    for (int k = 0; k < 3; ++k) {
        sum.Component[k] = point.Component[k] + sp.Component[k] + pd.Component[k];
    }
    for (DipoleRow* row : {&point, &sp, &pd, &sum}) {
        SetLength(*row);
    }
    if (Run.Report.LogEnabled) {
        ListDipole(point, sp, pd, sum);
    }
}
