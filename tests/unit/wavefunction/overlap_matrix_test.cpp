// SPDX-License-Identifier: MIT
// The overlap matrix: quadratures of real orbitals, the two ways to the pair's integrals, rotations, and the
// rules of far pairs and of d orbitals.
#include "wavefunction/overlap_matrix.h"

#include "tests/unit/integrals/integral_reference.h"
#include "tests/unit/integrals/integral_system.h"
#include "wavefunction/overlap_integrals.h"

#include <cmath>

// The closed forms hold 1/sqrt(3) and 1/480 with nine digits.
static constexpr double StoredFactors = 5e-9;

// The odd entries of B lose 2 q^7/(9 7!) to the series of |q| up to 0.5, its even ones 2 q^8/(9 8!) to that from
// 0.5 to 1; that is on entries that a polynomial with coefficients of 1 to 10 multiplies.
static constexpr double SmallSeriesTolerance = 3e-7;
static constexpr double SeriesTolerance = 4e-6;

// The general way holds sqrt(3) and sqrt(3/2) with six digits.
static constexpr double AngularFactors = 6e-7;

class OverlapMatrix : public IntegralSystem {};

// A third-row code stands for shell 3, and a capping atom for any shell on the general way.
static int RealCode(int shell) {
    return shell == 1 ? 1 : shell == 2 ? 6 : 16;
}

// Places of the orbitals s, x, y, z, z2, xz, yz, x2-y2, xy in a block.
static constexpr int BlockPlace[9] = {0, 1, 2, 3, 6, 5, 7, 4, 8};

static double BlockValue(const OverlapRow& row, int includeD) {
    ::Run.Options.IncludeDOrbitalsForSecondRow = includeD;
    const double origin[3] = {0.0, 0.0, 0.0};
    const double first[3] = {row.Zeta1, row.Zeta1, row.Zeta1};
    const double second[3] = {row.Zeta2, row.Zeta2, row.Zeta2};
    OverlapBlock block = {};
    DiatomicOverlapBlock(RealCode(row.N1), RealCode(row.N2), origin, row.Vector, first, second, &block);
    return block.Value[BlockPlace[row.Orbital2]][BlockPlace[row.Orbital1]];
}

static double HalfDifference(const OverlapRow& row) {
    const double* v = row.Vector;
    return std::fabs(row.Zeta1 - row.Zeta2) * std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]) / 2.0;
}

// Property: the stored value is the integral of the two real orbitals as the molecule's axes define them, phases
// included. Set-up: s and p orbitals of all shells by closed form, along +z, along -z and askew. The reference is a
// quadrature of the orbitals. Tolerance: the stored factors, and the series where the class has one.
TEST_F(OverlapMatrix, ClosedFormsAreTheOverlaps) {
    int count = 0;
    for (const OverlapRow& row : OverlapRows) {
        if (row.Orbital1 < 4 && row.Orbital2 < 4) {
            const double q = HalfDifference(row);
            const bool series = row.N1 * row.N2 == 9 && q > 0.5 && q <= 1.0;
            const double tolerance = series ? SeriesTolerance : q <= 0.5 ? SmallSeriesTolerance : StoredFactors;
            EXPECT_NEAR(BlockValue(row, 0), row.Exact, tolerance)
                << row.N1 << row.N2 << " " << row.Orbital1 << row.Orbital2 << " " << row.Zeta1;
            ++count;
        }
    }
    EXPECT_GT(count, 150);
}

// Property and reference as above, by the general way with d orbitals. Tolerance: the angular factors, and the
// series that order 19 selects.
TEST_F(OverlapMatrix, GeneralIntegralsAreTheOverlaps) {
    int count = 0;
    for (const OverlapRow& row : OverlapRows) {
        if (row.N1 == 3 || row.N2 == 3) {
            EXPECT_NEAR(BlockValue(row, 1), row.Exact, AngularFactors + SeriesTolerance)
                << row.N1 << row.N2 << " " << row.Orbital1 << row.Orbital2 << " " << row.Zeta1;
            ++count;
        }
    }
    EXPECT_GT(count, 150);
}

