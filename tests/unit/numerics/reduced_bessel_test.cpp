// SPDX-License-Identifier: MIT
// Tests of the reduced Bessel functions x^n K_n(x).
#include "ground/run_state.h"
#include "numerics/decaying_exponential.h"
#include "numerics/reduced_bessel.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <cmath>

// The published bounds: 1e-8 absolute below 2; about 2e-7 of sqrt(x) e^x K above.
static constexpr double PolynomialTolerance = 3e-7;

namespace {

struct Row {
    double X;
    double Values[5];  // x^n K_n(x), from multi-precision arithmetic
};

const Row Rows[] = {
    {0.001, {7.023688800562381, 0.9999962381560856, 1.999999500000972, 7.999999000000125, 47.99999600000025}},
    {0.1, {2.427069024702017, 0.9853844780870606, 1.995039646421141, 7.990012430465436, 47.96002497925683}},
    {0.5, {0.9244190712276659, 0.8282205600016504, 1.887545887810217, 7.757238691241282, 47.01531861940025}},
    {1.0, {0.4210244382407083, 0.6019072301972346, 1.624838898635177, 7.101262824737945, 44.23241584706284}},
    {1.7, {0.1654963180569965, 0.3559162299469402, 1.1901168190786, 5.789065180861059, 38.17382869230351}},
    {1.999, {0.1140338305892329, 0.2799596343121423, 1.01559856969269, 5.181113257441714, 35.14501244474084}},
    {2.0, {0.1138938727495334, 0.2797317636330449, 1.015039018264223, 5.179083127589073, 35.13465483859133}},
    {2.001, {0.1137540987366846, 0.2795040587918368, 1.014479642679458, 5.177053101624404, 35.12429611351461}},
    {2.5, {0.06234755320036619, 0.1847270408693677, 0.759126289241024, 4.191049162397644, 29.89083428214226}},
    {4.0, {0.01115967608585302, 0.04993399554907373, 0.2784228084717958, 1.912635162672363, 15.93057591158291}},
    {7.3, {0.0003083622130609317, 0.002400546576525582, 0.02123371548706822, 0.2128599890113211, 2.408704632373792}},
    {15.0,
     {9.819536482396435e-8, 1.521259405464314e-6, 2.513647589632061e-5, 0.000442829269814753, 0.008312682695560654}},
    {40.0,
     {8.392861100099567e-19, 3.398852781944415e-17, 1.410834831654819e-15, 6.002498383772992e-14,
      2.61748563367409e-12}},
    {80.0,
     {2.525119842505472e-36, 2.032682502016936e-34, 1.656730349243841e-32, 1.367186015260593e-30,
      1.142338584431694e-28}},
    {159.0,
     {8.794241627299306e-71, 1.40267466890293e-68, 2.251325719175596e-66, 3.636154859220522e-64,
      5.909745842201056e-62}},
};

}  // namespace

// Reference: multi-precision values on both sides of x = 2 and up to the limit.
TEST(ReducedBessel, StoredValues) {
    for (const Row& row : Rows) {
        for (int n = 0; n < 5; ++n) {
            EXPECT_NEAR(ReducedBessel(n, row.X) / row.Values[n], 1.0, PolynomialTolerance) << n << " " << row.X;
        }
    }
}

// Property: the polynomials are the published ones, to the last printed digit; x = 2 belongs to the upper range.
TEST(ReducedBessel, PolynomialsAtTheirBorders) {
    const double i0 = 1.0 + 3.5156229 * std::pow(1.0 / 3.75, 2) + 3.0899424 * std::pow(1.0 / 3.75, 4) +
                      1.2067492 * std::pow(1.0 / 3.75, 6) + 0.2659732 * std::pow(1.0 / 3.75, 8) +
                      0.0360768 * std::pow(1.0 / 3.75, 10) + 0.0045813 * std::pow(1.0 / 3.75, 12);
    const double k0 = std::log(2.0) * i0 - 0.57721566 + 0.42278420 / 4 + 0.23069756 / 16 + 0.03488590 / 64 +
                      0.00262698 / 256 + 0.00010750 / 1024 + 0.00000740 / 4096;
    EXPECT_NEAR(ReducedBessel(0, 1.0), k0, 1e-15);
    const double sum0 = 1.25331414 - 0.07832358 + 0.02189568 - 0.01062446 + 0.00587872 - 0.00251540 + 0.00053208;
    const double sum1 = 1.25331414 + 0.23498619 - 0.03655620 + 0.01504268 - 0.00780353 + 0.00325614 - 0.00068245;
    EXPECT_NEAR(ReducedBessel(0, 2.0), std::exp(-2.0) / std::sqrt(2.0) * sum0, 1e-15);
    EXPECT_NEAR(ReducedBessel(1, 2.0), std::exp(-2.0) * std::sqrt(2.0) * sum1, 1e-15);
}

// Property: the upward recurrence, exactly.
TEST(ReducedBessel, Recurrence) {
    for (const double x : {0.3, 1.9, 2.0, 47.5}) {
        for (int n = 2; n <= 6; ++n) {
            const double expected = x * x * ReducedBessel(n - 2, x) + 2.0 * (n - 1) * ReducedBessel(n - 1, x);
            EXPECT_EQ(ReducedBessel(n, x), expected) << n;
        }
    }
}

TEST(ReducedBessel, NothingFromTheLimitOn) {
    EXPECT_GT(ReducedBessel(0, 159.99), 0.0);
    EXPECT_EQ(ReducedBessel(0, 160.0), 0.0);
    EXPECT_EQ(ReducedBessel(4, 160.0), 0.0);
    EXPECT_EQ(ReducedBessel(2, 1e6), 0.0);
}

// Property: one line for each call, and the result is 0.
TEST(ReducedBessel, NoughtAndBelowAreLogged) {
    const TemporaryDirectory directory;
    UseFilesIn(directory.Path);
    ::Run.Report.LogEnabled = 1;
    EXPECT_EQ(ReducedBessel(0, 0.0), 0.0);
    EXPECT_EQ(ReducedBessel(3, -1.0), 0.0);
    EXPECT_EQ(ReadText(::Run.Job.LogFilePath), "x is negative in rk()\nx is negative in rk()\n");
    ResetRun();
}

// Reference: the library's exponential, good to half a unit in the last place.
TEST(ReducedBessel, Exponential) {
    for (double x = 0.0; x < 699.0; x += 0.0917) {
        EXPECT_NEAR(DecayingExponential(x) / std::exp(-x), 1.0, 1e-15) << x;
    }
    EXPECT_EQ(DecayingExponential(0.0), 1.0);
}
