// SPDX-License-Identifier: MIT
// Two-centre integrals of the magnetic shielding: reference values of every family, identities, limits.
#include "nmr/pair_integrals.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

namespace {

constexpr double factor = 17.7504539779;
constexpr double paramagneticConstant = 4213.0981;
constexpr double referenceTolerance = 1e-9;
// the printed closed forms hold denominators of nine digits
constexpr double closedFormTolerance = 2e-8;

enum Family {
    FamilyCharge,
    FamilyGauge,
    FamilyBond,
    FamilyCross,
    FamilyMoment,
    FamilyThirdRowMoment,
    FamilyMagnetic,
    FamilyTensor
};

struct ReferenceRow {
    Family Kind;
    int Table;
    int Row;
    int Column;
    SlaterAtom A;
    SlaterAtom B;
    double R;
    double Value;
};

const ReferenceRow referenceRows[] = {
#include "tests/reference/shielding/pair_integrals.inc"
};

const SlaterAtom hydrogen = {1, {1.3, 0.0, 0.0}};
const SlaterAtom carbon = {2, {1.625, 1.4, 0.0}};
const SlaterAtom oxygen = {2, {2.3, 2.1, 0.0}};
const SlaterAtom chlorine = {3, {2.4, 2.0, 1.3}};

double Evaluate(const ReferenceRow& row) {
    PairBondIntegrals bond;
    OrbitalTable tables[9];
    OrbitalTable magnetic[3];
    switch (row.Kind) {
    case FamilyCharge:
        BondPairIntegrals(row.A, row.B, row.R, bond);
        return bond.Charge[row.Row][row.Column];
    case FamilyGauge:
        BondPairIntegrals(row.A, row.B, row.R, bond);
        return bond.Gauge[row.Row][row.Column];
    case FamilyBond:
        BondPairIntegrals(row.A, row.B, row.R, bond);
        return bond.Bond[row.Table][row.Row][row.Column];
    case FamilyCross:
        BondPairIntegrals(row.A, row.B, row.R, bond);
        return bond.Cross[row.Table][row.Row][row.Column];
    case FamilyMoment:
    case FamilyThirdRowMoment:
        OrbitalMomentIntegrals(row.B, row.R, tables[0]);
        return tables[0][row.Row][row.Column];
    case FamilyMagnetic:
        PairMagneticIntegrals(row.B, row.R, paramagneticConstant, magnetic);
        return magnetic[row.Table][row.Row][row.Column];
    default:
        PairTensorIntegrals(row.B, row.R, tables);
        return tables[row.Table][row.Row][row.Column];
    }
}

}  // namespace

// Property: every family, all shell pairs. Reference: two independent quadratures that agree to 1e-11.
TEST(PairIntegrals, AgreeWithIndependentQuadrature) {
    for (const ReferenceRow& row : referenceRows) {
        const double deviation = std::abs(Evaluate(row) / row.Value - 1.0);
        EXPECT_LT(deviation, row.Kind == FamilyThirdRowMoment || row.Kind == FamilyMagnetic ? closedFormTolerance
                                                                                            : referenceTolerance)
            << "family " << row.Kind << " table " << row.Table << " element " << row.Row << ", " << row.Column
            << " value " << Evaluate(row) << " reference " << row.Value;
    }
}

// Property: for equal 1s exponents the charge integral is 17.75... zeta (1 + x) e^(-x), x = zeta R,
// from short to long distances.
TEST(PairIntegrals, ChargeIntegralOfEqualExponents) {
    for (const double r : {0.5, 1.4, 4.0, 10.0, 20.0, 30.0, 40.0}) {
        PairBondIntegrals bond;
        BondPairIntegrals(hydrogen, hydrogen, r, bond);
        const double x = hydrogen.Zeta[0] * r;
        EXPECT_NEAR(bond.Charge[0][0] / (factor * hydrogen.Zeta[0] * (1.0 + x) * std::exp(-x)), 1.0, 1e-11) << r;
    }
}

// Property: L_a/r_a^3 is antihermitian, and annihilates s orbitals of a.
TEST(PairIntegrals, CrossIsMinusTransposedBond) {
    PairBondIntegrals bond;
    BondPairIntegrals(chlorine, carbon, 3.3, bond);
    for (int k = 0; k < 3; ++k) {
        for (int row = 0; row < LargestOrbitals; ++row) {
            for (int column = 0; column < LargestOrbitals; ++column) {
                EXPECT_EQ(bond.Cross[k][row][column], -bond.Bond[k][column][row]);
            }
            EXPECT_EQ(bond.Cross[k][0][row], 0.0);
        }
    }
}

TEST(PairIntegrals, EntriesWithoutOrbitalsAreZero) {
    PairBondIntegrals bond;
    BondPairIntegrals(hydrogen, carbon, 2.1, bond);
    for (int row = 0; row < LargestOrbitals; ++row) {
        for (int column = 0; column < LargestOrbitals; ++column) {
            if (row >= 4 || column >= 1) {
                EXPECT_EQ(bond.Charge[row][column], 0.0);
            }
        }
    }
    EXPECT_NE(bond.Charge[3][0], 0.0);
}

