// SPDX-License-Identifier: MIT
// Overlap integrals as sums of products of auxiliary integrals. In elliptical coordinates the integrand is a
// polynomial in xi and eta times an exponential; the polynomials are expanded here when the program is compiled.
#include "wavefunction/overlap_integrals.h"

#include "integrals/auxiliary_functions.h"
#include "molecule/element_tables.h"
#include "numerics/factorial.h"
#include "numerics/mathematical_constants.h"

#include <algorithm>
#include <cmath>

static constexpr int ShellCount = 3;
static constexpr int KindCount = 14;     // of (la, lb, m)
static constexpr int PowerCount = 7;     // of xi, of eta: none is above na + nb
static constexpr int LargestTerms = 20;  // of one polynomial
static constexpr int BinomialRows = 20;
static constexpr double SmallestExponentD = 0.3;

// The sum of Factor xi^PowerA eta^PowerB.
struct OverlapPolynomial {
    int Count;
    unsigned char PowerA[LargestTerms];
    unsigned char PowerB[LargestTerms];
    double Factor[LargestTerms];
};

struct OverlapPolynomials {
    OverlapPolynomial Of[ShellCount][ShellCount][KindCount];
};

struct BinomialTable {
    double Value[BinomialRows][BinomialRows];
};

static constexpr BinomialTable MakeBinomials() {
    BinomialTable table = {};
    for (int n = 0; n < BinomialRows; ++n) {
        table.Value[n][0] = 1.0;
        for (int k = 1; k <= n; ++k) {
            table.Value[n][k] = table.Value[n - 1][k - 1] + table.Value[n - 1][k];
        }
    }
    return table;
}

static constexpr BinomialTable Binomials = MakeBinomials();

static constexpr int KindOf(int la, int lb, int m) {
    return m == 0 ? la * 3 + lb : m == 1 ? 9 + (la - 1) * 2 + (lb - 1) : 13;
}

// Adds weight (xi + eta)^na (xi - eta)^nb (1 + xi eta)^la (1 - xi eta)^lb (xi^2 - 1)^m (1 - eta^2)^m.
static constexpr void AddExpansion(double weight, int na, int nb, int la, int lb, int m,
                                   double (&dense)[PowerCount][PowerCount]) {
    const auto& binomial = Binomials.Value;
    for (int k1 = 0; k1 <= na; ++k1) {
        for (int k2 = 0; k2 <= nb; ++k2) {
            for (int k3 = 0; k3 <= la; ++k3) {
                for (int k4 = 0; k4 <= lb; ++k4) {
                    for (int u = 0; u <= m; ++u) {
                        for (int v = 0; v <= m; ++v) {
                            const double sign = (k2 + k4 + m + u + v) % 2 == 0 ? weight : -weight;
                            dense[na + nb + k3 + k4 + 2 * u - k1 - k2][k1 + k2 + k3 + k4 + 2 * v] +=
                                sign * binomial[na][k1] * binomial[nb][k2] * binomial[la][k3] * binomial[lb][k4] *
                                binomial[m][u] * binomial[m][v];
                        }
                    }
                }
            }
        }
    }
}

// Coefficient of cos^(l - m - 2i) in the associated Legendre function (l, m), without the factor AngularFactor.
static constexpr double LegendreCoefficient(int i, int m, int l) {
    if (m == 0 && l == 2) {
        return i == 0 ? 1.5 : -0.5;
    }
    return 1.0;
}

