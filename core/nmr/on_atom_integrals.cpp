// SPDX-License-Identifier: MIT
// Fills the tables of one atom's own orbitals.
#include "nmr/on_atom_integrals.h"

#include <algorithm>
#include <cmath>

enum { S, X, Y, Z, DZ2, DXZ, DYZ, DX2, DXY };
enum { M1, M2, M3, M4, M5, M6 };

static constexpr double RootThree = 1.7320508;

static void Clear(OrbitalTable& table) {
    std::fill(&table[0][0], &table[0][0] + LargestOrbitals * LargestOrbitals, 0.0);
}

static void SetSymmetric(OrbitalTable& table, int row, int column, double value) {
    table[row][column] = value;
    table[column][row] = value;
}

static void SetAntisymmetric(OrbitalTable& table, int row, int column, double value) {
    table[row][column] = value;
    table[column][row] = -value;
}

void OnAtomChargeTable(int shell, const double* exponents, OrbitalTable& table) {
    static constexpr double Factors[] = {17.7504539779, 8.87522698895, 5.916817992633334};
    Clear(table);
    for (int k = S; k <= DXY; ++k) {
        const double exponent = exponents[k == S ? 0 : k <= Z ? 1 : 2];
        const bool there = k == S || (shell >= 2 && k <= Z) || shell == 3;
        table[k][k] = there ? exponent * Factors[shell - 1] : 0.0;
    }
}

static void FillSecondShell(const double* zeta, OrbitalTable* m) {
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

static void FillThirdShell(const double* zeta, OrbitalTable* m) {
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

static void FillDiagonalD(const double* zeta, double t, OrbitalTable* m) {
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
static void FillOffDiagonalD(const double* zeta, double t, OrbitalTable* m) {
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

void OnAtomTensorTables(int code, const double* exponents, bool hasD, OrbitalTable* tables) {
    for (int axis = M1; axis <= M6; ++axis) {
        Clear(tables[axis]);
    }
    if (code < 3) {
        for (int axis = M1; axis <= M3; ++axis) {
            tables[axis][S][S] = 2.0 * exponents[0] / 3.0;
        }
    } else if (code <= 10) {
        FillSecondShell(exponents, tables);
    } else if (code <= 18) {
        FillThirdShell(exponents, tables);
        if (hasD) {  // a modified exponent can be negative where there are no d orbitals
            const double root = std::sqrt(exponents[0] * exponents[2]);
            const double sum = exponents[0] + exponents[2];
            const double t = root * root * root * root * root * root * root / (sum * sum * sum * sum * sum * sum);
            FillDiagonalD(exponents, t, tables);
            FillOffDiagonalD(exponents, t, tables);
        }
    }
}

void OnAtomMomentTable(int shell, const double* exponents, int k, double factor, OrbitalTable& table) {
    const double zp = exponents[1];
    const double zd = exponents[2];
    const double a = shell == 2 ? factor * zp * zp * zp / 3.0 : factor * zp * zp * zp * 0.06666666666666667;
    const double b = shell == 3 ? factor * zd * zd * zd * 0.06666666666666667 : 0.0;
    Clear(table);
    switch (k) {
    case 0:
        SetAntisymmetric(table, Y, Z, -a);
        SetAntisymmetric(table, DZ2, DYZ, RootThree * b);
        SetAntisymmetric(table, DXZ, DXY, b);
        SetAntisymmetric(table, DYZ, DX2, -b);
        break;
    case 1:
        SetAntisymmetric(table, X, Z, a);
        SetAntisymmetric(table, DZ2, DXZ, -RootThree * b);
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
