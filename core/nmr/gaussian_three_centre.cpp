// SPDX-License-Identifier: MIT
// Three-centre integrals over six-Gaussian expansions: products of Cartesian Gaussians in Hermite functions about their
// common centre, and the potential and field of those at the nucleus (McMurchie and Davidson 1978).
#include "nmr/gaussian_three_centre.h"

#include "numerics/boys_function.h"
#include "numerics/decaying_exponential.h"
#include "numerics/mathematical_constants.h"

#include <cmath>

static constexpr double FinalFactor = 12.566371;       // 4 pi, with the digits that results rest on
static constexpr double MixedNorm = RoundedRootThree;  // of xy, xz, yz against xx
static constexpr double LargestExponent = 100.0;       // a product with e^-100 and below doesn't reach a result
static constexpr int PrimitiveCount = 6;
static constexpr int LargestCartesian = 6;  // functions of a d shell
static constexpr int Orders = 6;            // 0 to 5: d and d, and one derivative

// Exponents for zeta = 1 and coefficients of normalised Gaussians.
struct ExpansionRow {
    double Exponents[PrimitiveCount];
    double Coefficients[PrimitiveCount];
};

// [shell - 1][s, p, d]
static constexpr ExpansionRow ExpansionRows[3][3] = {
    {{{23.10303149, 4.235915534, 1.185056519, 0.4070988982, 0.1580884151, 0.06510953954},
      {0.00916359628, 0.04936149294, 0.1685383049, 0.3705627997, 0.4164915298, 0.1303340841}},
     {},
     {}},
    {{{27.68496241, 5.077140627, 1.42678605, 0.2040335729, 0.09260298399, 0.04416183978},
      {-0.004151277819, -0.02067024148, -0.05150303337, 0.3346271174, 0.5621061301, 0.1712994697}},
     {{5.868285913, 1.530329631, 0.5475665231, 0.2288932733, 0.1046655969, 0.04948220127},
      {0.007924233646, 0.05144104825, 0.189840006, 0.4049863191, 0.4012362861, 0.1051855189}},
     {}},
    {{{3.273031938, 0.9200611311, 0.3593349765, 0.08636686991, 0.04797373812, 0.02724741144},
      {-0.006775596947, -0.05639325779, -0.1587856086, 0.5534527651, 0.501535102, 0.07223633674}},
     {{5.077973607, 1.34078694, 0.2248434849, 0.1131741848, 0.06076408893, 0.03315424265},
      {-0.00332992984, -0.0141948834, 0.163939577, 0.4485358256, 0.390881305, 0.07411456232}},
     {{2.488296923, 0.7981487853, 0.331132749, 0.1559114463, 0.07877734732, 0.04058484363},
      {0.007283828112, 0.05386799363, 0.2072139149, 0.4266269092, 0.3843100204, 0.08902827546}}}};

