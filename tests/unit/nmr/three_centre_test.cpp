// SPDX-License-Identifier: MIT
// Tests of the three-centre integrals by quadrature: stored values, the same rule order by order, identities, and the
// same bytes from every instruction set.
#include "nmr/three_centre_integrals.h"
#include "nmr/three_centre_kernels.h"
#include "nmr/three_centre_quadrature.h"
#include "numerics/quadrature_rules.h"
#include "tests/reference/shielding/three_centre_references.inc"
#include "tests/unit/nmr/three_centre_oracle.h"
#include "tests/unit/numerics/instruction_sets.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

// The approximations of the Bessel functions are good to 1e-7 relative; elements are sums of both signs.
static constexpr double BesselTolerance = 3e-7;
// The shared inner sums against the literal way: rounding, and an exponential of 1e-12.
static constexpr double SameRuleTolerance = 1e-9;
// Exchanges of B and C and turns: rounding only.
static constexpr double RoundingTolerance = 1e-12;

namespace {

struct Triple {
    double A[3];
    double B[3];
    double C[3];
    SlaterAtom AtomB;
    SlaterAtom AtomC;
};

SlaterAtom MakeAtom(int shell, const double* zeta, const double* position) {
    return {shell, {zeta[0], zeta[1], zeta[2]}, shell == 1 ? 1 : shell == 2 ? 4 : 9, position, {}};
}

// Random triples, no two centres nearer than 1.7 bohr.
void FillTriple(Triple& triple, std::mt19937& generator, int shellB, int shellC, bool equalExponents) {
    const auto number = [&](double low, double high) {
        return low + (high - low) * static_cast<double>(generator()) / 4294967296.0;
    };
    const auto distance = [](const double* p, const double* q) {
        return std::sqrt((p[0] - q[0]) * (p[0] - q[0]) + (p[1] - q[1]) * (p[1] - q[1]) + (p[2] - q[2]) * (p[2] - q[2]));
    };
    do {
        for (int i = 0; i < 3; ++i) {
            triple.A[i] = number(-3, 3);
            triple.B[i] = number(-3, 3);
            triple.C[i] = number(-3, 3);
        }
    } while (distance(triple.A, triple.B) < 1.7 || distance(triple.A, triple.C) < 1.7 ||
             distance(triple.B, triple.C) < 1.7);
    double zetas[2][3];
    for (auto& zeta : zetas) {
        zeta[0] = number(1.0, 2.3);
        zeta[1] = equalExponents ? zeta[0] : number(1.0, 2.3);
        zeta[2] = 0.0;
    }
    triple.AtomB = MakeAtom(shellB, zetas[0], triple.B);
    triple.AtomC = MakeAtom(shellC, zetas[1], triple.C);
}

double Largest(const double (&table)[9][9], int rows, int columns) {
    double largest = 0.0;
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < columns; ++j) {
            largest = std::fmax(largest, std::fabs(table[i][j]));
        }
    }
    return largest;
}

int Classes[4][2] = {{1, 1}, {1, 2}, {2, 1}, {2, 2}};

}  // namespace

// Property: the nodes are the roots of the Legendre polynomials, and each rule integrates powers exactly.
TEST(ThreeCentreRules, GaussLegendre) {
    for (int power = 0; power < 28; ++power) {
        double outer = 0.0;
        for (int i = 0; i < OuterCount; ++i) {
            outer += 0.5 * OuterWeights[i] * std::pow(OuterNodes[i], power);
            EXPECT_NEAR(OuterNodes[i] + OuterComplements[i], 1.0, 2e-16);
            EXPECT_NEAR(OuterFactors[i] / (0.5 * OuterWeights[i] * std::pow(OuterNodes[i] * OuterComplements[i], -1.5)),
                        1.0, 1e-14);
        }
        EXPECT_NEAR(outer, 1.0 / (power + 1), 1e-15) << power;
    }
    for (int power = 0; power < 64; ++power) {
        double inner = 0.0;
        for (int i = 0; i < InnerPairs; ++i) {
            inner += InnerWeights[i] * (std::pow(InnerNodes[i], power) + std::pow(InnerMirrors[i], power));
        }
        EXPECT_NEAR(inner, 1.0 / (power + 1), 1e-15) << power;
    }
}

// Property: the orders of the quadrature. Reference: the rule with exact Bessel functions.
TEST(ThreeCentreQuadrature, StoredOrders) {
    for (const QuadratureReference& row : QuadratureReferences) {
        QuadratureContext context = {0.0, 0.0, 0.0, row.ZetaB * row.ZetaB, row.ZetaC * row.ZetaC};
        for (int i = 0; i < 3; ++i) {
            const double cb = row.B[i] - row.C[i];
            const double ac = row.C[i] - row.A[i];
            context.SquareBC += cb * cb;
            context.Dot += ac * cb;
            context.SquareAC += ac * ac;
        }
        const double found = ThreeCentreQuadrature(row.M, row.K1, row.K2, row.K3, context);
        EXPECT_NEAR(found / row.RuleValue, 1.0, BesselTolerance) << row.M << row.K1 << row.K2 << row.K3;
    }
}

