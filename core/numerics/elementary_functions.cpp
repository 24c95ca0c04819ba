// SPDX-License-Identifier: MIT
// Each function takes its argument apart into the nearest entry of a table and a small rest (P. T. P. Tang, ACM Trans.
// Math. Softw. 15, 144 (1989); 16, 378 (1990)). What counts is carried in pairs of doubles (T. J. Dekker, Numer. Math.
// 18, 224 (1971)), only small corrections in one double, so that the last rounding is nearly the only one.
#include "numerics/elementary_functions.h"

#include "numerics/elementary_tables.h"

#include <bit>
#include <cmath>
#include <limits>

static constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
static constexpr double Infinity = std::numeric_limits<double>::infinity();
static constexpr double RoundingShift = 0x1.8p52;  // added and taken away: the nearest integer
static constexpr double Splitter = 0x1p27 + 1.0;   // multiplied: the upper half of the digits
static constexpr int MantissaBits = 52;
static constexpr int ExponentBias = 1023;
static constexpr std::uint64_t MantissaMask = (std::uint64_t{1} << MantissaBits) - 1;

// High + Low, Low being at most half a unit of the last place of High.
struct DoublePair {
    double High;
    double Low;
};

static DoublePair ExactSum(double a, double b) {
    const double sum = a + b;
    const double part = sum - a;
    return {sum, (a - (sum - part)) + (b - part)};
}

// For |a| >= |b|, or a = 0.
static DoublePair ExactOrderedSum(double a, double b) {
    const double sum = a + b;
    return {sum, b - (sum - a)};
}

static double UpperHalf(double a) {
    const double scaled = a * Splitter;
    return scaled - (scaled - a);
}

static DoublePair ExactProduct(double a, double b) {
    const double product = a * b;
    const double aHigh = UpperHalf(a);
    const double aLow = a - aHigh;
    const double bHigh = UpperHalf(b);
    const double bLow = b - bHigh;
    return {product, ((aHigh * bHigh - product) + aHigh * bLow + aLow * bHigh) + aLow * bLow};
}

static DoublePair Product(DoublePair a, DoublePair b) {
    const DoublePair product = ExactProduct(a.High, b.High);
    return ExactOrderedSum(product.High, product.Low + (a.High * b.Low + a.Low * b.High));
}

static DoublePair Quotient(DoublePair a, DoublePair b) {
    const double quotient = a.High / b.High;
    const DoublePair product = ExactProduct(quotient, b.High);
    const double rest = ((a.High - product.High) - product.Low) + (a.Low - quotient * b.Low);
    return ExactOrderedSum(quotient, rest / b.High);
}

// 2^n, n from -1022 to 1023.
static double PowerOfTwo(int n) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(n + ExponentBias) << MantissaBits);
}

// pair 2^n, pair being from about 1 to 2. A result below the normal numbers is rounded once, beside a number whose last
// place is that of the result.
static double Scaled(DoublePair pair, int n) {
    const int smallest = std::numeric_limits<double>::min_exponent - 1;
    if (n > smallest || (n == smallest && pair.High >= 1.0)) {
        const int half = n / 2;
        return (pair.High + pair.Low) * PowerOfTwo(half) * PowerOfTwo(n - half);
    }
    const double base = PowerOfTwo(smallest - n);
    const DoublePair sum = ExactOrderedSum(base, pair.High);
    const double rounded = (sum.High + (sum.Low + pair.Low)) - base;
    return rounded * PowerOfTwo(n / 2) * PowerOfTwo(n - n / 2);
}

