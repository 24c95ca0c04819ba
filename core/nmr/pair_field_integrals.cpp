// SPDX-License-Identifier: MIT
// Integrals over two orbitals of one atom b of operators about another nucleus a: the field at a of the multipoles of
// the product of the two orbitals, in closed form.
#include "nmr/pair_integrals.h"

#include "ground/message_poll.h"
#include "nmr/field_terms.h"
#include "nmr/shielding_constants.h"
#include "numerics/elementary_functions.h"
#include "numerics/mathematical_constants.h"

#include <cmath>

static constexpr int LargestMultipole = 5;
static constexpr int LargestPower = 12;
static constexpr int MomentumOfOrbital[LargestOrbitals] = {0, 1, 1, 1, 2, 2, 2, 2, 2};

// Radial fields of a product of two radial functions times r^power, by multipole.
struct RadialField {
    double Axial[LargestMultipole + 1];
    double Transverse[LargestMultipole + 1];
};

// inner[p] := integral of u^p e^(-xu) from 0 to 1 for p from 0 to top, outer[p] := the same from 1 to infinity.
static void FillGammaTables(double x, int top, double* inner, double* outer) {
    const double e = Exponential(-x);
    outer[0] = e / x;
    for (int p = 1; p <= top; ++p) {
        outer[p] = (e + p * outer[p - 1]) / x;
    }
    if (x > 20.0) {
        double whole = 1.0 / x;
        for (int p = 0; p <= top; ++p) {
            inner[p] = whole - outer[p];
            whole *= (p + 1) / x;
        }
        return;
    }
    // the series of the highest one, of positive terms, then downwards without cancellation
    double term = e / (top + 1);
    double sum = term;
    for (int i = 2; term > 1e-17 * sum; ++i) {
        term *= x / (top + i);
        sum += term;
    }
    inner[top] = sum;
    for (int p = top; p > 0; --p) {
        inner[p - 1] = (x * inner[p] + e) / p;
    }
}

// Radial fields at distance r of r^power e^(-zeta r) times norm. Multipoles up to top only; negative powers of the
// outer integrals belong to multipoles without terms.
static void FillRadialField(double zeta, int power, double norm, double r, int top, RadialField& field) {
    double inner[LargestPower + 1];
    double outer[LargestPower + 1];
    FillGammaTables(zeta * r, power + top + 2, inner, outer);
    double scale = norm;
    for (int i = 0; i <= power; ++i) {
        scale *= r;
    }
    for (int l = 0; l <= top && power + 1 - l >= 0; ++l) {
        const double in = inner[power + l + 2];
        const double out = outer[power + 1 - l];
        field.Axial[l] = scale * (l * out - (l + 1) * in);
        field.Transverse[l] = scale * (in + out);
    }
}

// (2 zeta)^(n + 1/2)/sqrt((2n)!)
static double RadialNorm(int shell, double zeta) {
    static constexpr double Factorials[4] = {1.0, 2.0, 24.0, 720.0};
    const double z = 2.0 * zeta;
    double power = z;
    for (int i = 1; i < shell; ++i) {
        power *= z;
    }
    return power * std::sqrt(z / Factorials[shell]);
}

static void FillTensorFields(const SlaterAtom& b, double r, RadialField (&fields)[3][3]) {
    for (int i = 0; i < b.Shell; ++i) {
        for (int j = i; j < b.Shell; ++j) {
            const double norm = RadialNorm(b.Shell, b.Zeta[i]) * RadialNorm(b.Shell, b.Zeta[j]);
            FillRadialField(b.Zeta[i] + b.Zeta[j], 2 * b.Shell - 1, norm, r, i + j + 1, fields[i][j]);
        }
    }
}

static double TermValue(const FieldTerm& term, const RadialField& field) {
    return term.Factor * (term.Axial ? field.Axial[term.L] : field.Transverse[term.L]);
}

// The radial field of the two orbitals of a term.
static const RadialField& FieldOf(const FieldTerm& term, const RadialField (&fields)[3][3]) {
    return fields[MomentumOfOrbital[term.Row]][MomentumOfOrbital[term.Column]];
}

template <int Count> static void ClearTables(OrbitalTable (&tables)[Count]) {
    for (OrbitalTable& table : tables) {
        ClearTable(table);
    }
}

// The lower triangle from the upper one.
static void MirrorTable(int count, OrbitalTable& table) {
    for (int row = 0; row < count; ++row) {
        for (int column = 0; column < row; ++column) {
            table[row][column] = table[column][row];
        }
    }
}

void PairTensorIntegrals(const SlaterAtom& b, double r, OrbitalTable (&tables)[9]) {
    PollMessages(200);
    ClearTables(tables);
    const int count = PairOrbitalCount(b.Shell);
    if (count == 0) {
        return;
    }
    RadialField fields[3][3] = {};
    FillTensorFields(b, r, fields);
    for (int i = 0; i < TensorTerms.Count && TensorTerms.Terms[i].Row < count; ++i) {
        const FieldTerm& term = TensorTerms.Terms[i];
        if (term.Column < count) {
            tables[term.Table][term.Row][term.Column] += TermValue(term, FieldOf(term, fields));
        }
    }
    for (OrbitalTable& table : tables) {
        MirrorTable(count, table);
    }
}

// Polynomial of t, factors from the constant on.
static double PolynomialOf(const double* factors, int degree, double t) {
    double value = factors[degree];
    for (int i = degree - 1; i >= 0; --i) {
        value = value * t + factors[i];
    }
    return value;
}