// Orthogonal transformation of s, p and d orbitals for a rotation r of the molecule: new = T old.
static void OrbitalRotation(const double (*r)[3], double (*t)[9]) {
    // each d orbital as a symmetric form, in the order z2, xz, yz, x2-y2, xy; f . g = 2/3 trace for their products
    const double h = std::sqrt(0.75);
    const double forms[5][3][3] = {{{-0.5, 0, 0}, {0, -0.5, 0}, {0, 0, 1}},
                                   {{0, 0, h}, {0, 0, 0}, {h, 0, 0}},
                                   {{0, 0, 0}, {0, 0, h}, {0, h, 0}},
                                   {{h, 0, 0}, {0, -h, 0}, {0, 0, 0}},
                                   {{0, h, 0}, {h, 0, 0}, {0, 0, 0}}};
    for (int a = 0; a < 9; ++a) {
        for (int b = 0; b < 9; ++b) {
            t[a][b] = 0.0;
        }
    }
    t[0][0] = 1.0;
    for (int a = 0; a < 3; ++a) {
        for (int b = 0; b < 3; ++b) {
            t[1 + a][1 + b] = r[a][b];
        }
    }
    for (int f = 0; f < 5; ++f) {
        for (int g = 0; g < 5; ++g) {
            double sum = 0.0;
            for (int a = 0; a < 3; ++a) {
                for (int b = 0; b < 3; ++b) {
                    for (int c = 0; c < 3; ++c) {
                        for (int d = 0; d < 3; ++d) {
                            sum += forms[f][a][b] * r[a][c] * r[b][d] * forms[g][c][d];
                        }
                    }
                }
            }
            t[4 + f][4 + g] = sum / 1.5;
        }
    }
}

// Property: turning the molecule turns the overlaps of each pair by the orbitals' own transformation. Set-up:
// sulphur and chlorine with d orbitals, carbon and hydrogen, a rotation about a skew axis. The reference
// transforms the orbitals as vectors and symmetric forms. Tolerance: sqrt(3)/2 is stored with 13 digits.
TEST_F(OverlapMatrix, RotationOfTheMolecule) {
    ::Run.Options.IncludeDOrbitalsForSecondRow = 1;
    const double c1 = std::cos(0.7);
    const double s1 = std::sin(0.7);
    const double c2 = std::cos(-1.9);
    const double s2 = std::sin(-1.9);
    const double rotation[3][3] = {{c1, -s1 * c2, s1 * s2}, {s1, c1 * c2, -c1 * s2}, {0.0, s2, c2}};
    const double positions[4][3] = {{0.0, 0.0, 0.0}, {0.0, 0.0, 3.4}, {2.2, -1.3, -0.4}, {2.9, 0.1, 1.8}};
    std::vector<double> overlaps[2];
    for (int turned = 0; turned < 2; ++turned) {
        Parameters.clear();
        Records.clear();
        Positions.clear();
        Orbitals.clear();
        const int types[4] = {Type(1.82, 1.71, 1.1), Type(2.04, 1.9, 1.3), Type(1.62, 1.55, 0.0), Type(1.2, 0.0, 0.0)};
        const int codes[4] = {16, 17, 6, 1};
        const int counts[4] = {9, 9, 4, 1};
        for (int k = 0; k < 4; ++k) {
            double v[3] = {positions[k][0], positions[k][1], positions[k][2]};
            for (int axis = 0; turned && axis < 3; ++axis) {
                v[axis] = rotation[axis][0] * positions[k][0] + rotation[axis][1] * positions[k][1] +
                          rotation[axis][2] * positions[k][2];
            }
            Add(codes[k], types[k], v[0], v[1], v[2], counts[k]);
        }
        Place();
        overlaps[turned] = Square(77.0);
        BuildOverlapMatrix(overlaps[turned].data());
    }
    double t[9][9];
    OrbitalRotation(rotation, t);
    for (std::size_t i = 0; i < Ranges.size(); ++i) {
        for (std::size_t j = 0; j < Ranges.size(); ++j) {
            const int rows = Ranges[i].Last - Ranges[i].First + 1;
            const int columns = Ranges[j].Last - Ranges[j].First + 1;
            for (int a = 0; a < rows; ++a) {
                for (int b = 0; b < columns; ++b) {
                    double expected = 0.0;
                    for (int c = 0; c < rows; ++c) {
                        for (int d = 0; d < columns; ++d) {
                            expected +=
                                t[a][c] * t[b][d] * At(overlaps[0], Ranges[i].First - 1 + c, Ranges[j].First - 1 + d);
                        }
                    }
                    EXPECT_NEAR(At(overlaps[1], Ranges[i].First - 1 + a, Ranges[j].First - 1 + b), expected, 1e-12)
                        << i << " " << j << " " << a << " " << b;
                }
            }
        }
    }
}

