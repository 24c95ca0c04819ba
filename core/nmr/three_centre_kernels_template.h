// SPDX-License-Identifier: MIT
// The source of the three-centre kernels, included once by the file of each instruction set, so without a guard. The
// width of a register only says how many outer nodes share one: no sum changes its order, nothing is contracted. All is
// local to the file that includes it, see numerics/vector_lanes.h.

#include "nmr/three_centre_kernels.h"
#include "numerics/decaying_exponential.h"
#include "numerics/vector_lanes.h"

namespace {

constexpr int Parts = OuterLanes / LaneCount;                    // registers of a row of outer nodes
constexpr double LargestSquare = 160.0 * 160.0;                  // from x = 160 on a Bessel function counts as 0
constexpr unsigned long long RootGuess = 0x4feb0a3d70a3d70aULL;  // (1.25 * 1023 - 0.06) * 2^52

// q^(-1/4) to two units in the last place, for normal q: the exponent divided by four, which is right to 3 %, and two
// steps of fourth order.
AlwaysInline Lanes FourthRootReciprocal(Lanes q) {
    Lanes y = reinterpret_cast<Lanes>(RootGuess - (reinterpret_cast<LaneBits>(q) >> 2));
#pragma GCC unroll 2
    for (int step = 0; step < 2; ++step) {
        const Lanes square = y * y;
        const Lanes error = 1.0 - (q * square) * square;
        y = y + (y * error) * (0.25 + error * (0.15625 + error * 0.1171875));
    }
    return y;
}

// K_0(x) and x K_1(x) for x^2 = q >= 4 by Abramowitz and Stegun 9.8.6 and 9.8.8; e^(-x) to 1e-12 relative.
AlwaysInline void BesselPair(Lanes q, Lanes& k0, Lanes& xk1) {
    const Lanes y = FourthRootReciprocal(q);  // x^(-1/2)
    const Lanes inverse = y * y;
    const Lanes x = q * inverse;
    const Lanes v = inverse + inverse;  // 2 / x
    const DecaySeries<Lanes> s = ExpandDecay(x);
    // of e^R up to R^10, which is enough beside the 1e-7 of the approximations
    const Lanes high = (1.0 / 40320 + s.R * (1.0 / 362880)) + s.R2 * (1.0 / 3628800);
    const Lanes power = ScaleDecay<LaneBits>(s.Low + s.R4 * (s.Middle + s.R4 * high), s.Shifted);
    const Lanes exponential = q < LargestSquare ? power * y : Lanes{};  // e^(-x) x^(-1/2)
    const Lanes v2 = v * v;
    const Lanes v4 = v2 * v2;
    const Lanes p0 = ((1.25331414 + v * -0.07832358) + v2 * (0.02189568 + v * -0.01062446)) +
                     v4 * ((0.00587872 + v * -0.00251540) + v2 * 0.00053208);
    const Lanes p1 = ((1.25331414 + v * 0.23498619) + v2 * (-0.03655620 + v * 0.01504268)) +
                     v4 * ((-0.00780353 + v * 0.00325614) + v2 * -0.00068245);
    k0 = exponential * p0;
    xk1 = (exponential * x) * p1;
}

// t^2, and w t^(2m) for m = 0 to 3, in the order of the pairs.
struct InnerTable {
    double Square[2 * InnerPairs];
    double Weight[2 * InnerPairs][4];
};

static constexpr InnerTable MakeInnerTable() {
    InnerTable table = {};
    for (int i = 0; i < 2 * InnerPairs; ++i) {
        const double t = i % 2 == 0 ? InnerNodes[i / 2] : InnerMirrors[i / 2];
        table.Square[i] = t * t;
        table.Weight[i][0] = InnerWeights[i / 2];
        for (int m = 1; m < 4; ++m) {
            table.Weight[i][m] = table.Weight[i][m - 1] * (t * t);
        }
    }
    return table;
}

static constexpr InnerTable Inner = MakeInnerTable();

static void InnerSums(LaneMoments& moments) {
    for (int part = 0; part < Parts; ++part) {
        const int lane = part * LaneCount;
        const Lanes slope = Load(moments.Slope + lane);
        const Lanes start = Load(moments.Start + lane);
        Lanes zero[4] = {};
        Lanes one[4] = {};
        for (int i = 0; i < 2 * InnerPairs; ++i) {
            Lanes k0;
            Lanes xk1;
            BesselPair(slope * Inner.Square[i] + start, k0, xk1);
#pragma GCC unroll 4
            for (int m = 0; m < 4; ++m) {
                zero[m] += k0 * Inner.Weight[i][m];
                one[m] += xk1 * Inner.Weight[i][m];
            }
        }
#pragma GCC unroll 4
        for (int m = 0; m < 4; ++m) {
            Store(moments.Zero[m] + lane, zero[m]);
            Store(moments.One[m] + lane, one[m]);
        }
    }
}

// H[n][m] = 2 Ratio^n times the sum over t of w t^(2m) x^n K_n(x), for n + m <= 4. The recurrence
// f(n) = x^2 f(n-2) + 2 (n-1) f(n-1) is linear, so it holds for the sums with x^2 = Slope t^2 + Start.
struct InnerValues {
    Lanes H[5][4];
};

AlwaysInline void Expand(const LaneMoments& moments, int lane, InnerValues& values) {
    Lanes(&h)[5][4] = values.H;
    const Lanes ratio = Load(moments.Ratio + lane);
    const Lanes twice = ratio + ratio;
    const Lanes square = ratio * ratio;
    const Lanes slope = square * Load(moments.Slope + lane);
    const Lanes start = square * Load(moments.Start + lane);
#pragma GCC unroll 4
    for (int m = 0; m < 4; ++m) {
        const Lanes zero = Load(moments.Zero[m] + lane);
        h[0][m] = zero + zero;
        h[1][m] = twice * Load(moments.One[m] + lane);
    }
#pragma GCC unroll 3
    for (int m = 0; m < 3; ++m) {
        h[2][m] = (slope * h[0][m + 1] + start * h[0][m]) + twice * h[1][m];
    }
    const Lanes fourfold = 2.0 * twice;
#pragma GCC unroll 2
    for (int m = 0; m < 2; ++m) {
        h[3][m] = (slope * h[1][m + 1] + start * h[1][m]) + fourfold * h[2][m];
    }
    h[4][0] = (slope * h[2][1] + start * h[2][0]) + (3.0 * twice) * h[3][0];
}

// The inner integrals with the weights of both orbitals: F(m, j) stands for t^(2m) s^(-j) in a Gaussian's moment.
struct PairFunction {
    InnerValues Values;
    Lanes Constant;  // of 1
    Lanes First;     // of 1/s
    Lanes Second;    // of 1/s^2
};

AlwaysInline void Prepare(PairFunction& f, const LanePairs& pairs, int pair, Lanes u, Lanes v, int lane) {
    const SuperpositionWeight& b = pairs.First[pair];
    const SuperpositionWeight& c = pairs.Second[pair];
    const Lanes factor = Load(OuterFactors + lane);
    const Lanes inverseB = b.Inverse / u;
    const Lanes inverseC = c.Inverse / v;
    f.Constant = factor * (b.Constant * c.Constant);
    f.First = factor * (b.Constant * inverseC + c.Constant * inverseB);
    f.Second = factor * (inverseB * inverseC);
    Expand(*pairs.Moments[pair], lane, f.Values);
}

// For two s orbitals.
AlwaysInline Lanes ValueSS(const PairFunction& f, int m, int j) {
    return (f.Constant * f.Values.H[j + 1][m] + f.First * f.Values.H[j + 2][m]) + f.Second * f.Values.H[j + 3][m];
}

// For one s and one p orbital.
AlwaysInline Lanes ValueSP(const PairFunction& f, int m, int j) {
    return f.Constant * f.Values.H[j + 1][m] + f.First * f.Values.H[j + 2][m];
}

// For two p orbitals.
AlwaysInline Lanes ValuePP(const PairFunction& f, int m, int j) {
    return f.Constant * f.Values.H[j + 1][m];
}

using SumRows = double[SumCount][OuterLanes];

AlwaysInline void PutSS(const PairFunction& f, Lanes u, Lanes v, SumRows& sums, int lane) {
    const Lanes f10 = ValueSS(f, 1, 0);
    Store(sums[SumsOfSS + 0] + lane, f10);
    Store(sums[SumsOfSS + 1] + lane, u * f10);
    Store(sums[SumsOfSS + 2] + lane, ValueSS(f, 0, 1));
    Store(sums[SumsOfSS + 3] + lane, (2.0 * u * v) * ValueSS(f, 1, -1));
}

AlwaysInline void PutSP(const PairFunction& f, Lanes u, Lanes v, SumRows& sums, int lane) {
    const Lanes f10 = ValueSP(f, 1, 0);
    const Lanes f20 = ValueSP(f, 2, 0);
    const Lanes f11 = ValueSP(f, 1, 1);
    const Lanes low2 = ValueSP(f, 2, -1);
    const Lanes difference = u * (f10 - f20);
    const Lanes uv2 = 2.0 * u * v;
    Store(sums[SumsOfSP + 0] + lane, f11);
    Store(sums[SumsOfSP + 1] + lane, f20);
    Store(sums[SumsOfSP + 2] + lane, u * f20);
    Store(sums[SumsOfSP + 3] + lane, difference);
    Store(sums[SumsOfSP + 4] + lane, u * difference);
    Store(sums[SumsOfSP + 5] + lane, u * (ValueSP(f, 0, 1) - f11));
    Store(sums[SumsOfSP + 6] + lane, u * f10);
    Store(sums[SumsOfSP + 7] + lane, uv2 * low2);
    Store(sums[SumsOfSP + 8] + lane, (uv2 * u) * (ValueSP(f, 1, -1) - low2));
}

AlwaysInline void PutPS(const PairFunction& f, Lanes u, Lanes v, SumRows& sums, int lane) {
    const Lanes f10 = ValueSP(f, 1, 0);
    const Lanes f20 = ValueSP(f, 2, 0);
    const Lanes f11 = ValueSP(f, 1, 1);
    const Lanes low2 = ValueSP(f, 2, -1);
    const Lanes mixed = u * f20 + v * f10;
    const Lanes uv2 = 2.0 * u * v;
    Store(sums[SumsOfPS + 0] + lane, f11);
    Store(sums[SumsOfPS + 1] + lane, f20);
    Store(sums[SumsOfPS + 2] + lane, u * f20);
    Store(sums[SumsOfPS + 3] + lane, mixed);
    Store(sums[SumsOfPS + 4] + lane, u * mixed);
    Store(sums[SumsOfPS + 5] + lane, u * f11 + v * ValueSP(f, 0, 1));
    Store(sums[SumsOfPS + 6] + lane, v * f10);
    Store(sums[SumsOfPS + 7] + lane, uv2 * low2);
    Store(sums[SumsOfPS + 8] + lane, uv2 * (u * low2 + v * ValueSP(f, 1, -1)));
}

AlwaysInline void PutPP(const PairFunction& f, Lanes u, Lanes v, SumRows& sums, int lane) {
    double(*const row)[OuterLanes] = sums + SumsOfPP;
    const Lanes vMinusU = v - u;
    const Lanes uv2 = 2.0 * u * v;
    const Lanes f01 = ValuePP(f, 0, 1);
    const Lanes f10 = ValuePP(f, 1, 0);
    const Lanes f20 = ValuePP(f, 2, 0);
    const Lanes f30 = ValuePP(f, 3, 0);
    const Lanes f11 = ValuePP(f, 1, 1);
    const Lanes f21 = ValuePP(f, 2, 1);
    const Lanes low1 = ValuePP(f, 1, -1);
    const Lanes low2 = ValuePP(f, 2, -1);
    const Lanes low3 = ValuePP(f, 3, -1);
    Store(row[0] + lane, f21);
    Store(row[1] + lane, u * f21 + v * f11);
    Store(row[2] + lane, u * (f11 - f21));
    // the coefficients of (P - A)_j, each also times u
    const Lanes k[5] = {0.5 * (f11 - f21), f30, u * (f30 - f20), u * f30 + v * f20,
                        u * ((u * f30 + vMinusU * f20) - v * f10)};
    // the same with one power of s more, for the angular momentum
    const Lanes low[5] = {0.5 * (f10 - f20), low3, u * (low3 - low2), u * low3 + v * low2,
                          u * ((u * low3 + vMinusU * low2) - v * low1)};
#pragma GCC unroll 5
    for (int i = 0; i < 5; ++i) {
        Store(row[3 + 2 * i] + lane, k[i]);
        Store(row[4 + 2 * i] + lane, u * k[i]);
        Store(row[15 + i] + lane, uv2 * low[i]);
    }
    Store(row[13] + lane, u * ((u * f21 + vMinusU * f11) - v * f01));
    Store(row[14] + lane, ValuePP(f, 0, 2) - ValuePP(f, 1, 2));
    Store(row[20] + lane, v * f20);
    Store(row[21] + lane, (u * v) * (f10 - f20));
    Store(row[22] + lane, u * f20);
    Store(row[23] + lane, u * (u * f20 + v * f10));
    Store(row[24] + lane, f11);
}

static void Reduce(const SumRows& rows, int first, int end, double* sums) {
    for (int i = first; i < end; ++i) {
        double lanes[8];
        for (int j = 0; j < 8; j += LaneCount) {
            Store(lanes + j, Load(rows[i] + j) + Load(rows[i] + j + 8));
        }
        sums[i] = SumOfEight(lanes);
    }
}

static void WeightedSums(const LanePairs& pairs, double* sums) {
    static constexpr int Borders[5] = {SumsOfSS, SumsOfSP, SumsOfPS, SumsOfPP, SumCount};
    SumRows rows;
    for (int part = 0; part < Parts; ++part) {
        const int lane = part * LaneCount;
        const Lanes u = Load(OuterNodes + lane);
        const Lanes v = Load(OuterComplements + lane);
        PairFunction f;
        if (pairs.Moments[0] != nullptr) {
            Prepare(f, pairs, 0, u, v, lane);
            PutSS(f, u, v, rows, lane);
        }
        if (pairs.Moments[1] != nullptr) {
            Prepare(f, pairs, 1, u, v, lane);
            PutSP(f, u, v, rows, lane);
        }
        if (pairs.Moments[2] != nullptr) {
            Prepare(f, pairs, 2, u, v, lane);
            PutPS(f, u, v, rows, lane);
        }
        if (pairs.Moments[3] != nullptr) {
            Prepare(f, pairs, 3, u, v, lane);
            PutPP(f, u, v, rows, lane);
        }
    }
    for (int pair = 0; pair < 4; ++pair) {
        if (pairs.Moments[pair] != nullptr) {
            Reduce(rows, Borders[pair], Borders[pair + 1], sums);
        }
    }
}

constexpr ThreeCentreKernels KernelsOfThisSet = {InnerSums, WeightedSums};

}  // namespace
