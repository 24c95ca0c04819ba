// SPDX-License-Identifier: MIT
// Exact spectra against closed formulas of small systems.
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

// Frequencies and intensities are stored in 32 bits: at 1000 Hz a unit in the last place is 6e-5 Hz, and a
// merged line stands at its lowest member, less than 0.001 Hz from the others.
static constexpr double FrequencyTolerance = 1.5e-3;
static constexpr double IntensityTolerance = 2e-6;  // relative to the total: a dozen 32-bit additions

struct ExpectedLine {
    double Frequency;  // Hz
    double Intensity;  // relative
};

static void ExpectSpectrum(const std::vector<SpectrumLine>& lines, std::vector<ExpectedLine> expected) {
    std::sort(expected.begin(), expected.end(),
              [](const ExpectedLine& a, const ExpectedLine& b) { return a.Frequency < b.Frequency; });
    ASSERT_EQ(lines.size(), expected.size());
    double total = 0.0;
    for (const ExpectedLine& line : expected) {
        total += line.Intensity;
    }
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_NEAR(static_cast<double>(lines[i].Frequency), expected[i].Frequency, FrequencyTolerance) << i;
        EXPECT_NEAR(static_cast<double>(lines[i].Intensity), expected[i].Intensity, IntensityTolerance * total) << i;
    }
}

static SpinSystem Groups(const std::vector<int>& isotopes, const std::vector<int>& nuclei,
                         const std::vector<double>& shifts, const std::vector<double>& upper) {
    SpinSystem system = LikeSpins(shifts, upper);
    system.Isotopes = isotopes;
    system.Nuclei = nuclei;
    return system;
}

TEST(ExactSpectrum, OneNucleus) {
    const auto lines = Simulate(LikeSpins({1.25}, {}));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].Frequency, 125.0f);
    EXPECT_EQ(lines[0].Intensity, 1.0f);
    EXPECT_EQ(lines[0].Degeneracy, 1);
}

TEST(ExactSpectrum, GroupOfTwoIsOneLineOfFour) {
    const auto lines = Simulate(Groups({1}, {2}, {1.25}, {}));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].Frequency, 125.0f);
    EXPECT_NEAR(static_cast<double>(lines[0].Intensity), 4.0, 1e-6);
    EXPECT_EQ(lines[0].Degeneracy, 2);
}

TEST(ExactSpectrum, GroupOfNoNucleiHasNoLine) {
    EXPECT_EQ(Simulate(Groups({1}, {0}, {1.25}, {})).size(), 0u);
    EXPECT_EQ(Simulate(Groups({1, 1}, {0, 1}, {1.25, 2.5}, {7.0})).size(), 1u);
}

// Property: the four lines of AB. Set-up: shifts of 1.0 and 1.2 ppm at 100 MHz, J = 10 Hz. With C = sqrt(D^2
// + J^2) / 2 (D the distance of the shifts) they lie at the centre +- J/2 +- C, the inner ones with intensity
// 1 + J/2C, the outer ones with 1 - J/2C, as the 2 x 2 secular equation gives.
TEST(ExactSpectrum, FourLinesOfAB) {
    for (const double coupling : {10.0, -10.0, 0.5, 60.0}) {
        const double c = 0.5 * std::hypot(20.0, coupling);
        const double lean = coupling / (2.0 * c);
        ExpectSpectrum(Simulate(LikeSpins({1.0, 1.2}, {coupling})), {{110.0 - 0.5 * coupling - c, 1.0 - lean},
                                                                     {110.0 + 0.5 * coupling - c, 1.0 + lean},
                                                                     {110.0 - 0.5 * coupling + c, 1.0 + lean},
                                                                     {110.0 + 0.5 * coupling + c, 1.0 - lean}});
    }
}

// Property: two equal shifts give one line at the shift, however strong the coupling: the singlet is cut off.
TEST(ExactSpectrum, TwoEqualShiftsGiveOneLine) {
    const auto lines = Simulate(LikeSpins({1.0, 1.0}, {10.0}));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NEAR(static_cast<double>(lines[0].Frequency), 100.0, FrequencyTolerance);
    EXPECT_NEAR(static_cast<double>(lines[0].Intensity), 4.0, 1e-5);
}

// Property: unlike isotopes couple to first order only, whatever the coupling: A a 1:2:1 triplet, X a
// doublet, at full precision. Intensities: 2^2 states of X2 and A's single transition; X2 transitions 4 for
// each of A's two states.
TEST(ExactSpectrum, UnlikeIsotopesCoupleToFirstOrder) {
    ExpectSpectrum(Simulate(Groups({1, 19}, {1, 2}, {1.0, 1.5}, {44.0})),
                   {{100.0 - 44.0, 1.0}, {100.0, 2.0}, {100.0 + 44.0, 1.0}, {150.0 - 22.0, 4.0}, {150.0 + 22.0, 4.0}});
}

