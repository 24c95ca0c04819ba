// SPDX-License-Identifier: MIT
// The stored factorials and their continuation.
#include "numerics/factorial.h"

const double FactorialTable[25] = {1.0,
                                   1.0,
                                   2.0,
                                   6.0,
                                   24.0,
                                   120.0,
                                   720.0,
                                   5040.0,
                                   40320.0,
                                   362880.0,
                                   3628800.0,
                                   39916800.0,
                                   479001600.0,
                                   6227020800.0,
                                   87178291200.0,
                                   1307674368000.0,
                                   20922789890000.0,
                                   355687428100000.0,
                                   6402373706000000.0,
                                   1.216451004e17,
                                   2.432902008e18,
                                   5.109094217e19,
                                   1.124000728e21,
                                   2.585201674e22,
                                   6.204484017e23};

static constexpr int LastStored = 24;

double Factorial(int n) {
    double value = FactorialTable[n < LastStored ? n : LastStored];
    for (int k = LastStored + 1; k <= n; ++k) {
        value *= k;
    }
    return value;
}