// zeta N(t)/D(t) of the ten cases, t = 2 zeta R; the rounded constants of the denominators are results as they stand.
static void FillThirdRowMoments(double zeta, double r, OrbitalTable& table) {
    static constexpr double Polynomials[10][11] = {{120, 120, 60, 20, 5, 1},
                                                   {1680, 1680, 840, 296, 86, 22, 5, 1},
                                                   {16128, 16128, 8064, 2688, 672, 138, 26, 5, 1},
                                                   {2688, 2688, 1344, 428, 92, 13, 1},
                                                   {15552, 15552, 7608, 2424, 564, 100, 13, 1},
                                                   {10752, 10752, 5376, 1832, 488, 112, 24, 5, 1},
                                                   {93312, 93312, 47328, 16224, 4224, 896, 164, 28, 5, 1},
                                                   {829440, 829440, 419328, 142848, 36864, 7704, 1368, 216, 32, 5, 1},
                                                   {92160, 92160, 45696, 14976, 3648, 700, 108, 13, 1},
                                                   {5760, 5760, 2688, 768, 144, 17, 1}};
    static constexpr int Degrees[10] = {5, 7, 8, 6, 7, 8, 9, 10, 8, 6};
    static constexpr int Rows[10] = {0, 0, 0, 1, 1, 3, 3, 4, 5, 7};
    static constexpr int Columns[10] = {0, 3, 4, 1, 5, 3, 4, 4, 5, 7};
    const double t = 2.0 * zeta * r;
    const double t2 = t * t;
    const double e = Exponential(-t);
    double p[10];
    for (int i = 0; i < 10; ++i) {
        p[i] = e * PolynomialOf(Polynomials[i], Degrees[i], t);
    }
    const double values[10] = {p[0] / 360.0,
                               (1680.0 - p[1]) / (207.846096 * t2),
                               (p[2] - 16128.0) / (160.996896 * t2 * t),
                               (2688.0 - p[3]) / (60.0 * t2 * t),
                               (p[4] + 168.0 * t2 - 15552.0) / (26.832816 * t2 * t2),
                               (p[5] - 10752.0) / (120.0 * t2 * t),
                               (672.0 * t2 + 93312.0 - p[6]) / (92.9515992 * t2 * t2),
                               (p[7] - (4608.0 * t2 + 829440.0)) / (72.0 * t2 * t2 * t),
                               (92160.0 - 384.0 * t2 - p[8]) / (12.0 * t2 * t2 * t),
                               (p[9] + 192.0 * t2 - 5760.0) / (3.0 * t2 * t2 * t)};
    for (int i = 0; i < 10; ++i) {
        const double value = IsotropicFactor * (zeta * values[i]);
        table[Rows[i]][Columns[i]] = value;
        table[Columns[i]][Rows[i]] = value;
    }
    table[2][2] = table[1][1];
    table[2][6] = table[1][5];
    table[6][2] = table[1][5];
    table[6][6] = table[5][5];
    table[8][8] = table[7][7];
}

void OrbitalMomentIntegrals(const SlaterAtom& b, double r, OrbitalTable& table) {
    PollMessages(200);
    ClearTable(table);
    const int count = PairOrbitalCount(b.Shell);
    if (count == 0) {
        return;
    }
    if (b.Shell == 3) {
        FillThirdRowMoments(b.Zeta[0], r, table);
        return;
    }
    RadialField fields[3][3] = {};
    FillTensorFields(b, r, fields);
    for (int i = 0; i < TensorTerms.Count && TensorTerms.Terms[i].Row < count; ++i) {
        const FieldTerm& term = TensorTerms.Terms[i];
        if (term.Column < count && term.Table % 4 == 0) {
            table[term.Row][term.Column] += IsotropicFactor * TermValue(term, FieldOf(term, fields));
        }
    }
    MirrorTable(count, table);
}

static void SetPair(OrbitalTable& table, int row, int column, double value) {
    table[row][column] = value;
    table[column][row] = -value;
}

// The closed forms of shell 2.
static void FillSecondRowMagnetic(double z, double r, double k, OrbitalTable (&tables)[3]) {
    const double x = z * r;
    const double u = 1.0 / x;
    const double e = Exponential(-2.0 * x);
    const double z3 = z * z * z;
    const double a = (u * u / 2.0 - (u * u / 2.0 + u + x + 1.0) * e) * z3 * -InverseOfRoundedRoot * k;
    const double b = -(u * u * u / 2.0 - (u * u * u / 2.0 + u * u + u + x + 1.0) * e) * z3 * k;
    const double c = (u * u * u - (u * u * u + 2.0 * u * u + 2.0 * u + 1.0) * e) * z3 * k;
    SetPair(tables[0], 2, 0, a);
    SetPair(tables[0], 3, 2, b);
    SetPair(tables[1], 0, 1, a);
    SetPair(tables[1], 1, 3, b);
    SetPair(tables[2], 2, 1, c);
}

void PairMagneticIntegrals(const SlaterAtom& b, double r, double k, OrbitalTable (&tables)[3]) {
    PollMessages(200);
    ClearTables(tables);
    if (b.Shell == 2) {
        FillSecondRowMagnetic(b.Zeta[1], r, k, tables);
    }
    if (b.Shell != 3) {
        return;
    }
    const double norm = RadialNorm(3, b.Zeta[0]);
    RadialField field = {};
    FillRadialField(2.0 * b.Zeta[0], 3, norm * norm, r, 4, field);
    for (int i = 0; i < MagneticTerms.Count; ++i) {
        const FieldTerm& term = MagneticTerms.Terms[i];
        const double value = TermValue(term, field);
        // [row][column] holds <column|L|row>, on purpose
        tables[term.Table][term.Row][term.Column] -= k * value;
        tables[term.Table][term.Column][term.Row] += k * value;
    }
}