// Reference: the rule with exact Bessel functions. Tolerance: relative to the largest element of the table.
static void ExpectReference(const ThreeCentreReference& row) {
    const SlaterAtom b = MakeAtom(row.ShellB, row.ZetaB, row.B);
    const SlaterAtom c = MakeAtom(row.ShellC, row.ZetaC, row.C);
    ThreeCentreTables tables = {};
    ThreeCentreIntegrals(b, c, row.A, tables);
    const auto& table = row.Component < 0 ? tables.Gauge : tables.Magnetic[row.Component];
    const double scale = std::fmax(Largest(table, b.OrbitalCount, c.OrbitalCount), 1e-6);
    EXPECT_NEAR(table[row.Bra][row.Ket], row.RuleValue, BesselTolerance * scale)
        << row.Component << " " << row.ShellB << row.Bra << " " << row.ShellC << row.Ket;
}

TEST(ThreeCentreIntegrals, StoredGaugeElements) {
    for (const ThreeCentreReference& row : GaugeReferences) {
        ExpectReference(row);
    }
}

TEST(ThreeCentreIntegrals, StoredMagneticElements) {
    for (const ThreeCentreReference& row : MagneticReferences) {
        ExpectReference(row);
    }
}

// Property: shared inner sums, the recurrence of the sums and the products multiplied out change nothing. The other
// arrangement evaluates ReducedBessel at each node, and lets L act on the bra.
TEST(ThreeCentreIntegrals, SameRuleNodeByNode) {
    std::mt19937 generator(1);
    for (int trial = 0; trial < 24; ++trial) {
        const int* shells = Classes[trial % 4];
        Triple triple;
        FillTriple(triple, generator, shells[0], shells[1], trial >= 16);
        ThreeCentreTables tables = {};
        ThreeCentreIntegrals(triple.AtomB, triple.AtomC, triple.A, tables);
        const int countB = triple.AtomB.OrbitalCount;
        const int countC = triple.AtomC.OrbitalCount;
        for (int component = -1; component < 3; ++component) {
            const auto& table = component < 0 ? tables.Gauge : tables.Magnetic[component];
            const double scale = Largest(table, countB, countC);
            for (int i = 0; i < countB; ++i) {
                for (int j = 0; j < countC; ++j) {
                    const int bra = shells[0] == 1 ? 0 : i + 1;
                    const int ket = shells[1] == 1 ? 0 : j + 1;
                    const double zetaB = triple.AtomB.Zeta[i > 0];
                    const double zetaC = triple.AtomC.Zeta[j > 0];
                    EXPECT_NEAR(table[i][j],
                                NodewiseElement(component, bra, ket, zetaB, zetaC, triple.A, triple.B, triple.C),
                                SameRuleTolerance * scale)
                        << component << " " << bra << ket;
                    if (bra == 0 || (component >= 0 && ket == 0)) {
                        EXPECT_NEAR(table[i][j],
                                    QuadratureElement(component, bra, ket, zetaB, zetaC, triple.A, triple.B, triple.C),
                                    SameRuleTolerance * scale)
                            << component << " " << bra << ket;
                    }
                }
            }
        }
    }
}

// Property: L_a is antihermitian and commutes with 1/r_a^3, and the rule keeps that node by node; the reverse gauge is
// the gauge of the exchanged atoms.
TEST(ThreeCentreIntegrals, ExchangeOfTheAtoms) {
    std::mt19937 generator(2);
    for (int trial = 0; trial < 16; ++trial) {
        Triple triple;
        FillTriple(triple, generator, Classes[trial % 4][0], Classes[trial % 4][1], trial % 8 < 4);
        ThreeCentreTables tables = {};
        ThreeCentreTables exchanged = {};
        ThreeCentreIntegrals(triple.AtomB, triple.AtomC, triple.A, tables);
        ThreeCentreIntegrals(triple.AtomC, triple.AtomB, triple.A, exchanged);
        for (int i = 0; i < triple.AtomB.OrbitalCount; ++i) {
            for (int j = 0; j < triple.AtomC.OrbitalCount; ++j) {
                EXPECT_NEAR(tables.ReverseGauge[i][j], exchanged.Gauge[j][i], RoundingTolerance);
                EXPECT_NEAR(tables.Gauge[i][j], exchanged.ReverseGauge[j][i], RoundingTolerance);
                for (int k = 0; k < 3; ++k) {
                    EXPECT_NEAR(tables.Magnetic[k][i][j], -exchanged.Magnetic[k][j][i], RoundingTolerance);
                }
            }
        }
    }
}