static constexpr OverlapPolynomial MakePolynomial(int na, int la, int nb, int lb, int m) {
    double dense[PowerCount][PowerCount] = {};
    for (int i = 0; 2 * i <= la - m; ++i) {
        for (int j = 0; 2 * j <= lb - m; ++j) {
            const double weight = LegendreCoefficient(i, m, la) * LegendreCoefficient(j, m, lb);
            AddExpansion(weight, na - la + 2 * i, nb - lb + 2 * j, la - m - 2 * i, lb - m - 2 * j, m, dense);
        }
    }
    OverlapPolynomial polynomial = {};
    for (int a = PowerCount - 1; a >= 0; --a) {
        for (int b = 0; b < PowerCount; ++b) {
            if (dense[a][b] != 0.0) {
                polynomial.PowerA[polynomial.Count] = static_cast<unsigned char>(a);
                polynomial.PowerB[polynomial.Count] = static_cast<unsigned char>(b);
                polynomial.Factor[polynomial.Count] = dense[a][b];
                ++polynomial.Count;
            }
        }
    }
    return polynomial;
}

static constexpr OverlapPolynomials MakePolynomials() {
    OverlapPolynomials all = {};
    for (int na = 1; na <= ShellCount; ++na) {
        for (int nb = 1; nb <= ShellCount; ++nb) {
            for (int la = 0; la < na; ++la) {
                for (int lb = 0; lb < nb; ++lb) {
                    for (int m = 0; m <= std::min(la, lb); ++m) {
                        all.Of[na - 1][nb - 1][KindOf(la, lb, m)] = MakePolynomial(na, la, nb, lb, m);
                    }
                }
            }
        }
    }
    return all;
}

static constexpr OverlapPolynomials Polynomials = MakePolynomials();

static const OverlapPolynomial& PolynomialOf(int na, int la, int nb, int lb, int m) {
    return Polynomials.Of[na - 1][nb - 1][KindOf(la, lb, m)];
}

static void ClearOverlaps(LocalOverlaps* overlaps) {
    *overlaps = {};
}

// Tables A and B of a pair of exponents, kept while the next pair of orbitals has the same exponents.
struct OverlapTables {
    double FirstExponent;
    double SecondExponent;
    double A[AuxiliaryTableSize];
    double B[AuxiliaryTableSize];
};

static void PrepareTables(double first, double second, double p, double q, int order, OverlapTables* tables) {
    if (first != tables->FirstExponent || second != tables->SecondExponent) {
        AuxiliaryIntegrals(tables->A, tables->B, p, q, order);
        tables->FirstExponent = first;
        tables->SecondExponent = second;
    }
}

static double PolynomialSum(const OverlapPolynomial& polynomial, const double* a, const double* b) {
    double sum = 0.0;
    for (int k = 0; k < polynomial.Count; ++k) {
        sum += polynomial.Factor[k] * (a[polynomial.PowerA[k]] * b[polynomial.PowerB[k]]);
    }
    return sum;
}

// The fixed numbers of one class of closed forms; the class is the product of the two principal quantum numbers.
struct ClosedClass {
    int Order;  // of the auxiliary integrals
    double Prefactor;
    double Root;  // factor under the square root of the exponents
    double FactorSS;
    double FactorSP;  // s-p and p-s sigma
};

static constexpr double OneThird = 0.3333333333333333;
static constexpr double ThirdShellRoot = 0.13333333333333333;

// The factor of the last class is 1/480 in nine digits, on purpose.
static constexpr ClosedClass ClosedClasses[] = {
    {},
    {2, 0.25, 1.0, 1.0, 0.0},
    {3, 0.125, 1.0, InverseOfRoundedRoot, 1.0},
    {4, 0.0625, ThirdShellRoot, InverseOfRoundedRoot, 1.0},
    {4, 0.0625, 1.0, OneThird, InverseOfRoundedRoot},
    {},
    {5, 0.03125, ThirdShellRoot, OneThird, InverseOfRoundedRoot},
    {},
    {},
    {6, 0.00208333333, 1.0, OneThird, InverseOfRoundedRoot},
};

static double ClosedFactor(const ClosedClass& numbers, int la, int lb, int m) {
    if (la == 0 && lb == 0) {
        return numbers.FactorSS;
    }
    return la != lb ? numbers.FactorSP : m == 0 ? 1.0 : 0.5;
}

