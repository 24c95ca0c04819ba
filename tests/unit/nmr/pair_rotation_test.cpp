// SPDX-License-Identifier: MIT
// Rotation of pair tables: axes, orthogonality, the element that deviates on purpose, invariants.
#include "nmr/pair_rotation.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

namespace {

constexpr double tolerance = 1e-14;
const double origin[3] = {0.0, 0.0, 0.0};
const double general[3] = {1.1, -0.7, 0.6};

void FillTable(OrbitalTable& table, double seed) {
    for (int i = 0; i < LargestOrbitals; ++i) {
        for (int j = 0; j < LargestOrbitals; ++j) {
            table[i][j] = std::sin(seed + 3.0 * i + 1.7 * j);
        }
    }
}

// The nine real orbitals at a direction n, without common radial factor.
void Orbitals(const double* n, double* values) {
    const double root = std::sqrt(3.0);
    const double list[LargestOrbitals] = {1.0,
                                          n[0],
                                          n[1],
                                          n[2],
                                          1.5 * n[2] * n[2] - 0.5,
                                          root * n[0] * n[2],
                                          root * n[1] * n[2],
                                          0.5 * root * (n[0] * n[0] - n[1] * n[1]),
                                          root * n[0] * n[1]};
    std::memcpy(values, list, sizeof list);
}

}  // namespace

TEST(PairRotation, IdentityOnTheAxis) {
    for (const double offset : {0.0, 9e-7}) {
        const double b[3] = {offset, 0.0, 2.0};
        OrbitalTable rotation;
        PairOrbitalRotation(origin, b, rotation);
        for (int i = 0; i < LargestOrbitals; ++i) {
            for (int j = 0; j < LargestOrbitals; ++j) {
                EXPECT_NEAR(rotation[i][j], i == j ? 1.0 : 0.0, 1e-6);
            }
        }
    }
}

// On the negative axis the frame is turned by 180 degrees about y.
TEST(PairRotation, NegativeAxis) {
    const double b[3] = {0.0, 0.0, -2.0};
    OrbitalTable rotation;
    PairOrbitalRotation(origin, b, rotation);
    const double signs[LargestOrbitals] = {1, -1, 1, -1, 1, 1, -1, 1, -1};
    for (int i = 0; i < LargestOrbitals; ++i) {
        EXPECT_EQ(rotation[i][i], signs[i]);
    }
}

// Within 1e-6 of the axis the azimuth is 0 whatever x and y are, on purpose.
TEST(PairRotation, AzimuthNearTheAxis) {
    const double near[3] = {0.0, 1e-6, 2.0};
    const double beside[3] = {0.0, 1.1e-6, 2.0};
    double axes[3][3];
    PairAxes(origin, near, axes);
    EXPECT_EQ(axes[1][1], 1.0);
    PairAxes(origin, beside, axes);
    EXPECT_EQ(axes[1][1], 0.0);
}

// Property: an orbital of the pair frame at any point is the combination of molecule orbitals there.
TEST(PairRotation, RotatesOrbitals) {
    double axes[3][3];
    OrbitalTable rotation;
    PairAxes(origin, general, axes);
    PairOrbitalRotation(origin, general, rotation);
    const double n[3] = {2.0 / 7.0, 3.0 / 7.0, -6.0 / 7.0};
    double local[3];
    for (int i = 0; i < 3; ++i) {
        local[i] = axes[i][0] * n[0] + axes[i][1] * n[1] + axes[i][2] * n[2];
    }
    double inPair[LargestOrbitals];
    double inMolecule[LargestOrbitals];
    Orbitals(local, inPair);
    Orbitals(n, inMolecule);
    for (int i = 0; i < LargestOrbitals; ++i) {
        double sum = 0.0;
        for (int j = 0; j < LargestOrbitals; ++j) {
            sum += rotation[i][j] * inMolecule[j];
        }
        EXPECT_NEAR(inPair[i], sum, tolerance) << i;
    }
}

TEST(PairRotation, IsOrthogonal) {
    OrbitalTable rotation;
    PairOrbitalRotation(origin, general, rotation);
    for (int i = 0; i < LargestOrbitals; ++i) {
        for (int j = 0; j < LargestOrbitals; ++j) {
            double sum = 0.0;
            for (int m = 0; m < LargestOrbitals; ++m) {
                sum += rotation[i][m] * rotation[j][m];
            }
            EXPECT_NEAR(sum, i == j ? 1.0 : 0.0, tolerance);
        }
    }
}

