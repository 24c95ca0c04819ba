// SPDX-License-Identifier: MIT
// Fills the tables of one atom's own orbitals.
#include "nmr/on_atom_integrals.h"

#include "nmr/shielding_constants.h"
#include "numerics/mathematical_constants.h"
#include "wavefunction/orbital_places.h"

#include <cmath>

enum TensorTable { M1, M2, M3, M4, M5, M6 };

static void SetSymmetric(OrbitalTable& table, int row, int column, double value) {
    table[row][column] = value;
    table[column][row] = value;
}

static void SetAntisymmetric(OrbitalTable& table, int row, int column, double value) {
    table[row][column] = value;
    table[column][row] = -value;
}

void OnAtomChargeTable(const SlaterAtom& atom, OrbitalTable& table) {
    static constexpr double Factors[] = {IsotropicFactor, HalfIsotropicFactor, ThirdIsotropicFactor};
    ClearTable(table);
    for (int k = S; k <= DXY; ++k) {
        const double zeta = atom.Zeta[k == S ? 0 : k <= Z ? 1 : 2];
        const bool there = k == S || (atom.Shell >= 2 && k <= Z) || atom.Shell == 3;
        table[k][k] = there ? zeta * Factors[atom.Shell - 1] : 0.0;
    }
}

static void FillSecondShell(const double* zeta, OrbitalTable (&m)[6]) {
    for (int axis = M1; axis <= M3; ++axis) {
        m[axis][S][S] = zeta[0] / 3.0;
        for (int p = X; p <= Z; ++p) {
            m[axis][p][p] = (p - X == axis ? 0.2 : 0.4) * zeta[1];
        }
    }
    SetSymmetric(m[M4], X, Y, 0.1 * zeta[1]);
    SetSymmetric(m[M6], X, Z, 0.1 * zeta[1]);
    SetSymmetric(m[M5], Y, Z, 0.1 * zeta[1]);
}

static void FillThirdShell(const double* zeta, OrbitalTable (&m)[6]) {
    for (int axis = M1; axis <= M3; ++axis) {
        m[axis][S][S] = 2.0 * zeta[0] / 9.0;
        for (int p = X; p <= Z; ++p) {
            m[axis][p][p] = (p - X == axis ? 0.13333333333333333 : 0.26666666666666666) * zeta[1];
        }
    }
    SetSymmetric(m[M4], X, Y, 0.06666666666666667 * zeta[1]);
    SetSymmetric(m[M6], X, Z, 0.06666666666666667 * zeta[1]);
    SetSymmetric(m[M5], Y, Z, 0.06666666666666667 * zeta[1]);
}

static void FillDiagonalD(const double* zeta, double t, OrbitalTable (&m)[6]) {
    const double five = std::sqrt(5.0) * t;
    const double fifteen = std::sqrt(15.0) * t;
    SetSymmetric(m[M1], S, DZ2, 1.4222222222222223 * five);
    SetSymmetric(m[M2], S, DZ2, 1.4222222222222223 * five);
    SetSymmetric(m[M3], S, DZ2, -2.8444444444444446 * five);
    SetSymmetric(m[M1], S, DX2, -1.4222222222222223 * fifteen);
    SetSymmetric(m[M2], S, DX2, 1.4222222222222223 * fifteen);
    static constexpr double Diagonal[3][5] = {
        {0.25396825396825395, 0.19047619047619047, 0.2857142857142857, 0.19047619047619047, 0.19047619047619047},
        {0.25396825396825395, 0.2857142857142857, 0.19047619047619047, 0.19047619047619047, 0.19047619047619047},
        {0.15873015873015872, 0.19047619047619047, 0.19047619047619047, 0.2857142857142857, 0.2857142857142857}};
    for (int axis = M1; axis <= M3; ++axis) {
        for (int d = 0; d < 5; ++d) {
            m[axis][DZ2 + d][DZ2 + d] = Diagonal[axis][d] * zeta[2];
        }
    }
    SetSymmetric(m[M1], DZ2, DX2, 0.031746031746031744 * std::sqrt(3.0) * zeta[2]);
    SetSymmetric(m[M2], DZ2, DX2, -0.031746031746031744 * std::sqrt(3.0) * zeta[2]);
}