// Powers of x, y, z: s; x, y, z; xx, yy, zz, xy, xz, yz.
static constexpr int FunctionCount[3] = {1, 3, 6};
static constexpr int Powers[3][LargestCartesian][3] = {
    {{0, 0, 0}}, {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {{2, 0, 0}, {0, 2, 0}, {0, 0, 2}, {1, 1, 0}, {1, 0, 1}, {0, 1, 1}}};

// The place of a function with these powers among those of its degree, which is 0 or 1.
static int PlaceOf(const int* powers) {
    return powers[1] + 2 * powers[2];
}

// One shell of an atom in six Gaussians: their exponents, and the factor of the monomial (xx for d).
struct Expansion {
    double Exponents[PrimitiveCount];
    double Factors[PrimitiveCount];
};

static void ExpandShell(const SlaterAtom& atom, int degree, Expansion& expansion) {
    const ExpansionRow& row = ExpansionRows[atom.Shell - 1][degree];
    const double zeta = atom.Zeta[degree];
    for (int i = 0; i < PrimitiveCount; ++i) {
        const double exponent = zeta * zeta * row.Exponents[i];
        const double ratio = 2.0 * exponent / Pi;
        double norm = std::sqrt(ratio * std::sqrt(ratio));  // (2 a / pi)^(3/4)
        if (degree == 1) {
            norm *= 2.0 * std::sqrt(exponent);
        } else if (degree == 2) {
            norm *= 4.0 * exponent / std::sqrt(3.0);
        }
        expansion.Exponents[i] = exponent;
        expansion.Factors[i] = row.Coefficients[i] * norm;
    }
}

// Two shells, one on B and one on C, of monomials; contracted over the primitives. E = r_a / r_a^3.
struct ShellPair {
    double Inverse[LargestCartesian][LargestCartesian];    // <mu|1/r_a|nu>
    double Field[3][LargestCartesian][LargestCartesian];   // <mu|E_j|nu>
    double Scaled[3][LargestCartesian][LargestCartesian];  // the same times the exponent of the ket
    double Lower[3][LargestCartesian][3];                  // <mu|E_j|nu'>, nu' of one degree less than nu
};

struct CentreVectors {
    double FromAToB[3];
    double FromAToC[3];
    double FromCToB[3];
    double SquareBC;
};

// Coefficients of Hermite functions of one axis: [i][j][t] for x_b^i x_c^j, without the exponential.
using HermiteRows = double[3][3][5];

template <int DegreeB, int DegreeC>
static void FillHermiteRows(double toB, double toC, double halfInverse, HermiteRows& rows) {
    rows[0][0][0] = 1.0;
#pragma GCC unroll 3
    for (int i = 0; i <= DegreeB; ++i) {
#pragma GCC unroll 3
        for (int j = 0; j <= DegreeC; ++j) {
            if (i + j == 0) {
                continue;
            }
            const double* source = i > 0 ? rows[i - 1][j] : rows[i][j - 1];
            const double shift = i > 0 ? toB : toC;
            const int top = i + j - 1;
#pragma GCC unroll 5
            for (int t = 0; t <= top + 1; ++t) {
                double value = t > 0 ? halfInverse * source[t - 1] : 0.0;
                value += t <= top ? shift * source[t] : 0.0;
                value += t + 1 <= top ? (t + 1) * source[t + 1] : 0.0;
                rows[i][j][t] = value;
            }
        }
    }
}

// The potential of Hermite functions: [t][u][v] for t + u + v <= top.
using HermitePotential = double[Orders][Orders][Orders];

template <int Top> static void FillPotential(const double* d, double exponent, HermitePotential& potential) {
    double boys[LargestBoysOrder + 1];
    BoysFunctions(Top, exponent * (d[0] * d[0] + d[1] * d[1] + d[2] * d[2]), boys);
    double factor = 1.0;
    for (int n = 0; n <= Top; ++n) {
        boys[n] *= factor;
        factor *= -2.0 * exponent;
    }
    // from the highest auxiliary order down, each one overwrites the one above, from high sums of indices to low
    potential[0][0][0] = boys[Top];
#pragma GCC unroll 5
    for (int n = Top - 1; n >= 0; --n) {
#pragma GCC unroll 5
        for (int total = Top - n; total >= 1; --total) {
#pragma GCC unroll 6
            for (int t = total; t >= 0; --t) {
#pragma GCC unroll 6
                for (int u = total - t; u >= 0; --u) {
                    const int v = total - t - u;
                    double value;
                    if (t > 0) {
                        value = d[0] * potential[t - 1][u][v];
                        value += t > 1 ? (t - 1) * potential[t - 2][u][v] : 0.0;
                    } else if (u > 0) {
                        value = d[1] * potential[t][u - 1][v];
                        value += u > 1 ? (u - 1) * potential[t][u - 2][v] : 0.0;
                    } else {
                        value = d[2] * potential[t][u][v - 1];
                        value += v > 1 ? (v - 1) * potential[t][u][v - 2] : 0.0;
                    }
                    potential[t][u][v] = value;
                }
            }
        }
        potential[0][0][0] = boys[n];
    }
}

// The potential, and the field as the derivative by the place of the nucleus, of the products of all monomials of two
// shells, times scale. The degrees are known when this is compiled, and all loops are unrolled.
template <int DegreeB, int DegreeC>
static void ContractHermite(const HermiteRows (&rows)[3], const HermitePotential& potential, double scale,
                            double (&values)[LargestCartesian][LargestCartesian][4]) {
#pragma GCC unroll 6
    for (int mu = 0; mu < FunctionCount[DegreeB]; ++mu) {
#pragma GCC unroll 6
        for (int nu = 0; nu < FunctionCount[DegreeC]; ++nu) {
            const int* b = Powers[DegreeB][mu];
            const int* c = Powers[DegreeC][nu];
            double sums[4] = {};
#pragma GCC unroll 5
            for (int t = 0; t <= b[0] + c[0]; ++t) {
#pragma GCC unroll 5
                for (int u = 0; u <= b[1] + c[1]; ++u) {
                    const double factor = rows[0][b[0]][c[0]][t] * rows[1][b[1]][c[1]][u];
#pragma GCC unroll 5
                    for (int v = 0; v <= b[2] + c[2]; ++v) {
                        const double coefficient = factor * rows[2][b[2]][c[2]][v];
                        sums[0] += coefficient * potential[t][u][v];
                        sums[1] -= coefficient * potential[t + 1][u][v];
                        sums[2] -= coefficient * potential[t][u + 1][v];
                        sums[3] -= coefficient * potential[t][u][v + 1];
                    }
                }
            }
            for (int i = 0; i < 4; ++i) {
                values[mu][nu][i] = scale * sums[i];
            }
        }
    }
}

template <int DegreeB, int DegreeC> static void AddPrimitivePair(const CentreVectors& centres, double exponentB,
                                                                 double exponentC, double factor, ShellPair& pair) {
    const double exponent = exponentB + exponentC;
    const double decay = exponentB * exponentC / exponent * centres.SquareBC;
    if (decay > LargestExponent) {
        return;
    }
    HermiteRows rows[3];
    double d[3];  // from A to the common centre
    for (int i = 0; i < 3; ++i) {
        const double toB = -exponentC / exponent * centres.FromCToB[i];
        const double toC = exponentB / exponent * centres.FromCToB[i];
        d[i] = centres.FromAToC[i] + toC;
        FillHermiteRows<DegreeB, DegreeC>(toB, toC, 0.5 / exponent, rows[i]);
    }
    HermitePotential potential;
    FillPotential<DegreeB + DegreeC + 1>(d, exponent, potential);
    const double scale = factor * DecayingExponential(decay) / (2.0 * exponent);
    double values[LargestCartesian][LargestCartesian][4];
    ContractHermite<DegreeB, DegreeC>(rows, potential, scale, values);
    for (int mu = 0; mu < FunctionCount[DegreeB]; ++mu) {
        for (int nu = 0; nu < FunctionCount[DegreeC]; ++nu) {
            pair.Inverse[mu][nu] += values[mu][nu][0];
            for (int j = 0; j < 3; ++j) {
                pair.Field[j][mu][nu] += values[mu][nu][j + 1];
                pair.Scaled[j][mu][nu] += exponentC * values[mu][nu][j + 1];
            }
        }
    }
    if constexpr (DegreeC > 0) {
        ContractHermite<DegreeB, DegreeC - 1>(rows, potential, scale, values);
        for (int mu = 0; mu < FunctionCount[DegreeB]; ++mu) {
            for (int nu = 0; nu < FunctionCount[DegreeC - 1]; ++nu) {
                for (int j = 0; j < 3; ++j) {
                    pair.Lower[j][mu][nu] += values[mu][nu][j + 1];
                }
            }
        }
    }
}

template <int DegreeB, int DegreeC>
static void AddShellPair(const CentreVectors& centres, const Expansion& b, const Expansion& c, ShellPair& pair) {
    for (int i = 0; i < PrimitiveCount; ++i) {
        for (int j = 0; j < PrimitiveCount; ++j) {
            AddPrimitivePair<DegreeB, DegreeC>(centres, b.Exponents[i], c.Exponents[j], b.Factors[i] * c.Factors[j],
                                               pair);
        }
    }
}

// [degree on B][degree on C]
static void (*const AddShellPairs[3][3])(const CentreVectors&, const Expansion&, const Expansion&,
                                         ShellPair&) = {{AddShellPair<0, 0>, AddShellPair<0, 1>, AddShellPair<0, 2>},
                                                        {AddShellPair<1, 0>, AddShellPair<1, 1>, AddShellPair<1, 2>},
                                                        {AddShellPair<2, 0>, AddShellPair<2, 1>, AddShellPair<2, 2>}};

// A monomial function of an atom: s 0; px, py, pz 1 to 3; xx, yy, zz, xy, xz, yz 4 to 9.
static constexpr int FirstFunction[3] = {0, 1, 4};
static constexpr int LargestFunctionCount = 10;

using FunctionTable = double[LargestFunctionCount][LargestFunctionCount];

// The elements of the operators between monomials of two shells. Tables 0 and 1: gauge and reverse gauge, 2 to 4:
// magnetic.
static void FillFromPair(const CentreVectors& centres, const ShellPair& pair, int degreeB, int degreeC,
                         FunctionTable (&tables)[5]) {
    for (int mu = 0; mu < FunctionCount[degreeB]; ++mu) {
        const int row = FirstFunction[degreeB] + mu;
        for (int nu = 0; nu < FunctionCount[degreeC]; ++nu) {
            const int column = FirstFunction[degreeC] + nu;
            double timesAC = 0.0;
            double timesAB = 0.0;
            for (int j = 0; j < 3; ++j) {
                timesAC += centres.FromAToC[j] * pair.Field[j][mu][nu];
                timesAB += centres.FromAToB[j] * pair.Field[j][mu][nu];
            }
            tables[0][row][column] = pair.Inverse[mu][nu] - timesAC;
            tables[1][row][column] = pair.Inverse[mu][nu] - timesAB;
            // E times the gradient of the ket's monomial
            double gradient[3][3] = {};  // [j][axis]
            for (int axis = 0; axis < 3; ++axis) {
                const int power = Powers[degreeC][nu][axis];
                if (power == 0) {
                    continue;
                }
                int lower[3] = {Powers[degreeC][nu][0], Powers[degreeC][nu][1], Powers[degreeC][nu][2]};
                --lower[axis];
                const int place = PlaceOf(lower);
                for (int j = 0; j < 3; ++j) {
                    gradient[j][axis] = power * pair.Lower[j][mu][place];
                }
            }
            for (int k = 0; k < 3; ++k) {
                const int p = (k + 1) % 3;
                const int q = (k + 2) % 3;
                const double exponential =
                    2.0 * (pair.Scaled[p][mu][nu] * centres.FromAToC[q] - pair.Scaled[q][mu][nu] * centres.FromAToC[p]);
                tables[2 + k][row][column] = exponential + (gradient[p][q] - gradient[q][p]);
            }
        }
    }
}

// The d functions as sums of monomials; dx2-y2 has the norm 4/3 on purpose.
struct FunctionSum {
    int Count;
    int Functions[3];
    double Factors[3];
};

static constexpr FunctionSum OrbitalSums[LargestOrbitals] = {
    {1, {0}, {1.0}},
    {1, {1}, {1.0}},
    {1, {2}, {1.0}},
    {1, {3}, {1.0}},
    {3, {6, 4, 5}, {1.0, -0.5, -0.5}},
    {1, {8}, {MixedNorm}},
    {1, {9}, {MixedNorm}},
    {2, {4, 5}, {1.0, -1.0}},
    {1, {7}, {MixedNorm}},
};

static void Combine(const FunctionTable& table, int countB, int countC, OrbitalTable& result) {
    for (int mu = 0; mu < countB; ++mu) {
        for (int nu = 0; nu < countC; ++nu) {
            double sum = 0.0;
            for (int i = 0; i < OrbitalSums[mu].Count; ++i) {
                for (int j = 0; j < OrbitalSums[nu].Count; ++j) {
                    sum += OrbitalSums[mu].Factors[i] * OrbitalSums[nu].Factors[j] *
                           table[OrbitalSums[mu].Functions[i]][OrbitalSums[nu].Functions[j]];
                }
            }
            result[mu][nu] = FinalFactor * sum;
        }
    }
}

static int DegreeCount(const SlaterAtom& atom) {
    return atom.OrbitalCount == 1 ? 1 : atom.OrbitalCount == 4 ? 2 : 3;
}

void GaussianThreeCentre(const SlaterAtom& b, const SlaterAtom& c, const double* positionA, ThreeCentreTables& tables) {
    CentreVectors centres = {};
    for (int i = 0; i < 3; ++i) {
        centres.FromAToB[i] = b.Position[i] - positionA[i];
        centres.FromAToC[i] = c.Position[i] - positionA[i];
        centres.FromCToB[i] = b.Position[i] - c.Position[i];
        centres.SquareBC += centres.FromCToB[i] * centres.FromCToB[i];
    }
    FunctionTable functions[5];
    for (int degreeB = 0; degreeB < DegreeCount(b); ++degreeB) {
        Expansion expansionB;
        ExpandShell(b, degreeB, expansionB);
        for (int degreeC = 0; degreeC < DegreeCount(c); ++degreeC) {
            Expansion expansionC;
            ExpandShell(c, degreeC, expansionC);
            ShellPair pair = {};
            AddShellPairs[degreeB][degreeC](centres, expansionB, expansionC, pair);
            FillFromPair(centres, pair, degreeB, degreeC, functions);
        }
    }
    Combine(functions[0], b.OrbitalCount, c.OrbitalCount, tables.Gauge);
    Combine(functions[1], b.OrbitalCount, c.OrbitalCount, tables.ReverseGauge);
    for (int k = 0; k < 3; ++k) {
        Combine(functions[2 + k], b.OrbitalCount, c.OrbitalCount, tables.Magnetic[k]);
    }
}