TEST_F(OverlapMatrix, IsSymmetricWithUnitDiagonalBlocks) {
    Add(6, Type(1.6, 1.65, 0.0), 0.1, 0.2, 0.3, 4);
    Add(8, Type(2.2, 2.3, 0.0), 1.3, -0.9, 1.1, 4);
    Add(1, Type(1.2, 0.0, 0.0), -1.4, 0.8, -0.9, 1);
    Place();
    std::vector<double> overlap = Square(77.0);
    BuildOverlapMatrix(overlap.data());
    for (int i = 0; i < 9; ++i) {
        for (int j = 0; j < 9; ++j) {
            EXPECT_EQ(At(overlap, i, j), At(overlap, j, i));
            const bool sameAtom = (i < 4 && j < 4) || (i >= 4 && i < 8 && j >= 4 && j < 8) || (i == 8 && j == 8);
            if (sameAtom) {
                EXPECT_EQ(At(overlap, i, j), i == j ? 1.0 : 0.0);
            } else {
                EXPECT_LT(std::fabs(At(overlap, i, j)), 1.0);
            }
        }
    }
    EXPECT_EQ(::Run.Report.PollCounter, 600);  // a poll for each pair
}

TEST_F(OverlapMatrix, ASingleAtomHasTheUnitMatrix) {
    Add(16, Type(1.8, 1.8, 1.0), 0.4, 0.1, 0.9, 9);
    Place();
    std::vector<double> overlap = Square(77.0);
    BuildOverlapMatrix(overlap.data());
    for (int i = 0; i < 9; ++i) {
        for (int j = 0; j < 9; ++j) {
            EXPECT_EQ(At(overlap, i, j), i == j ? 1.0 : 0.0);
        }
    }
}

// Property: lobes that point to each other overlap positively, whatever the order of the atoms: px on the left
// atom with s on the right one, and px with px negatively far apart. Set-up: two carbons on the x axis, both
// orders in the list.
TEST_F(OverlapMatrix, PhasesFollowTheMoleculesAxes) {
    for (const double side : {1.0, -1.0}) {
        Parameters.clear();
        Records.clear();
        Positions.clear();
        Orbitals.clear();
        const int type = Type(1.6, 1.6, 0.0);
        Add(6, type, 0.0, 0.0, 0.0, 4);
        Add(6, type, side * 3.5, 0.0, 0.0, 4);
        Place();
        std::vector<double> overlap = Square(77.0);
        BuildOverlapMatrix(overlap.data());
        EXPECT_GT(side * At(overlap, 1, 4), 0.1);   // px of the first with s of the second
        EXPECT_LT(side * At(overlap, 0, 5), -0.1);  // s of the first with px of the second
        EXPECT_LT(At(overlap, 1, 5), -0.1);
        EXPECT_GT(At(overlap, 2, 6), 0.1);
        EXPECT_EQ(At(overlap, 2, 6), At(overlap, 3, 7));
        EXPECT_EQ(At(overlap, 1, 6), 0.0);
    }
}

// Property: degeneracies of the input stay exact: on a line along z, x and y have the same bytes, in p and in d.
TEST_F(OverlapMatrix, AxialMoleculesHaveEqualPiOverlaps) {
    ::Run.Options.IncludeDOrbitalsForSecondRow = 1;
    for (const double z : {3.1, -3.1}) {
        Parameters.clear();
        Records.clear();
        Positions.clear();
        Orbitals.clear();
        const int type = Type(1.7, 1.6, 1.1);
        Add(16, type, 0.0, 0.0, 0.0, 9);
        Add(15, type, 0.0, 0.0, z, 9);
        Place();
        std::vector<double> overlap = Square(77.0);
        BuildOverlapMatrix(overlap.data());
        EXPECT_EQ(At(overlap, 1, 10), At(overlap, 2, 11));  // px, py
        EXPECT_EQ(At(overlap, 5, 14), At(overlap, 6, 15));  // dxz, dyz
        EXPECT_EQ(At(overlap, 7, 16), At(overlap, 8, 17));  // dx2-y2, dxy
        EXPECT_EQ(At(overlap, 1, 14), At(overlap, 2, 15));
        EXPECT_NE(At(overlap, 8, 17), 0.0);
        EXPECT_EQ(At(overlap, 1, 11), 0.0);
    }
}