// Property: (r_b . r_a)/r_a^3 = 1/r_a + (R_a - R_b) . r_a/r_a^3, so the trace of the tensor is the orbital moment.
TEST(PairIntegrals, TraceOfTensorIsOrbitalMoment) {
    for (const SlaterAtom& atom : {hydrogen, carbon, oxygen}) {
        OrbitalTable tensor[9];
        OrbitalTable moment;
        PairTensorIntegrals(atom, 2.7, tensor);
        OrbitalMomentIntegrals(atom, 2.7, moment);
        for (int row = 0; row < 4; ++row) {
            for (int column = 0; column < 4; ++column) {
                EXPECT_NEAR(factor * (tensor[0][row][column] + tensor[4][row][column] + tensor[8][row][column]),
                            moment[row][column], 1e-13);
            }
        }
    }
}

// Property: shell 3 with one exponent for all orbitals: the trace is the printed closed form.
TEST(PairIntegrals, TraceOfTensorIsThirdRowMomentForEqualExponents) {
    const SlaterAtom atom = {3, {1.7, 1.7, 1.7}};
    OrbitalTable tensor[9];
    OrbitalTable moment;
    PairTensorIntegrals(atom, 2.9, tensor);
    OrbitalMomentIntegrals(atom, 2.9, moment);
    for (int row = 0; row < LargestOrbitals; ++row) {
        for (int column = 0; column < LargestOrbitals; ++column) {
            EXPECT_NEAR(factor * (tensor[0][row][column] + tensor[4][row][column] + tensor[8][row][column]),
                        moment[row][column], closedFormTolerance * (std::abs(moment[row][column]) + 1e-4));
        }
    }
}

// Limit: at large R only the field of a and its gradient over b remain. <s|z_b z_a/r_a^3|pz> tends to the transition
// dipole over R^2, <s|x_b x_a/r_a^3|s> to <r^2>/3 times the gradient of the field, 1/R^3 across the axis, -2/R^3 along.
TEST(PairIntegrals, TensorAtLargeDistance) {
    const double r = 1000.0;
    OrbitalTable tensor[9];
    PairTensorIntegrals(carbon, r, tensor);
    const double z = 2.0 * carbon.Zeta[0];
    const double square = 30.0 / (z * z);  // <r^2> of 2s: (2n + 2)(2n + 1)/(2 zeta)^2
    EXPECT_NEAR(tensor[0][0][0] * r * r * r / (square / 3.0), 1.0, 1e-9);
    EXPECT_NEAR(tensor[8][0][0] * r * r * r / (-2.0 * square / 3.0), 1.0, 1e-9);
    // the dipole of s, pz times the field 1/R^2 along the axis
    const double zs = carbon.Zeta[0];
    const double zp = carbon.Zeta[1];
    const double dipole =
        std::sqrt(std::pow(2.0 * zs, 5) * std::pow(2.0 * zp, 5)) / 24.0 * 120.0 / std::pow(zs + zp, 6) / std::sqrt(3.0);
    EXPECT_NEAR(tensor[8][0][3] * r * r / dipole, 1.0, 1e-5);
}

// Property: the tables of L_a/r_a^3 are antisymmetric, and those of shell 1 are 0.
TEST(PairIntegrals, MagneticTablesAreAntisymmetric) {
    for (const SlaterAtom& atom : {carbon, chlorine}) {
        OrbitalTable tables[3];
        PairMagneticIntegrals(atom, 3.1, 1.0, tables);
        for (int k = 0; k < 3; ++k) {
            for (int row = 0; row < LargestOrbitals; ++row) {
                for (int column = 0; column < LargestOrbitals; ++column) {
                    EXPECT_EQ(tables[k][row][column], -tables[k][column][row]);
                }
            }
        }
        EXPECT_NE(tables[2][1][2], 0.0);
    }
    OrbitalTable tables[3];
    PairMagneticIntegrals(hydrogen, 3.1, 1.0, tables);
    EXPECT_EQ(tables[0][0][0], 0.0);
    // at R = 500 the axial one of px, py is 1/R^3, as <px|L_z|py> = 1 about b and the rest falls off faster
    PairMagneticIntegrals(chlorine, 500.0, 1.0, tables);
    EXPECT_NEAR(tables[2][2][1] * 500.0 * 500.0 * 500.0, 1.0, 1e-9);
    PairMagneticIntegrals(carbon, 500.0, 1.0, tables);
    EXPECT_NEAR(tables[2][2][1] * 500.0 * 500.0 * 500.0, 1.0, 1e-9);
}

// Property: same input, same bytes, whatever was computed in between.
TEST(PairIntegrals, SameInputSameBytes) {
    PairBondIntegrals first;
    PairBondIntegrals between;
    PairBondIntegrals second;
    BondPairIntegrals(oxygen, chlorine, 3.0, first);
    BondPairIntegrals(chlorine, carbon, 2.0, between);
    BondPairIntegrals(oxygen, chlorine, 3.0, second);
    EXPECT_EQ(std::memcmp(&first, &second, sizeof first), 0);
}

// Exponents that want more points than an integer counts: the sanitized build stops where one is made of them. What is
// left of such an integral is nothing, or no number.
TEST(PairIntegrals, HugeExponents) {
    for (const double zeta : {1e17, 1e39, 1e300}) {
        const SlaterAtom huge = {1, {zeta, 0.0, 0.0}};
        PairBondIntegrals bond;
        BondPairIntegrals(huge, hydrogen, 2.0, bond);
        EXPECT_FALSE(std::fabs(bond.Charge[0][0]) > 0.0) << zeta;
        BondPairIntegrals(hydrogen, huge, 2.0, bond);
        EXPECT_FALSE(std::fabs(bond.Charge[0][0]) > 0.0) << zeta;
    }
}