// The element of dz2 and dx2-y2 of RotatePairTable has sin(theta) sin(phi) in place of sin^2(theta), and is to keep it.
TEST(PairRotation, DeviatingElement) {
    OrbitalTable table = {};
    OrbitalTable scalars = {};
    table[0][4] = 1.0;
    scalars[0][4] = 1.0;
    RotatePairTable(origin, general, table, 9, 9);
    RotatePairScalars(origin, general, scalars, 9, 9);
    const double rho = std::hypot(general[0], general[1]);
    const double sine = rho / std::hypot(rho, general[2]);
    const double sinPhi = general[1] / rho;
    const double cosTwoPhi = 1.0 - 2.0 * sinPhi * sinPhi;
    EXPECT_NEAR(table[0][7], 0.5 * std::sqrt(3.0) * sine * sinPhi * cosTwoPhi, tolerance);
    EXPECT_NEAR(scalars[0][7], 0.5 * std::sqrt(3.0) * sine * sine * cosTwoPhi, tolerance);
    for (int j = 0; j < LargestOrbitals; ++j) {
        if (j != 7) {
            EXPECT_EQ(table[0][j], scalars[0][j]);
        }
    }
}

// Property: the trace and the sum of squares of a table don't change.
TEST(PairRotation, ScalarsKeepTraceAndNorm) {
    OrbitalTable table;
    FillTable(table, 0.3);
    double trace[2] = {};
    double norm[2] = {};
    for (int turn = 0; turn < 2; ++turn) {
        for (int i = 0; i < LargestOrbitals; ++i) {
            trace[turn] += table[i][i];
            for (int j = 0; j < LargestOrbitals; ++j) {
                norm[turn] += table[i][j] * table[i][j];
            }
        }
        if (turn == 0) {
            RotatePairScalars(origin, general, table, 9, 9);
        }
    }
    EXPECT_NEAR(trace[0], trace[1], 1e-13);
    EXPECT_NEAR(norm[0], norm[1], 1e-12);
}

// Property: tables T_i[s][p_j] = delta_ij form an invariant; rotated with weights from the columns of the p rotation
// component k again has 1 at p_k and 0 elsewhere. Rows would break it.
TEST(PairRotation, VectorTakesColumns) {
    OrbitalTable tables[3] = {};
    for (int i = 0; i < 3; ++i) {
        tables[i][0][1 + i] = 1.0;
    }
    for (int k = 0; k < 3; ++k) {
        OrbitalTable out = {};
        RotatePairVector(origin, general, k, tables, out, 1, 4);
        for (int j = 0; j < 3; ++j) {
            EXPECT_NEAR(out[0][1 + j], j == k ? 1.0 : 0.0, tolerance);
        }
    }
}

// Property: the unit tensor stays, and v v' of the pair axis becomes that of its direction.
TEST(PairRotation, TensorAxes) {
    OrbitalTable tables[9] = {};
    for (int i = 0; i < 3; ++i) {
        tables[4 * i][0][0] = 1.0;
    }
    tables[8][0][1] = 1.0;
    RotatePairTensor(origin, general, 1, 2, tables);
    double axes[3][3];
    PairAxes(origin, general, axes);
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            EXPECT_NEAR(tables[3 * i + j][0][0], i == j ? 1.0 : 0.0, tolerance);
            EXPECT_NEAR(tables[3 * i + j][0][1], axes[2][i] * axes[2][j], tolerance);
        }
    }
}

// Rows and columns beyond those given stay as they are.
TEST(PairRotation, KeepsTheRest) {
    OrbitalTable table;
    OrbitalTable before;
    FillTable(table, 1.0);
    FillTable(before, 1.0);
    RotatePairScalars(origin, general, table, 4, 1);
    EXPECT_EQ(table[4][0], before[4][0]);
    EXPECT_EQ(table[0][1], before[0][1]);
    EXPECT_NEAR(table[0][0], before[0][0], tolerance);
}

// Only a square below 0 has its root replaced: two atoms at one place have no axis, and no angle is a number.
TEST(PairRotation, NoAxisForOnePlace) {
    OrbitalTable rotation;
    PairOrbitalRotation(origin, origin, rotation);
    EXPECT_TRUE(std::isnan(rotation[1][3]));  // minus the sine of theta
    EXPECT_TRUE(std::isnan(rotation[3][3]));  // its cosine
}