// Property: a molecule and its mirror image with x and y exchanged have the same bytes, orbitals exchanged with
// them.
TEST_F(OverlapMatrix, ExchangingXAndYIsExact) {
    ::Run.Options.IncludeDOrbitalsForSecondRow = 1;
    const int partner[9] = {0, 2, 1, 3, 4, 6, 5, 7, 8};
    std::vector<double> overlaps[2];
    for (int mirrored = 0; mirrored < 2; ++mirrored) {
        Parameters.clear();
        Records.clear();
        Positions.clear();
        Orbitals.clear();
        Add(16, Type(1.8, 1.7, 1.1), 0.0, 0.0, 0.0, 9);
        Add(17, Type(2.0, 1.9, 1.2), mirrored ? -0.7 : 1.9, mirrored ? 1.9 : -0.7, 2.3, 9);
        Place();
        overlaps[mirrored] = Square(77.0);
        BuildOverlapMatrix(overlaps[mirrored].data());
    }
    for (int a = 0; a < 9; ++a) {
        for (int b = 0; b < 9; ++b) {
            const double sign = (a == 7) != (b == 7) ? -1.0 : 1.0;
            EXPECT_EQ(At(overlaps[1], partner[a], 9 + partner[b]), sign * At(overlaps[0], a, 9 + b)) << a << b;
        }
    }
}

// sqrt(3)/2 is kept with its 13 digits on purpose: it shows in the d orbitals of an atom beside an s orbital on the x
// axis, where dx2-y2 and dz2 have sqrt(3)/2 and -1/2 of the sigma overlap.
TEST_F(OverlapMatrix, TheDRotationHoldsItsStoredFactor) {
    ::Run.Options.IncludeDOrbitalsForSecondRow = 1;
    Add(16, Type(1.8, 1.7, 1.1), 0.0, 0.0, 0.0, 9);
    Add(1, Type(1.2, 0.0, 0.0), 2.5, 0.0, 0.0, 1);
    Place();
    std::vector<double> overlap = Square(77.0);
    BuildOverlapMatrix(overlap.data());
    EXPECT_NEAR(At(overlap, 7, 9) / At(overlap, 4, 9), -2.0 * 0.8660254037841, 1e-15);
}

// On the z axis within 1e-10 bohr the frame is the axis itself: nothing is divided by zero.
TEST_F(OverlapMatrix, AlongTheZAxis) {
    const double origin[3] = {0.0, 0.0, 0.0};
    const double exponents[3] = {1.6, 1.5, 0.0};
    for (const double z : {2.5, -2.5}) {
        OverlapBlock blocks[3] = {};
        const double positions[3][3] = {{0.0, 0.0, z}, {9e-11, 0.0, z}, {0.0, 1.1e-10, z}};
        for (int k = 0; k < 3; ++k) {
            DiatomicOverlapBlock(6, 6, origin, positions[k], exponents, exponents, &blocks[k]);
        }
        for (int a = 0; a < 4; ++a) {
            for (int b = 0; b < 4; ++b) {
                EXPECT_EQ(blocks[1].Value[a][b], blocks[0].Value[a][b]) << z;
                EXPECT_NEAR(blocks[2].Value[a][b], blocks[0].Value[a][b], 1e-10) << z;
            }
        }
        EXPECT_LT(z * blocks[0].Value[3][0], 0.0);
    }
}

// The block of a far pair is on purpose not computed: the matrix repeats what the last computed pair left, for
// the rows and columns of both atoms; before any pair it is zeros.
TEST_F(OverlapMatrix, AFarPairRepeatsThePairBefore) {
    const int carbon = Type(1.6, 1.5, 0.0);
    const int hydrogen = Type(1.2, 0.0, 0.0);
    Add(6, carbon, 0.0, 0.0, 0.0, 4);
    Add(6, carbon, 1.0, 2.0, 1.5, 4);
    Add(1, hydrogen, 0.0, 0.0, 150.0, 1);
    Place();
    std::vector<double> overlap = Square(77.0);
    BuildOverlapMatrix(overlap.data());
    for (int b = 0; b < 4; ++b) {
        EXPECT_EQ(At(overlap, 8, b), At(overlap, 4, b)) << b;      // rows of the second atom's s
        EXPECT_EQ(At(overlap, 8, 4 + b), At(overlap, 4, b)) << b;  // and once more
        EXPECT_NE(At(overlap, 8, b), 0.0);
    }
}

TEST_F(OverlapMatrix, AFarPairBeforeAnyOtherIsZero) {
    const int carbon = Type(0.05, 0.05, 0.0);  // diffuse: just below 100 bohr there is an overlap
    Add(6, carbon, 0.0, 0.0, 0.0, 4);
    Add(6, carbon, 0.0, 0.0, 100.0, 4);
    Place();
    std::vector<double> overlap = Square(77.0);
    BuildOverlapMatrix(overlap.data());
    for (int a = 0; a < 4; ++a) {
        for (int b = 0; b < 4; ++b) {
            EXPECT_EQ(At(overlap, 4 + a, b), 0.0);
        }
    }
    Positions[1].Position[2] = std::nextafter(100.0, 0.0);
    BuildOverlapMatrix(overlap.data());
    EXPECT_NE(At(overlap, 4, 0), 0.0);
}

