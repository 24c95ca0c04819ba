// SPDX-License-Identifier: MIT
// The weak-coupling approximation against its closed formulas, its warning and its refusal.
#include "numerics/factorial.h"
#include "spectrum/line_list.h"
#include "spectrum/spin_system.h"
#include "spectrum/weak_coupling_spectrum.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

// Direct arithmetic in doubles, stored in 32 bits: half a unit in the last place of a frequency under 2048 Hz
// is 6e-5.
static constexpr double FrequencyTolerance = 6.2e-5;
static constexpr double IntensityTolerance = 1.2e-7;  // relative

static SpinSystem Weak(SpinSystem system) {
    system.Weak = 1;
    return system;
}

static void ExpectLine(const SpectrumLine& line, double frequency, double intensity, int degeneracy) {
    EXPECT_NEAR(static_cast<double>(line.Frequency), frequency, FrequencyTolerance);
    EXPECT_NEAR(static_cast<double>(line.Intensity), intensity, IntensityTolerance * intensity);
    EXPECT_EQ(line.Degeneracy, degeneracy);
}

TEST(WeakCoupling, OneNucleus) {
    const auto lines = Simulate(Weak(LikeSpins({1.25}, {})));
    ASSERT_EQ(lines.size(), 1u);
    ExpectLine(lines[0], 125.0, 1.0, 1);
}

// Property: one group is one line; its intensity is the sum of P W over all spins and transitions, n 2^(n-1),
// and its degeneracy the number of transitions, each with its multiplicity. Tolerance: n 32-bit additions,
// and ten-digit factorials from n = 16 on.
TEST(WeakCoupling, OneGroupIsOneLine) {
    for (const int n : {2, 3, 4, 8, 15, 24}) {
        SpinSystem system = Weak(LikeSpins({1.25}, {}));
        system.Nuclei = {n};
        const auto lines = Simulate(system);
        ASSERT_EQ(lines.size(), 1u) << n;
        EXPECT_EQ(lines[0].Frequency, 125.0f);
        EXPECT_NEAR(static_cast<double>(lines[0].Intensity) / (n * std::ldexp(1.0, n - 1)), 1.0, 3e-6) << n;
        int transitions = 0;
        for (int twoJ = n; twoJ > 0; twoJ -= 2) {
            transitions += twoJ * static_cast<int>(GroupSpinMultiplicity(n, twoJ) + 0.01);
        }
        EXPECT_EQ(lines[0].Degeneracy, transitions) << n;
    }
}

// Property: nu +- c/2 + c^2/(4 Delta) with intensities 1 -+ c/Delta, for both groups with the sign of Delta.
TEST(WeakCoupling, TwoLikeNuclei) {
    const double c = 10.0;
    const double delta = 100.0;
    const auto lines = Simulate(Weak(LikeSpins({2.0, 1.0}, {c})));
    ASSERT_EQ(lines.size(), 4u);
    ExpectLine(lines[0], 100.0 - c / 2 - c * c / (4 * delta), 1.0 - c / delta, 1);
    ExpectLine(lines[1], 100.0 + c / 2 - c * c / (4 * delta), 1.0 + c / delta, 1);
    ExpectLine(lines[2], 200.0 - c / 2 + c * c / (4 * delta), 1.0 + c / delta, 1);
    ExpectLine(lines[3], 200.0 + c / 2 + c * c / (4 * delta), 1.0 - c / delta, 1);
}

TEST(WeakCoupling, TwoUnlikeNuclei) {
    SpinSystem system = Weak(LikeSpins({2.0, 1.0}, {10.0}));
    system.Isotopes = {1, 13};
    const auto lines = Simulate(system);
    ASSERT_EQ(lines.size(), 4u);
    ExpectLine(lines[0], 95.0, 1.0, 1);
    ExpectLine(lines[1], 105.0, 1.0, 1);
    ExpectLine(lines[2], 195.0, 1.0, 1);
    ExpectLine(lines[3], 205.0, 1.0, 1);
}

// Property: the lines of a single nucleus beside a group of two, from the second-order terms worked out by
// hand: spectator J = 1, m = 1, 0, -1 and upper level M = 1/2 give m c + [m + 2 - m(m+1)] c^2 / (2 Delta),
// i.e. c + c^2/2D, 2 c^2/2D = c^2/D, -c + c^2/2D; J = 0 gives no shift. Intensities 1 - 2 m c/D.
TEST(WeakCoupling, SingleNucleusBesideAGroupOfTwo) {
    const double c = 8.0;
    const double d = 200.0;
    SpinSystem system = Weak(LikeSpins({3.0, 1.0}, {c}));
    system.Nuclei = {1, 2};
    const auto lines = Simulate(system);
    ASSERT_GE(lines.size(), 4u);
    const std::size_t first = lines.size() - 4;
    ExpectLine(lines[first], 300.0 - c + c * c / (2 * d), 1.0 + 2 * c / d, 1);
    ExpectLine(lines[first + 1], 300.0, 1.0, 1);
    ExpectLine(lines[first + 2], 300.0 + c * c / d, 1.0, 1);
    ExpectLine(lines[first + 3], 300.0 + c + c * c / (2 * d), 1.0 - 2 * c / d, 1);
}