// The element of dz2 with dx2-y2 in M4 stands, on purpose, where that of dz2 with dxy would be expected.
static void FillOffDiagonalD(const double* zeta, double t, OrbitalTable (&m)[6]) {
    const double fifteen = 1.4222222222222223 * std::sqrt(15.0) * t;
    SetSymmetric(m[M6], S, DXZ, fifteen);
    SetSymmetric(m[M5], S, DYZ, fifteen);
    SetSymmetric(m[M4], S, DXY, fifteen);
    SetSymmetric(m[M6], DZ2, DXZ, 0.015873015873015872 * std::sqrt(3.0) * zeta[2]);
    SetSymmetric(m[M5], DZ2, DYZ, 0.015873015873015872 * std::sqrt(3.0) * zeta[2]);
    SetSymmetric(m[M4], DZ2, DX2, -0.031746031746031744 * std::sqrt(3.0) * zeta[2]);
    SetSymmetric(m[M4], DXZ, DYZ, 0.047619047619047616 * zeta[2]);
    SetSymmetric(m[M6], DXZ, DX2, 0.047619047619047616 * zeta[2]);
    SetSymmetric(m[M5], DXZ, DXY, 0.047619047619047616 * zeta[2]);
    SetSymmetric(m[M5], DYZ, DX2, -0.047619047619047616 * zeta[2]);
    SetSymmetric(m[M6], DYZ, DXY, 0.047619047619047616 * zeta[2]);
}

void OnAtomTensorTables(int code, const SlaterAtom& atom, OrbitalTable (&tables)[6]) {
    for (int axis = M1; axis <= M6; ++axis) {
        ClearTable(tables[axis]);
    }
    if (code < 3) {
        for (int axis = M1; axis <= M3; ++axis) {
            tables[axis][S][S] = 2.0 * atom.Zeta[0] / 3.0;
        }
    } else if (code <= 10) {
        FillSecondShell(atom.Zeta, tables);
    } else if (code <= 18) {
        FillThirdShell(atom.Zeta, tables);
        if (atom.OrbitalCount == LargestOrbitals) {  // where there are none, their exponent is a stand-in
            const double root = std::sqrt(atom.Zeta[0] * atom.Zeta[2]);
            const double sum = atom.Zeta[0] + atom.Zeta[2];
            const double t = root * root * root * root * root * root * root / (sum * sum * sum * sum * sum * sum);
            FillDiagonalD(atom.Zeta, t, tables);
            FillOffDiagonalD(atom.Zeta, t, tables);
        }
    }
}

void OnAtomMomentTable(const SlaterAtom& atom, int k, double factor, OrbitalTable& table) {
    const double zp = atom.Zeta[1];
    const double zd = atom.Zeta[2];
    const double a = atom.Shell == 2 ? factor * zp * zp * zp / 3.0 : factor * zp * zp * zp * 0.06666666666666667;
    const double b = atom.Shell == 3 ? factor * zd * zd * zd * 0.06666666666666667 : 0.0;
    ClearTable(table);
    switch (k) {
    case 0:
        SetAntisymmetric(table, Y, Z, -a);
        SetAntisymmetric(table, DZ2, DYZ, RoundedRootThree * b);
        SetAntisymmetric(table, DXZ, DXY, b);
        SetAntisymmetric(table, DYZ, DX2, -b);
        break;
    case 1:
        SetAntisymmetric(table, X, Z, a);
        SetAntisymmetric(table, DZ2, DXZ, -RoundedRootThree * b);
        SetAntisymmetric(table, DXZ, DX2, -b);
        SetAntisymmetric(table, DYZ, DXY, -b);
        break;
    default:
        SetAntisymmetric(table, X, Y, -a);
        SetAntisymmetric(table, DXZ, DYZ, -b);
        SetAntisymmetric(table, DX2, DXY, -2.0 * b);
        break;
    }
}
