// SPDX-License-Identifier: MIT
// The Boys function: Taylor series about the points of a grid and downward recurrence, or the asymptotic form.
#include "numerics/boys_function.h"

#include "ground/log.h"
#include "numerics/decaying_exponential.h"
#include "numerics/mathematical_constants.h"

#include <cmath>
#include <cstdio>

static constexpr int StepsPerUnit = 8;
static constexpr int GridCount = 18 * StepsPerUnit + 1;  // t = 0 to 18, beyond the last switch point
static constexpr int TaylorTerms = 9;                    // the next one is below (1/16)^9 / 9! = 4e-17
static constexpr int GridOrders = LargestBoysOrder + TaylorTerms;

// From here on the asymptotic form counts.
static constexpr double SwitchPoints[LargestBoysOrder + 1] = {16.3578, 17.4646, 15.2368, 16.0419, 16.8955,
                                                              17.7822, 15.8077, 16.5903, 17.3336};

// (2m - 1)!! / 2^(m + 1)
static constexpr double AsymptoticFactors[LargestBoysOrder + 1] = {
    0.5, 0.25, 0.375, 0.9375, 3.28125, 14.765625, 81.2109375, 527.87109375, 3959.033203125};

static double Grid[GridCount][GridOrders];  // F_m at the points of the grid; filled once in a process
static bool GridFilled = false;

// Series of positive terms for the highest order, recurrence for those below.
static void FillGrid() {
    for (int point = 0; point < GridCount; ++point) {
        const double t = static_cast<double>(point) / StepsPerUnit;
        const double exponential = DecayingExponential(t);
        double term = 1.0 / (2 * GridOrders - 1);
        double sum = term;
        for (int i = 1; term > 1e-18 * sum; ++i) {
            term *= 2.0 * t / (2 * GridOrders - 1 + 2 * i);
            sum += term;
        }
        Grid[point][GridOrders - 1] = exponential * sum;
        for (int m = GridOrders - 2; m >= 0; --m) {
            Grid[point][m] = (2.0 * t * Grid[point][m + 1] + exponential) / (2 * m + 1);
        }
    }
    GridFilled = true;
}

static double AsymptoticForm(int m, double t) {
    double value = AsymptoticFactors[m] * std::sqrt(Pi / t);
    for (int i = 0; i < m; ++i) {
        value /= t;
    }
    return value;
}

void BoysFunctions(int top, double t, double* values) {
    if (t <= 1e-15) {
        for (int m = 0; m <= top; ++m) {
            values[m] = 1.0 / (2 * m + 1);
        }
        return;
    }
    if (t < GridCount / StepsPerUnit) {
        if (!GridFilled) {
            FillGrid();
        }
        static constexpr double Inverse[TaylorTerms] = {1.0,     1.0 / 1, 1.0 / 2, 1.0 / 3, 1.0 / 4,
                                                        1.0 / 5, 1.0 / 6, 1.0 / 7, 1.0 / 8};
        const int point = static_cast<int>(t * StepsPerUnit + 0.5);
        const double step = static_cast<double>(point) / StepsPerUnit - t;  // dF_m/dt = -F_(m+1)
        double sum = Grid[point][top + TaylorTerms - 1];
        for (int i = TaylorTerms - 1; i >= 1; --i) {
            sum = Grid[point][top + i - 1] + sum * (step * Inverse[i]);
        }
        values[top] = sum;
        if (top > 0) {
            const double exponential = DecayingExponential(t);
            for (int m = top - 1; m >= 0; --m) {
                values[m] = (2.0 * t * values[m + 1] + exponential) / (2 * m + 1);
            }
        }
    }
    const double inverse = 1.0 / t;
    double power = 0.0;
    for (int m = 0; m <= top; ++m) {
        if (!(t <= SwitchPoints[m])) {  // on purpose also for what isn't a number
            if (power == 0.0) {
                power = AsymptoticForm(m, t) / AsymptoticFactors[m];
            }
            values[m] = AsymptoticFactors[m] * power;
        }
        power *= inverse;
    }
}

double BoysFunction(int m, double t) {
    if (m > LargestBoysOrder) {
        char line[40];
        std::snprintf(line, sizeof line, "m > %2d is not supported", LargestBoysOrder);
        LogAppend(line);
        return 0.0;
    }
    double values[LargestBoysOrder + 1];
    BoysFunctions(m, t, values);
    return values[m];
}