// A line whose corrected intensity is negative is pruned, and nothing tells.
TEST(WeakCoupling, NegativeIntensitiesAreDropped) {
    const auto lines = Simulate(Weak(LikeSpins({1.2, 1.0}, {30.0})));  // c/Delta = 1.5
    EXPECT_EQ(lines.size(), 2u);
    EXPECT_NEAR(TotalIntensity(lines), 5.0, 1e-5);
}

struct WeakRun {
    int ExitCode;
    std::string Output;
    std::string Log;
};

static WeakRun RunWeak(const SpinSystem& system) {
    TemporaryDirectory work;
    WeakRun run;
    run.ExitCode = ExitCodeOfChild([&] {
        UseFilesIn(work.Path);
        Simulate(Weak(system));
    });
    run.Output = ReadText(work.Path + "/nmrspect.out");
    run.Log = ReadText(work.Path + "/run.log");
    return run;
}

static constexpr char Doubt[] = "Weak coupling approximation may not be reliable, it may be fixed by "
                                "increasing the Spectrometer Frequency in the "
                                "Spectral Options dialog box.\n";

// On purpose neither couplings nor isotopes matter.
TEST(WeakCoupling, EqualShiftsAreRefused) {
    SpinSystem system = LikeSpins({1.2345, 2.0, 1.2345}, {0.0, 0.0, 0.0});
    system.Isotopes = {1, 1, 31};
    const WeakRun run = RunWeak(system);
    EXPECT_EQ(run.ExitCode, 0);
    EXPECT_EQ(run.Output,
              "ERRMSG: Weak coupling approximation cannot be applied, because the chemical shifts 1.2350000 "
              "and 1.2350000 are so close.\n");
    EXPECT_EQ(run.Log, "(no file)");
}

TEST(WeakCoupling, ThousandthOfAPpmIsDistanceEnough) {
    EXPECT_EQ(RunWeak(LikeSpins({1.0, 1.001}, {0.0})).Output, "(no file)");
}

// Of several refused pairs the first in the order of rows is named. Group 1 and 4 come before 2 and 3.
TEST(WeakCoupling, FirstClosePairIsNamed) {
    const WeakRun run = RunWeak(LikeSpins({4.0, 2.0, 2.0, 4.0}, {0, 0, 0, 0, 0, 0}));
    EXPECT_NE(run.Output.find("4.0000000 and 4.0000000"), std::string::npos) << run.Output;
}

// Property: a ratio of exactly 10 sets no flag. Set-up: 0.125 MHz ppm-spaced shifts are exact in binary:
// shifts 1 and 2 at 100 MHz are 100 Hz apart, J = 1000 Hz. The next thousandth does set it.
TEST(WeakCoupling, RatioOfTenIsNoWarning) {
    EXPECT_EQ(RunWeak(LikeSpins({2.0, 1.0}, {1000.0})).Log.find(Doubt), std::string::npos);
    EXPECT_EQ(RunWeak(LikeSpins({2.0, 1.0}, {1000.001})).Log.find(Doubt), 0u);
    EXPECT_EQ(RunWeak(LikeSpins({2.0, 1.0}, {-1000.001})).Log.find(Doubt), 0u);
}

// On purpose the ratio is that of the largest coupling of the system: here the close pair isn't coupled at
// all.
TEST(WeakCoupling, LargestCouplingOfTheSystemCounts) {
    EXPECT_EQ(RunWeak(LikeSpins({1.0, 1.01, 9.0}, {0.0, 0.0, 11.0})).Log.find(Doubt), 0u);
}

// Every pair of the three is doubtful.
TEST(WeakCoupling, DoubtOfSeveralPairsIsToldOnce) {
    const std::string log = RunWeak(LikeSpins({1.0, 1.001, 1.002}, {9.0, 9.0, 9.0})).Log;
    EXPECT_EQ(log.find(Doubt), 0u);
    EXPECT_EQ(log.find(Doubt, 1), std::string::npos);
}

TEST(WeakCoupling, GroupOfNoNucleiIsOneState) {
    SpinSystem system = Weak(LikeSpins({1.0, 2.0}, {7.0}));
    system.Nuclei = {0, 1};
    const auto lines = Simulate(system);
    ASSERT_EQ(lines.size(), 1u);
    ExpectLine(lines[0], 200.0, 1.0, 1);
}

TEST(WeakCoupling, NothingLimitsTheNumberOfGroups) {
    SpinSystem system = LikeSpins(std::vector<double>(40, 0.0), std::vector<double>(780, 0.0));
    for (std::size_t g = 0; g < 40; ++g) {
        system.Shifts[g] = static_cast<double>(g);
        system.Nuclei[g] = g < 2 ? 1 : 0;
    }
    EXPECT_EQ(Simulate(Weak(system)).size(), 2u);
}