double Exponential(double x) {
    if (!(x > -746.0)) {
        return x <= -746.0 ? 0.0 : x;
    }
    if (x > 710.0) {
        return Infinity;
    }
    // x = steps ln(2)/64 + rest; the first two products are exact (W. J. Cody, W. Waite, Software Manual for the
    // Elementary Functions, 1980).
    const double steps = (x * ExponentialScale + RoundingShift) - RoundingShift;
    const DoublePair rest = ExactSum(x - steps * ExponentialStep[0], -(steps * ExponentialStep[1]));
    const double r = rest.High;
    const double tail = rest.Low - steps * ExponentialStep[2];
    const double terms = 1.0 / 6.0 + r * (1.0 / 24.0 + r * (1.0 / 120.0 + r * (1.0 / 720.0 + r * (1.0 / 5040.0))));
    const double small = tail + r * r * (0.5 + r * terms);
    const int number = static_cast<int>(steps);
    const int index = number & 63;
    const double* power = ExponentialTable[index];
    const DoublePair product = ExactProduct(power[0], r);
    const DoublePair sum = ExactOrderedSum(power[0], product.High);
    const double low = sum.Low + (product.Low + power[1] + power[1] * r + power[0] * small);
    return Scaled(ExactOrderedSum(sum.High, low), (number - index) / 64);
}

// ln(x) of a positive finite x, not rounded to one double.
static DoublePair LogarithmPair(double x) {
    const double smallest = std::numeric_limits<double>::min();
    const double normal = x < smallest ? x * 0x1p54 : x;
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(normal);
    int exponent = static_cast<int>(bits >> MantissaBits) - ExponentBias - (x < smallest ? 54 : 0);
    double z = std::bit_cast<double>((bits & MantissaMask) | std::bit_cast<std::uint64_t>(1.0));
    if (z > 1.4142135623730951) {
        z *= 0.5;
        ++exponent;
    }
    // z/c = 1 + rest: the table's 1/c is so short that its products with the halves of z are exact.
    const double* entry = LogarithmTable[static_cast<int>(z * 128.0 + 0.5) - FirstLogarithm];
    const double zHigh = UpperHalf(z);
    const DoublePair rest = ExactSum(zHigh * entry[0] - 1.0, (z - zHigh) * entry[0]);
    const double r = rest.High;
    const DoublePair square = ExactProduct(r, r);
    const double terms =
        1.0 / 3.0 +
        r * (-1.0 / 4.0 +
             r * (1.0 / 5.0 + r * (-1.0 / 6.0 + r * (1.0 / 7.0 + r * (-1.0 / 8.0 + r * (1.0 / 9.0 - r / 10.0))))));
    const DoublePair sum1 = ExactSum(exponent * Ln2[0], entry[1]);
    const DoublePair sum2 = ExactSum(sum1.High, r);
    const DoublePair sum3 = ExactSum(sum2.High, -0.5 * square.High);
    const double small = (exponent * Ln2[1] + entry[2]) + (rest.Low - r * rest.Low - 0.5 * square.Low);
    return ExactOrderedSum(sum3.High, (sum1.Low + sum2.Low + sum3.Low) + (small + r * square.High * terms));
}

double NaturalLogarithm(double x) {
    if (!(x > 0.0) || x == Infinity) {
        return x == 0.0 ? -Infinity : x < 0.0 ? NaN : x;
    }
    const DoublePair logarithm = LogarithmPair(x);
    return logarithm.High + logarithm.Low;
}

double DecimalLogarithm(double x) {
    if (!(x > 0.0) || x == Infinity) {
        return NaturalLogarithm(x);
    }
    const DoublePair logarithm = Product(LogarithmPair(x), {InverseLn10High, InverseLn10Low});
    return logarithm.High + logarithm.Low;
}

// An angle as a number of quarter turns, of which the last two binary digits are kept, and a rest.
struct ReducedAngle {
    int Quarters;
    DoublePair Rest;
};