// The same sum with eta reversed: here B has the opposite argument.
static double ReversedSum(const OverlapPolynomial& polynomial, const double* a, const double* b) {
    double sum = 0.0;
    for (int k = 0; k < polynomial.Count; ++k) {
        const int power = polynomial.PowerB[k];
        const double factor = power % 2 == 0 ? polynomial.Factor[k] : -polynomial.Factor[k];
        sum += factor * (a[polynomial.PowerA[k]] * b[power]);
    }
    return sum;
}

void OverlapClosedForm(const OverlapCentre& i, const OverlapCentre& j, double distance, LocalOverlaps* overlaps) {
    ClearOverlaps(overlaps);
    const bool swapped = j.Code < i.Code;
    const OverlapCentre& first = swapped ? j : i;
    const OverlapCentre& second = swapped ? i : j;
    const int n1 = ValenceShellTable[first.Code - 1];
    const int n2 = ValenceShellTable[second.Code - 1];
    const ClosedClass& numbers = ClosedClasses[n1 * n2];
    const double scale = numbers.Prefactor * PowerOf(distance, n1 + n2 + 1);
    OverlapTables tables;
    tables.FirstExponent = tables.SecondExponent = -1.0;
    for (int la = 0; la < std::min(n1, 2); ++la) {
        for (int lb = 0; lb < std::min(n2, 2); ++lb) {
            const double z1 = first.Exponents[la];
            const double z2 = second.Exponents[lb];
            PrepareTables(z1, z2, (z1 + z2) * distance / 2.0, (z2 - z1) * distance / 2.0, numbers.Order, &tables);
            const double powers = PowerOf(z1, 2 * n1 + 1) * PowerOf(z2, 2 * n2 + 1);
            const double norm = scale * std::sqrt(numbers.Root * powers);
            for (int m = 0; m <= std::min(la, lb); ++m) {
                const double sum = ReversedSum(PolynomialOf(n1, la, n2, lb, m), tables.A, tables.B);
                double& value = swapped ? overlaps->Value[lb][la][m] : overlaps->Value[la][lb][m];
                value = norm * ClosedFactor(numbers, la, lb, m) * sum;
            }
        }
    }
}

// Normalisation of the associated Legendre functions, with the digits that results depend on.
static double AngularFactor(int m, int l) {
    return l < 2 || m == 0 ? 1.0 : m == 1 ? 1.73205 : 1.224745;
}

static double GeneralExponent(const OverlapCentre& centre, int l) {
    return l == 2 ? std::max(centre.Exponents[l], SmallestExponentD) : centre.Exponents[l];
}

void OverlapGeneral(const OverlapCentre& i, const OverlapCentre& j, double distance, LocalOverlaps* overlaps) {
    ClearOverlaps(overlaps);
    const int na = i.Shell;
    const int nb = j.Shell;
    const double factorials = FactorialTable[2 * na] * FactorialTable[2 * nb];
    const double radial = PowerOf(distance, na + nb + 1);
    OverlapTables tables;
    tables.FirstExponent = tables.SecondExponent = -1.0;
    for (int la = 0; la < na; ++la) {
        for (int lb = 0; lb < nb; ++lb) {
            const double zi = GeneralExponent(i, la);
            const double zj = GeneralExponent(j, lb);
            PrepareTables(zi, zj, (zi + zj) * distance / 2.0, (zi - zj) * distance / 2.0, LargestAuxiliaryOrder,
                          &tables);
            const double norm = std::sqrt((2 * la + 1) * (2 * lb + 1) * (zi * zj) / factorials) * radial *
                                (PowerOf(zi, na) * PowerOf(zj, nb));
            double half = 0.5;
            for (int m = 0; m <= std::min(la, lb); ++m) {
                const double angular = AngularFactor(m, la) * AngularFactor(m, lb);
                const double sum = PolynomialSum(PolynomialOf(na, la, nb, lb, m), tables.A, tables.B);
                overlaps->Value[la][lb][m] = norm * half * angular * sum;
                half *= 0.5;
            }
        }
    }
}
