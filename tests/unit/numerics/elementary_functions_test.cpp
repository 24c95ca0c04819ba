// SPDX-License-Identifier: MIT
// Tests of the elementary functions against multi-precision values, of their special values, and of their ends of
// ranges.
#include "numerics/elementary_functions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <limits>

namespace {

struct FunctionRow {
    double X;
    double Nearest;
    double Rest;  // of the value, in units of the last place of the nearest double
};

struct PointRow {
    double Y;
    double X;
    double Nearest;
    double Rest;
};

#include "tests/unit/numerics/elementary_reference.inc"

using Function = double (*)(double);

constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double LargestError = 0.501;  // in units of the last place
constexpr double SharePastNearest = 0.01;

double LastPlace(double x) {
    const double size = std::fabs(x);
    return std::nextafter(size, Infinity) - size;
}

// Whether value isn't the nearest double; expects it within LargestError of the exact value.
bool PastNearest(double value, double nearest, double rest) {
    EXPECT_LE(std::fabs((value - nearest) / LastPlace(nearest) - rest), LargestError);
    EXPECT_EQ(std::signbit(value), std::signbit(nearest));
    return value != nearest;
}

template <std::size_t Count> void CompareRows(Function function, const FunctionRow (&rows)[Count]) {
    int past = 0;
    for (const FunctionRow& row : rows) {
        SCOPED_TRACE(row.X);
        past += PastNearest(function(row.X), row.Nearest, row.Rest) ? 1 : 0;
    }
    EXPECT_LE(past, SharePastNearest * static_cast<double>(Count));
}

// The function doesn't fall from one double to the next, hundred of them around x.
void ExpectRising(Function function, double x) {
    double low = x;
    for (int i = 0; i < 50; ++i) {
        low = std::nextafter(low, -Infinity);
    }
    for (int i = 0; i < 100; ++i) {
        const double high = std::nextafter(low, Infinity);
        EXPECT_LE(function(low), function(high)) << low;
        low = high;
    }
}

}  // namespace

TEST(ElementaryFunctions, ExponentialIsTheNearestDouble) {
    CompareRows(Exponential, ExponentialRows);
}

TEST(ElementaryFunctions, LogarithmsAreTheNearestDouble) {
    CompareRows(NaturalLogarithm, NaturalLogarithmRows);
    CompareRows(DecimalLogarithm, DecimalLogarithmRows);
}

TEST(ElementaryFunctions, SineAndCosineAreTheNearestDouble) {
    CompareRows(Sine, SineRows);
    CompareRows(Cosine, CosineRows);
}

TEST(ElementaryFunctions, InverseFunctionsAreTheNearestDouble) {
    CompareRows(ArcSine, ArcSineRows);
    CompareRows(ArcCosine, ArcCosineRows);
    int past = 0;
    for (const PointRow& row : ArcTangent2Rows) {
        SCOPED_TRACE(testing::Message() << row.Y << " over " << row.X);
        past += PastNearest(ArcTangent2(row.Y, row.X), row.Nearest, row.Rest) ? 1 : 0;
    }
    EXPECT_LE(past, SharePastNearest * static_cast<double>(std::size(ArcTangent2Rows)));
}

TEST(ElementaryFunctions, SpecialValuesOfTheExponential) {
    EXPECT_EQ(Exponential(0.0), 1.0);
    EXPECT_EQ(Exponential(-0.0), 1.0);
    EXPECT_EQ(Exponential(Infinity), Infinity);
    EXPECT_EQ(Exponential(709.7827128933841), Infinity);
    EXPECT_EQ(Exponential(1e300), Infinity);
    EXPECT_EQ(Exponential(-Infinity), 0.0);
    EXPECT_EQ(Exponential(-745.1332191019412), 0.0);
    EXPECT_EQ(Exponential(-1e300), 0.0);
    EXPECT_TRUE(std::isnan(Exponential(NaN)));
}

