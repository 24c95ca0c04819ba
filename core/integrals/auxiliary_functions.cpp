// SPDX-License-Identifier: MIT
// The tables A and B by recursion or by series, and integer powers. The innermost code of all integrals: it
// allocates nothing.
#include "integrals/auxiliary_functions.h"

#include "numerics/elementary_functions.h"
#include "numerics/factorial.h"

#include <cmath>

const double EvenMomentTable[AuxiliaryTableSize / 2] = {2.0,
                                                        0.666666666667,
                                                        0.4,
                                                        0.285714285714,
                                                        0.222222222222,
                                                        0.181818181818,
                                                        0.153846153846,
                                                        0.133333333333,
                                                        0.117647058824,
                                                        0.105263157895};

static constexpr double SmallestArgument = 1e-06;
static constexpr double LargestArgument = 100.0;

// How B is computed for |q| above Above, up to the Above of the row before: by recursion up to the order
// LastRecursion, beyond it by a series of SeriesTerms terms.
static constexpr struct {
    double Above;
    int LastRecursion;
    int SeriesTerms;
} Methods[] = {
    {3.0, LargestAuxiliaryOrder, 0}, {2.0, 10, 16}, {1.0, 7, 13}, {0.5, 5, 8}, {SmallestArgument, -1, 7},
};

// Integration by parts. It loses digits as |q| gets small against the order: hence the series.
static void RecurrenceB(double* tableB, double q, int order) {
    const double e = Exponential(q);
    const double difference = e - 1.0 / e;
    const double sum = e + 1.0 / e;
    tableB[0] = difference / q;
    for (int n = 1; n <= order; ++n) {
        const double boundary = n % 2 != 0 ? -sum : difference;
        tableB[n] = (n * tableB[n - 1] + boundary) / q;
    }
}

// Term by term of the exponential; terms that are odd in t vanish. powers is scratch for the powers of -q.
static void SeriesB(double* tableB, double* powers, double q, int order, int terms) {
    powers[0] = 1.0;
    for (int k = 1; k < terms; ++k) {
        powers[k] = powers[k - 1] * -q;
    }
    for (int n = 0; n <= order; ++n) {
        double sum = 0.0;
        for (int k = n % 2; k < terms; k += 2) {
            sum += powers[k] / ((n + 1 + k) * FactorialTable[k]);
        }
        tableB[n] = 2.0 * sum;
    }
}

static void LimitB(double* tableB, int order) {
    for (int n = 0; n <= order; n += 2) {
        tableB[n] = EvenMomentTable[n / 2];
    }
}

static void FillTableB(double* tableB, double* scratch, double q, int order) {
    const double size = std::fabs(q);
    if (size >= LargestArgument) {
        return;
    }
    for (const auto& method : Methods) {
        if (size > method.Above) {
            if (order <= method.LastRecursion) {
                RecurrenceB(tableB, q, order);
            } else {
                SeriesB(tableB, scratch, q, order, method.SeriesTerms);
            }
            return;
        }
    }
    LimitB(tableB, order);
}

static void FillTableA(double* tableA, double p, int order) {
    const double size = std::fabs(p);
    if (size > SmallestArgument && size < LargestArgument) {
        const double e = Exponential(-p);
        tableA[0] = e / p;
        for (int n = 1; n <= order; ++n) {
            tableA[n] = (n * tableA[n - 1] + e) / p;
        }
    }
}

static void ClearTable(double* table) {
    for (int n = 0; n < AuxiliaryTableSize; ++n) {
        table[n] = 0.0;
    }
}

void AuxiliaryIntegrals(double* tableA, double* tableB, double p, double q, int order) {
    if (order < 0 || order > LargestAuxiliaryOrder) {
        order = LargestAuxiliaryOrder;
    }
    ClearTable(tableA);
    ClearTable(tableB);
    FillTableB(tableB, tableA, q, order);
    ClearTable(tableA);
    FillTableA(tableA, p, order);
}

double PowerOf(double x, int n) {
    if (x == 0.0) {
        return 0.0;
    }
    unsigned bits = static_cast<unsigned>(n);
    if (n < 0) {
        x = 1.0 / x;
        bits = 0u - bits;
    }
    double result = (bits & 1u) != 0 ? x : 1.0;
    for (bits >>= 1; bits != 0; bits >>= 1) {
        x *= x;
        if ((bits & 1u) != 0) {
            result *= x;
        }
    }
    return result;
}