// Property: seen from a far nucleus two like 1s orbitals are a charge and a current at their midpoint M, so that with
// n = (M - A)/R the gauge element goes to S (B - C).n / (2 R^2) and the magnetic one to n x <nabla> / R^2, where S and
// <nabla> = -dS/dC have closed forms. The next order of the expansion is 1/R smaller.
TEST(ThreeCentreIntegrals, FarNucleus) {
    const double b[3] = {0.7, -1.1, 0.9};
    const double c[3] = {-0.7, 1.1, -0.9};
    const double zeta[3] = {1.3, 0.0, 0.0};
    const double separation = 2.0 * std::sqrt(0.49 + 1.21 + 0.81);
    const double rho = zeta[0] * separation;
    const double overlap = (1.0 + rho + rho * rho / 3.0) * std::exp(-rho);
    const double slope = -zeta[0] * rho / 3.0 * (1.0 + rho) * std::exp(-rho);
    for (const double distance : {10.0, 20.0}) {
        const double n[3] = {0.6, 0.0, 0.8};
        const double a[3] = {-distance * n[0], -distance * n[1], -distance * n[2]};
        ThreeCentreTables tables = {};
        ThreeCentreIntegrals(MakeAtom(1, zeta, b), MakeAtom(1, zeta, c), a, tables);
        double nabla[3];
        double along = 0.0;
        for (int i = 0; i < 3; ++i) {
            along += (b[i] - c[i]) * n[i];
            nabla[i] = -slope * (c[i] - b[i]) / separation;
        }
        const double square = distance * distance;
        EXPECT_NEAR(tables.Gauge[0][0] * square, 0.5 * overlap * along, 0.5 * overlap * separation * 3.0 / distance);
        for (int k = 0; k < 3; ++k) {
            const int p = (k + 1) % 3;
            const int q = (k + 2) % 3;
            EXPECT_NEAR(tables.Magnetic[k][0][0] * square, n[p] * nabla[q] - n[q] * nabla[p], 0.02 * std::fabs(slope))
                << k;
        }
    }
}

// Property: a reflection that leaves all three centres in place leaves the gauge elements of odd p orbitals 0.
TEST(ThreeCentreIntegrals, PlanarTriple) {
    const double a[3] = {0.0, 0.0, 0.0};
    const double b[3] = {2.1, 0.7, 0.0};
    const double c[3] = {-0.4, 2.6, 0.0};
    const double zeta[3] = {1.6, 1.7, 0.0};
    ThreeCentreTables tables = {};
    ThreeCentreIntegrals(MakeAtom(2, zeta, b), MakeAtom(2, zeta, c), a, tables);
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            const bool odd = (i == 3) != (j == 3);
            if (odd) {
                EXPECT_EQ(tables.Gauge[i][j], 0.0);
                EXPECT_EQ(tables.Magnetic[2][i][j], 0.0);
            } else {
                EXPECT_EQ(tables.Magnetic[0][i][j], 0.0);
                EXPECT_EQ(tables.Magnetic[1][i][j], 0.0);
            }
        }
    }
}

// Atoms so close that the Bessel argument comes below 2 go node by node: same values.
TEST(ThreeCentreIntegrals, ClosePair) {
    const double a[3] = {0.0, 0.3, 1.9};
    const double b[3] = {0.5, 0.1, 0.0};
    const double c[3] = {-0.5, 0.2, 0.1};
    const double zeta[3] = {1.1, 1.3, 0.0};
    ThreeCentreTables tables = {};
    ThreeCentreIntegrals(MakeAtom(2, zeta, b), MakeAtom(2, zeta, c), a, tables);
    for (int component = -1; component < 3; ++component) {
        const auto& table = component < 0 ? tables.Gauge : tables.Magnetic[component];
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 4; ++j) {
                EXPECT_NEAR(table[i][j], NodewiseElement(component, i + 1, j + 1, zeta[i > 0], zeta[j > 0], a, b, c),
                            1e-10);
            }
        }
    }
}

// Property: every instruction set gives the same bytes.
TEST(ThreeCentreIntegrals, SameBytesFromAllKernels) {
    std::mt19937 generator(3);
    for (int trial = 0; trial < 40; ++trial) {
        Triple triple;
        FillTriple(triple, generator, Classes[trial % 4][0], Classes[trial % 4][1], trial % 8 < 4);
        ThreeCentreTables expected = {};
        WithEachInstructionSet([&](InstructionSet set) {
            ThreeCentreTables tables = {};
            ThreeCentreIntegrals(triple.AtomB, triple.AtomC, triple.A, tables);
            if (set == BaselineSet) {
                expected = tables;
            }
            EXPECT_EQ(std::memcmp(&tables, &expected, sizeof tables), 0) << NameOf(set);
        });
    }
}