TEST(ElementaryFunctions, SpecialValuesOfTheLogarithms) {
    for (const Function function : {NaturalLogarithm, DecimalLogarithm}) {
        EXPECT_EQ(function(1.0), 0.0);
        EXPECT_FALSE(std::signbit(function(1.0)));
        EXPECT_EQ(function(0.0), -Infinity);
        EXPECT_EQ(function(-0.0), -Infinity);
        EXPECT_EQ(function(Infinity), Infinity);
        EXPECT_TRUE(std::isnan(function(-1.0)));
        EXPECT_TRUE(std::isnan(function(-Infinity)));
        EXPECT_TRUE(std::isnan(function(NaN)));
    }
    EXPECT_EQ(DecimalLogarithm(1000.0), 3.0);
    EXPECT_EQ(DecimalLogarithm(1e22), 22.0);
}

TEST(ElementaryFunctions, SpecialValuesOfSineAndCosine) {
    EXPECT_EQ(Sine(0.0), 0.0);
    EXPECT_FALSE(std::signbit(Sine(0.0)));
    EXPECT_TRUE(std::signbit(Sine(-0.0)));
    EXPECT_EQ(Cosine(0.0), 1.0);
    for (const Function function : {Sine, Cosine}) {
        EXPECT_TRUE(std::isnan(function(Infinity)));
        EXPECT_TRUE(std::isnan(function(-Infinity)));
        EXPECT_TRUE(std::isnan(function(NaN)));
    }
}

TEST(ElementaryFunctions, SpecialValuesOfTheInverseFunctions) {
    const double half = 1.5707963267948966;
    EXPECT_TRUE(std::signbit(ArcSine(-0.0)));
    EXPECT_EQ(ArcSine(1.0), half);
    EXPECT_EQ(ArcSine(-1.0), -half);
    EXPECT_EQ(ArcCosine(1.0), 0.0);
    EXPECT_EQ(ArcCosine(0.0), half);
    EXPECT_EQ(ArcCosine(-1.0), 2.0 * half);
    for (const Function function : {ArcSine, ArcCosine}) {
        EXPECT_TRUE(std::isnan(function(1.0000000000000002)));
        EXPECT_TRUE(std::isnan(function(-Infinity)));
        EXPECT_TRUE(std::isnan(function(NaN)));
    }
    const double sizes[] = {0.0, 1.0, Infinity};
    const double angles[3][3] = {{0.0, 0.0, 0.0}, {half, 0.5 * half, 0.0}, {half, half, 0.5 * half}};
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            const double left = i == 2 && j == 2       ? 2.356194490192345
                                : i == 1 && j == 1     ? 2.356194490192345
                                : angles[i][j] == half ? half
                                                       : 2.0 * half;
            for (const double sign : {1.0, -1.0}) {
                const double right = ArcTangent2(sign * sizes[i], sizes[j]);
                EXPECT_EQ(right, sign * angles[i][j]) << i << j;
                EXPECT_EQ(std::signbit(right), sign < 0.0) << i << j;
                EXPECT_EQ(ArcTangent2(sign * sizes[i], -sizes[j]), sign * (i == 0 ? 2.0 * half : left)) << i << j;
            }
        }
    }
    EXPECT_TRUE(std::isnan(ArcTangent2(NaN, 1.0)));
    EXPECT_TRUE(std::isnan(ArcTangent2(1.0, NaN)));
}

TEST(ElementaryFunctions, RiseAcrossTheSwitchesOfTheTables) {
    const double ln2 = 0.6931471805599453;
    for (int i = -200; i <= 200; ++i) {
        ExpectRising(Exponential, (i + 0.5) * ln2 / 64.0);
    }
    for (int i = 45; i <= 400; ++i) {
        ExpectRising(NaturalLogarithm, (i - 0.5) / 128.0);
        ExpectRising(DecimalLogarithm, (i - 0.5) / 128.0);
    }
    ExpectRising(NaturalLogarithm, 1.4142135623730951);
    for (int i = 0; i < 100; ++i) {
        ExpectRising(Sine, (i + 0.5) / 64.0);
    }
    ExpectRising(Sine, 0.78);
    ExpectRising(Sine, 0.7853981633974483);
    for (int i = 0; i < 64; ++i) {
        ExpectRising(ArcSine, (i - 0.5) / 64.0);
    }
    ExpectRising(ArcSine, 0.7071067811865476);
}