TEST_F(OverlapMatrix, CoincidentAtomsRepeatThePairBefore) {
    const int carbon = Type(1.6, 1.5, 0.0);
    Add(6, carbon, 0.0, 0.0, 0.0, 4);
    Add(6, carbon, 0.0, 0.0, 2.5, 4);
    Add(6, carbon, 0.0, 0.0009, 2.5, 4);
    Place();
    std::vector<double> overlap = Square(77.0);
    BuildOverlapMatrix(overlap.data());
    for (int a = 0; a < 4; ++a) {
        for (int b = 0; b < 4; ++b) {
            EXPECT_EQ(At(overlap, 8 + a, 4 + b), At(overlap, 8 + a, b));
            EXPECT_TRUE(std::isfinite(At(overlap, 8 + a, 4 + b)));
        }
    }
    double block[2];
    OverlapBlock pair = {};
    const double here[3] = {0.0, 0.0, 0.0};
    const double there[3] = {0.0, 0.0, 0.001};
    const double exponents[3] = {1.6, 1.5, 0.0};
    DiatomicOverlapBlock(6, 6, here, there, exponents, exponents, &pair);  // 0.001 itself is computed
    block[0] = pair.Value[0][0];
    EXPECT_NEAR(block[0], 1.0, 1e-5);
}

// The order of d orbitals is put right in place, and so once more on the block that a far pair finds.
TEST_F(OverlapMatrix, AFarPairWithDOrbitalsPermutesTheBlockAgain) {
    ::Run.Options.IncludeDOrbitalsForSecondRow = 1;
    const int sulphur = Type(1.8, 1.7, 1.1);
    Add(16, sulphur, 0.0, 0.0, 0.0, 9);
    Add(16, sulphur, 1.3, -0.8, 3.0, 9);
    Add(16, sulphur, 200.0, 0.0, 0.0, 9);
    Place();
    std::vector<double> overlap = Square(77.0);
    BuildOverlapMatrix(overlap.data());
    const int source[9] = {0, 1, 2, 3, 6, 5, 7, 4, 8};
    for (int a = 0; a < 9; ++a) {
        for (int b = 0; b < 9; ++b) {
            EXPECT_EQ(At(overlap, 18 + a, b), At(overlap, 9 + source[a], source[b])) << a << b;
        }
    }
}

// Which way a pair goes shows in its digits: by the general way order 19 selects a series of B for |q| = 0.9.
static double ProbeOverlap(int codeI, int codeJ) {
    const double origin[3] = {0.0, 0.0, 0.0};
    const double other[3] = {0.0, 0.0, 2.0};
    const double first[3] = {1.0, 1.0, 1.0};
    const double second[3] = {1.9, 1.9, 1.9};
    OverlapBlock block = {};
    DiatomicOverlapBlock(codeI, codeJ, origin, other, first, second, &block);
    return block.Value[0][0];
}

static bool IsGeneral(int codeI, int codeJ) {
    const OverlapCentre i = {codeI, ValenceShellTable[codeI - 1], {1.0, 1.0, 1.0}};
    const OverlapCentre j = {codeJ, ValenceShellTable[codeJ - 1], {1.9, 1.9, 1.9}};
    LocalOverlaps general;
    OverlapGeneral(i, j, 2.0, &general);
    return ProbeOverlap(codeI, codeJ) == general.Value[0][0][0];
}

TEST_F(OverlapMatrix, WhichPairsHaveClosedForms) {
    for (const int withD : {0, 1}) {
        ::Run.Options.IncludeDOrbitalsForSecondRow = withD;
        EXPECT_FALSE(IsGeneral(6, 10));
        EXPECT_FALSE(IsGeneral(1, 8));
        EXPECT_EQ(IsGeneral(6, 11), withD == 1);
        EXPECT_EQ(IsGeneral(18, 6), withD == 1);
        EXPECT_EQ(IsGeneral(17, 17), withD == 1);
        EXPECT_TRUE(IsGeneral(6, 19));
        EXPECT_TRUE(IsGeneral(24, 6));
        EXPECT_TRUE(IsGeneral(24, 24));
    }
}

// On purpose the option alone decides, although TNDO/2 has no d orbitals.
TEST_F(OverlapMatrix, TheOptionDecidesInTndo2Too) {
    ::Run.Options.SemiEmpiricalMethod = 2;
    ::Run.Options.IncludeDOrbitalsForSecondRow = 1;
    EXPECT_TRUE(IsGeneral(6, 16));
}