// x 2/pi in integers (M. H. Payne, R. N. Hanek, SIGNUM Newsl. 18, 19 (1983)). Words of 2/pi that make only multiples
// of four quarter turns are left out, and so are those too small to count beside a rest of 2^-62.
static ReducedAngle ReduceAngle(double x) {
    constexpr int words = 7;
    constexpr int limbs = words + 2;
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(x);
    const std::uint64_t mantissa = (bits & MantissaMask) | (MantissaMask + 1);
    const int exponent = static_cast<int>(bits >> MantissaBits) - ExponentBias - MantissaBits;
    const int first = exponent < 2 ? 0 : (exponent - 2) / 32;
    std::uint32_t product[limbs] = {};  // the lowest first
    for (int half = 0; half < 2; ++half) {
        const std::uint64_t factor = half == 0 ? mantissa & 0xffffffffu : mantissa >> 32;
        std::uint64_t carry = 0;
        for (int i = 0; i < words; ++i) {
            carry += product[i + half] + factor * TwoOverPi[first + words - 1 - i];
            product[i + half] = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
        product[words + half] = static_cast<std::uint32_t>(carry);
    }
    const int point = 32 * (first + words) - exponent;  // this many digits of the product are behind the point
    const auto digits = [&](int position) {             // 32 digits from this one on
        const int limb = position / 32;
        const std::uint64_t upper = limb + 1 < limbs ? product[limb + 1] : 0;
        const std::uint64_t lower = limb < limbs ? product[limb] : 0;
        return static_cast<std::uint32_t>(((upper << 32) | lower) >> (position % 32));
    };
    const bool above = (digits(point - 1) & 1u) != 0;  // a half: the rest is counted down from the next quarter
    const int quarters = static_cast<int>(digits(point) & 3u) + (above ? 1 : 0);
    DoublePair fraction = {0.0, 0.0};
    double scale = 0x1p-32;
    for (int position = point - 32; position >= 0; position -= 32) {
        const std::uint32_t word = above ? ~digits(position) : digits(position);
        const DoublePair sum = ExactOrderedSum(fraction.High, word * scale);
        fraction = {sum.High, fraction.Low + sum.Low};
        scale *= 0x1p-32;
    }
    fraction = ExactOrderedSum(fraction.High, fraction.Low);
    if (above) {
        fraction = {-fraction.High, -fraction.Low};
    }
    return {quarters & 3, Product(fraction, {HalfPiHigh, HalfPiLow})};
}

// a - c. The difference of the upper parts isn't always a double: not where a is just below half of c.
static DoublePair Less(DoublePair a, double c) {
    const DoublePair difference = ExactSum(a.High, -c);
    return ExactSum(difference.High, difference.Low + a.Low);
}

// a cos(d) + b sin(d) for d up to 1/128.
static double AngleSum(DoublePair a, DoublePair b, DoublePair d) {
    const double square = d.High * d.High;
    const double cosine = square * (-0.5 + square * (1.0 / 24.0 - square * (1.0 / 720.0)));
    const double sine = d.High * square * (-1.0 / 6.0 + square * (1.0 / 120.0 - square * (1.0 / 5040.0)));
    const DoublePair product = ExactProduct(b.High, d.High);
    const DoublePair sum = ExactSum(a.High, product.High);
    const double low = product.Low + a.Low + (b.Low * d.High + b.High * d.Low);
    return sum.High + (sum.Low + (low + (a.High * cosine + b.High * sine)));
}

// Sine of the angle and of so many quarter turns more.
static double SineOfTurned(double x, int turns) {
    if (!std::isfinite(x)) {
        return NaN;
    }
    const double size = std::fabs(x);
    ReducedAngle angle = {0, {size, 0.0}};
    if (size > 0.78) {
        angle = ReduceAngle(size);
    }
    const bool negative = angle.Rest.High < 0.0;
    const DoublePair rest = negative ? DoublePair{-angle.Rest.High, -angle.Rest.Low} : angle.Rest;
    const int index = static_cast<int>(rest.High * 64.0 + 0.5);
    const double* entry = SineTable[index];
    const DoublePair d = Less(rest, index / 64.0);
    const int quarters = (angle.Quarters + turns) & 3;
    // After an even number of quarters it is a sine, which is odd in the rest.
    const double value = quarters % 2 == 0 ? AngleSum({entry[0], entry[1]}, {entry[2], entry[3]}, d)
                                           : AngleSum({entry[2], entry[3]}, {-entry[0], -entry[1]}, d);
    const bool turned = (quarters >= 2) != (quarters % 2 == 0 && negative);
    return turned ? -value : value;
}

double Sine(double x) {
    if (x == 0.0) {
        return x;
    }
    const double value = SineOfTurned(x, 0);
    return x < 0.0 ? -value : value;
}

double Cosine(double x) {
    return SineOfTurned(x, 1);
}

// The angle whose tangent is y/x, 0 <= y <= x, both within 2^60 of each other.
static DoublePair SmallAngle(DoublePair y, DoublePair x) {
    const DoublePair tangent = Quotient(y, x);
    const int index = static_cast<int>(tangent.High * 64.0 + 0.5);
    const double c = index / 64.0;
    const DoublePair above = Less(tangent, c);
    const DoublePair product = ExactProduct(tangent.High, c);
    const DoublePair below = ExactOrderedSum(1.0, product.High);
    const DoublePair t = Quotient(above, {below.High, below.Low + (product.Low + tangent.Low * c)});
    const double square = t.High * t.High;
    const double terms = -1.0 / 3.0 + square * (1.0 / 5.0 - square * (1.0 / 7.0 - square * (1.0 / 9.0)));
    const DoublePair sum = ExactSum(ArcTangentTable[index][0], t.High);
    return ExactOrderedSum(sum.High, sum.Low + (t.Low + ArcTangentTable[index][1] + t.High * square * terms));
}

// So many quarter turns less the angle.
static DoublePair Complement(double quarters, DoublePair angle) {
    const DoublePair sum = ExactOrderedSum(quarters * HalfPiHigh, -angle.High);
    return ExactOrderedSum(sum.High, sum.Low + (quarters * HalfPiLow - angle.Low));
}

// The angle of the point (x, y), y >= 0.
static double AngleOfPoint(DoublePair x, DoublePair y) {
    const bool left = x.High < 0.0;
    const DoublePair across = left ? DoublePair{-x.High, -x.Low} : x;
    const bool steep = y.High > across.High;
    const DoublePair angle = steep ? Complement(1.0, SmallAngle(across, y)) : SmallAngle(y, across);
    const DoublePair whole = left ? Complement(2.0, angle) : angle;
    return whole.High + whole.Low;
}

double ArcTangent2(double y, double x) {
    if (std::isnan(x) || std::isnan(y)) {
        return NaN;
    }
    if (std::isinf(x) || std::isinf(y)) {
        x = std::copysign(std::isinf(x) ? 1.0 : 0.0, x);
        y = std::copysign(std::isinf(y) ? 1.0 : 0.0, y);
    }
    const double largest = std::fmax(std::fabs(x), std::fabs(y));
    const double smallest = std::fmin(std::fabs(x), std::fabs(y));
    if (smallest <= largest * 0x1p-60) {  // no angle to the nearer axis, or one that is its tangent
        const double axis = std::fabs(y) > std::fabs(x) ? HalfPiHigh : 2.0 * HalfPiHigh;
        const bool ahead = axis > 2.0 && !std::signbit(x);
        return std::copysign(!ahead ? axis : y == 0.0 ? 0.0 : std::fabs(y / x), y);
    }
    // Into the middle of the range, where products neither overflow nor lose digits.
    const double scale = largest > 0x1p500 ? 0x1p-600 : largest < 0x1p-400 ? 0x1p600 : 1.0;
    return std::copysign(AngleOfPoint({x * scale, 0.0}, {std::fabs(y) * scale, 0.0}), y);
}

// sqrt(1 - x^2)
static DoublePair OtherSide(double x) {
    const DoublePair square = Product(ExactSum(1.0, -x), ExactSum(1.0, x));
    const double root = std::sqrt(square.High);
    const DoublePair product = ExactProduct(root, root);
    return {root, (((square.High - product.High) - product.Low) + square.Low) / (2.0 * root)};
}

double ArcSine(double x) {
    if (!(std::fabs(x) < 1.0) || std::fabs(x) < 0x1p-28) {
        return std::fabs(x) == 1.0 ? std::copysign(HalfPiHigh, x) : std::fabs(x) < 1.0 ? x : NaN;
    }
    return std::copysign(AngleOfPoint(OtherSide(x), {std::fabs(x), 0.0}), x);
}

double ArcCosine(double x) {
    if (!(std::fabs(x) < 1.0) || std::fabs(x) < 0x1p-60) {
        return x == 1.0 ? 0.0 : x == -1.0 ? 2.0 * HalfPiHigh : std::fabs(x) < 1.0 ? HalfPiHigh : NaN;
    }
    return AngleOfPoint({x, 0.0}, OtherSide(x));
}