// Property: the nine lines of A2B, of them eight strong, and the combination line. Set-up: A2 at 1.1 ppm, B
// at 1.0 ppm, J = 6 Hz at 100 MHz. The symmetric states have the blocks 1, 2, 2, 1 and the antisymmetric ones
// the free B line; the 2 x 2 blocks in the basis |1,-> |0,+> and |0,-> |-1,+> are solved here in closed form.
TEST(ExactSpectrum, NineLinesOfA2B) {
    const double a = 110.0;
    const double b = 100.0;
    const double j = 6.0;
    const double r = std::sqrt(0.5);
    const double flip = j * r;
    const double top = a + 0.5 * b + 0.5 * j;
    const double bottom = -a - 0.5 * b + 0.5 * j;
    struct Pair {
        double Energy[2];
        double Vector[2][2];
    };
    const auto solve = [flip](double first, double second) {
        const double angle = 0.5 * std::atan2(2.0 * flip, first - second);
        const double mean = 0.5 * (first + second);
        const double half = std::hypot(0.5 * (first - second), flip);
        return Pair{{mean + half, mean - half},
                    {{std::cos(angle), std::sin(angle)}, {-std::sin(angle), std::cos(angle)}}};
    };
    const Pair up = solve(a - 0.5 * b - 0.5 * j, 0.5 * b);      // |1,-1/2> and |0,+1/2>
    const Pair down = solve(-0.5 * b, -a + 0.5 * b - 0.5 * j);  // |0,-1/2> and |-1,+1/2>
    const double s = std::sqrt(2.0);
    std::vector<ExpectedLine> lines = {{b, 1.0}};  // of the antisymmetric states
    for (int i = 0; i < 2; ++i) {
        const double fromTop = up.Vector[i][0] + s * up.Vector[i][1];
        lines.push_back({top - up.Energy[i], fromTop * fromTop});
        const double toBottom = s * down.Vector[i][0] + down.Vector[i][1];
        lines.push_back({down.Energy[i] - bottom, toBottom * toBottom});
        for (int k = 0; k < 2; ++k) {
            // lowering |1,-> gives s |0,->; lowering |0,+> gives s |-1,+> and |0,->
            const double t =
                up.Vector[i][0] * s * down.Vector[k][0] + up.Vector[i][1] * (s * down.Vector[k][1] + down.Vector[k][0]);
            lines.push_back({up.Energy[i] - down.Energy[k], t * t});
        }
    }
    const auto found = Simulate(Groups({1, 1}, {2, 1}, {1.1, 1.0}, {j}));
    ExpectSpectrum(found, lines);
    EXPECT_NEAR(TotalIntensity(found), 12.0, 1e-5);
}

// Property: AX2 at the limit of weak coupling. Set-up: J = 0.01 Hz at a distance of 1000 Hz, so that
// second-order shifts (J^2/D = 1e-7 Hz) and leans (J/D = 1e-5) lie under the tolerance of this test.
TEST(ExactSpectrum, TripletAndDoubletOfAX2) {
    const auto lines = Simulate(Groups({1, 1}, {1, 2}, {1.0, 11.0}, {0.01}));
    ASSERT_EQ(lines.size(), 5u);
    static constexpr double Frequencies[] = {99.99, 100.0, 100.01, 1099.995, 1100.005};
    static constexpr double Intensities[] = {1.0, 2.0, 1.0, 4.0, 4.0};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_NEAR(static_cast<double>(lines[i].Frequency), Frequencies[i], FrequencyTolerance);
        EXPECT_NEAR(static_cast<double>(lines[i].Intensity), Intensities[i], 4e-5 * Intensities[i]);
    }
}

// On purpose only the upper triangle of the couplings counts, and never the diagonal.
TEST(ExactSpectrum, LowerTriangleAndDiagonalDoNotCount) {
    SpinSystem system = LikeSpins({1.0, 1.2}, {10.0});
    const auto expected = Simulate(system);
    system.Couplings = {77.0, 10.0, -3.0, 55.0};
    const auto lines = Simulate(system);
    ASSERT_EQ(lines.size(), expected.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].Frequency, expected[i].Frequency);
        EXPECT_EQ(lines[i].Intensity, expected[i].Intensity);
    }
}

// The exact simulator never falls back: equal shifts, which the approximation refuses, are no special case
// here.
TEST(ExactSpectrum, EqualShiftsAndCouplingsOfThree) {
    const auto lines = Simulate(LikeSpins({1.0, 1.0, 1.0}, {5.0, 5.0, 5.0}));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NEAR(static_cast<double>(lines[0].Frequency), 100.0, FrequencyTolerance);
    EXPECT_NEAR(static_cast<double>(lines[0].Intensity), 12.0, 2e-5);
}