// A line of the sum over all states, with a weight.
struct WeightedLine {
    double Frequency;
    double Intensity;
    double Degeneracy;
};

// The lines of group g from level twoM / 2, for every combination of total spins and projections of the groups from h
// on, coupled or not, to first order in the intensities and second order in the frequencies.
static void AddWeakLines(const SpinSystem& system, std::size_t g, int twoM, std::size_t h, WeightedLine line,
                         std::vector<WeightedLine>& lines) {
    const std::size_t n = system.Nuclei.size();
    if (h == n) {
        lines.push_back(line);
        return;
    }
    if (h == g) {
        AddWeakLines(system, g, twoM, h + 1, line, lines);
        return;
    }
    const double coupling = system.Couplings[std::min(g, h) * n + std::max(g, h)];
    const double flipping = system.Isotopes[g] == system.Isotopes[h] ? coupling : 0.0;
    const double delta = system.Frequency * (system.Shifts[g] - system.Shifts[h]);
    for (int twoJ = system.Nuclei[h]; twoJ >= 0; twoJ -= 2) {
        const double weight = GroupSpinMultiplicity(system.Nuclei[h], twoJ);
        const double j = 0.5 * twoJ;
        for (double m = j; m > -j - 0.5; m -= 1.0) {
            WeightedLine next = line;
            next.Frequency +=
                m * coupling + (m * twoM + j * (j + 1.0) - m * (m + 1.0)) * coupling * flipping / (2.0 * delta);
            next.Intensity -= 2.0 * m * flipping / delta;
            next.Degeneracy *= weight;
            AddWeakLines(system, g, twoM, h + 1, next, lines);
        }
    }
}

static std::vector<WeightedLine> AllWeakLines(const SpinSystem& system) {
    std::vector<WeightedLine> lines;
    for (std::size_t g = 0; g < system.Nuclei.size(); ++g) {
        for (int twoJ = system.Nuclei[g]; twoJ > 0; twoJ -= 2) {
            for (int twoM = twoJ; twoM > -twoJ; twoM -= 2) {
                std::vector<WeightedLine> own;
                AddWeakLines(system, g, twoM, 0,
                             {system.Frequency * system.Shifts[g], 1.0, GroupSpinMultiplicity(system.Nuclei[g], twoJ)},
                             own);
                for (WeightedLine& line : own) {
                    line.Intensity *= 0.25 * (twoM + twoJ) * (twoJ - twoM + 2) * line.Degeneracy;
                    if (line.Intensity >= 1e-10) {
                        lines.push_back(line);
                    }
                }
            }
        }
    }
    std::sort(lines.begin(), lines.end(),
              [](const WeightedLine& a, const WeightedLine& b) { return a.Frequency < b.Frequency; });
    return lines;
}

static double Stored(double frequency) {
    return static_cast<double>(static_cast<float>(frequency));
}

// Property: groups that don't couple only multiply a line by their states. The reference sums over all states of all
// groups.
TEST(WeakCoupling, UncoupledGroupsMultiplyTheLines) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
        const std::size_t n = static_cast<std::size_t>(2 + below(4));
        SpinSystem system = Weak(LikeSpins(std::vector<double>(n), std::vector<double>(n * (n - 1) / 2)));
        for (std::size_t i = 0; i < n; ++i) {
            system.Shifts[i] = static_cast<double>(i) + 0.05 * below(15);
            system.Nuclei[i] = 1 + below(4);
            system.Isotopes[i] = below(4) == 0 ? 19 : 1;
            for (std::size_t j = i + 1; j < n; ++j) {
                system.Couplings[i * n + j] = below(2) == 0 ? 0.0 : 0.25 * (below(40) - 20);
            }
        }
        LoadSpinSystem(system);
        PrepareSpinSystem();
        FinishLineList(WriteWeakLines(true));
        const auto lines = FinishedLines();
        ResetRun();
        const auto all = AllWeakLines(system);
        std::size_t next = 0;
        for (const SpectrumLine& line : lines) {
            double intensity = 0.0;
            double degeneracy = 0.0;
            double last = static_cast<double>(line.Frequency);
            for (; next < all.size() && Stored(all[next].Frequency) - last < 0.001; ++next) {
                last = Stored(all[next].Frequency);
                intensity += all[next].Intensity;
                degeneracy += all[next].Degeneracy;
            }
            ASSERT_NEAR(static_cast<double>(line.Intensity), intensity, 1e-5 * intensity) << seed << ' ' << last;
            ASSERT_EQ(line.Degeneracy, static_cast<int>(degeneracy + 0.5)) << seed << ' ' << last;
        }
        ASSERT_EQ(next, all.size()) << seed;
    }
}
