// SPDX-License-Identifier: MIT
// Spectra from the parts of a system against the whole system, which is what they are defined by.
#include "ground/memory.h"
#include "spectrum/exact_spectrum.h"
#include "spectrum/level_coincidences.h"
#include "spectrum/line_list.h"
#include "spectrum/spectator_states.h"
#include "spectrum/spin_system.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

static constexpr unsigned RandomSystems = 400;

// Hz. The eigensolver separates the levels of the whole to 1e-8 of its norm; nearer ones it may mix by more than a
// line of 1e-10 shows.
static constexpr double DistinctLevels = 1e-2;

// A merged line, with its intensity in 64 bits.
struct Multiplet {
    double Frequency;
    double Intensity;
    long long Degeneracy;
};

static std::vector<Multiplet> Merged(std::vector<SpectrumLine> lines) {
    std::stable_sort(lines.begin(), lines.end(),
                     [](const SpectrumLine& a, const SpectrumLine& b) { return a.Frequency < b.Frequency; });
    std::vector<Multiplet> merged;
    double previous = -1e30;
    for (const SpectrumLine& line : lines) {
        const double frequency = static_cast<double>(line.Frequency);
        if (frequency - previous >= 0.001) {
            merged.push_back({frequency, 0.0, 0});
        }
        merged.back().Intensity += static_cast<double>(line.Intensity);
        merged.back().Degeneracy += line.Degeneracy;
        previous = frequency;
    }
    return merged;
}

static void Prepare(const SpinSystem& system) {
    LoadSpinSystem(system);
    PrepareSpinSystem();
    BuildSubMatrices(::Run.Spins.SpinGroupCount, ::Run.Spins.NucleiInGroup);
}

static void Clear() {
    FreeArraysOf(SubMatrices);
    FreeArraysOf(Spectators);
    FreeLevels();
    ResetRun();
}

static std::vector<SpectrumLine> WrittenLines(long long count) {
    return {::Run.Lines.SpectrumLines, ::Run.Lines.SpectrumLines + count};
}

static std::vector<SpectrumLine> LinesOfWhole(const SpinSystem& system) {
    Prepare(system);
    const auto lines = WrittenLines(SimulateWhole());
    Clear();
    return lines;
}

static std::vector<SpectrumLine> LinesOfParts(const SpinSystem& system, bool& coincide) {
    Prepare(system);
    SpinPart parts[LargestGroupCount];
    const int count = FindConnectedParts(parts);
    const auto lines = WrittenLines(SimulateParts(parts, count, true));
    coincide = LevelsCoincide(DistinctLevels);
    Clear();
    return lines;
}

// Up to eight groups, 512 states, and some parts of some isotopes; a third of the systems take their shifts and
// couplings from a few values, so that equal ones stand in different parts.
static SpinSystem RandomSystem(unsigned seed) {
    std::mt19937 random(seed);
    const auto below = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    const bool fewValues = below(3) == 0;
    const int isotopes[] = {1, below(3) == 0 ? 19 : 1, below(3) == 0 ? 31 : 1};
    const int n = 2 + below(7);
    SpinSystem system = LikeSpins(std::vector<double>(static_cast<std::size_t>(n)),
                                  std::vector<double>(static_cast<std::size_t>(n * (n - 1) / 2)));
    std::vector<int> partOf;
    int states = 1;
    for (std::size_t i = 0; i < system.Nuclei.size(); ++i) {
        system.Isotopes[i] = isotopes[below(3)];
        system.Shifts[i] = fewValues ? 1.25 * below(4) : 0.001 * below(8000);
        system.Nuclei[i] = states < 64 ? 1 + below(3) : 1;
        states *= system.Nuclei[i] + 1;
        partOf.push_back(below(n / 2 + 1));
    }
    for (std::size_t i = 0; i < partOf.size(); ++i) {
        for (std::size_t j = i + 1; j < partOf.size(); ++j) {
            if (partOf[i] == partOf[j]) {
                system.Couplings[i * partOf.size() + j] = fewValues ? 3.5 * below(3) : 0.001 * (below(30000) - 15000);
            }
        }
    }
    system.Frequency = 100.0 * (1 + below(6));
    system.MinimalIntensity = 1e-6;
    return system;
}

// Property: where no levels coincide, the merged lines of the parts are those of the whole: as many, at the same
// frequencies, of the same degeneracies. Tolerance: the lowest member of a merged line may be a neighbouring 32-bit
// number; thousands of lines of the whole are each rounded to 32 bits before they are summed.
TEST(PartsAgainstWhole, LinesAreThoseOfTheWhole) {
    int compared = 0;
    for (unsigned seed = 0; seed < RandomSystems; ++seed) {
        const SpinSystem system = RandomSystem(seed);
        bool coincide;
        const auto parts = Merged(LinesOfParts(system, coincide));
        if (coincide) {
            continue;
        }
        const auto whole = Merged(LinesOfWhole(system));
        ++compared;
        ASSERT_EQ(parts.size(), whole.size()) << seed;
        for (std::size_t i = 0; i < parts.size(); ++i) {
            ASSERT_NEAR(parts[i].Frequency, whole[i].Frequency, 1.3e-7 * std::abs(whole[i].Frequency) + 1e-9) << seed;
            ASSERT_NEAR(parts[i].Intensity, whole[i].Intensity, 2e-7 * whole[i].Intensity + 1e-10) << seed;
            ASSERT_EQ(parts[i].Degeneracy, whole[i].Degeneracy) << seed << ' ' << whole[i].Frequency;
        }
    }
    EXPECT_GT(compared, static_cast<int>(RandomSystems) / 2);
    EXPECT_LT(compared, static_cast<int>(RandomSystems) * 9 / 10);
}

// Property: the finished list is that of the whole, to the third decimal of the frequencies and to the degeneracies,
// equal shifts in different parts included. The tolerance of the intensities is that of the whole, which sums them in
// 32 bits; the test above sums in 64.
TEST(PartsAgainstWhole, FinishedListsAreEqual) {
    const auto thousandths = [](float frequency) { return std::nearbyint(1000.0 * static_cast<double>(frequency)); };
    for (unsigned seed = 0; seed < RandomSystems; ++seed) {
        const SpinSystem system = RandomSystem(seed);
        const auto found = Simulate(system);
        Prepare(system);
        FinishLineList(SimulateWhole());
        const auto whole = FinishedLines();
        Clear();
        ASSERT_EQ(found.size(), whole.size()) << seed;
        for (std::size_t i = 0; i < found.size(); ++i) {
            const double intensity = static_cast<double>(whole[i].Intensity);
            ASSERT_EQ(thousandths(found[i].Frequency), thousandths(whole[i].Frequency)) << seed;
            ASSERT_NEAR(static_cast<double>(found[i].Intensity), intensity, 2e-5 * intensity + 1e-8) << seed;
            ASSERT_EQ(found[i].Degeneracy, whole[i].Degeneracy) << seed << ' ' << whole[i].Frequency;
        }
    }
}

// On purpose: two single nuclei of one shift, uncoupled, have two levels of one energy, and the whole mixes them into
// the sum, which has lines of intensity 2, and the difference, which has none. So two transitions, not four.
TEST(PartsAgainstWhole, CoincidingLevelsAreTheWholes) {
    const auto lines = Simulate(LikeSpins({1.0, 1.0}, {0.0}));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].Degeneracy, 2);
    EXPECT_NEAR(static_cast<double>(lines[0].Intensity), 4.0, 1e-6);
}

// On purpose: a whole that isn't cheap isn't simulated for its degeneracies; each transition counts for every state
// of the others, 2^14 of them.
TEST(PartsAgainstWhole, LargeSystemsCountEveryState) {
    const auto lines = Simulate(LikeSpins(std::vector<double>(15, 1.0), std::vector<double>(105, 0.0)));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].Degeneracy, 15 << 14);
    EXPECT_EQ(lines[0].Intensity, static_cast<float>(15 << 14));
}

// Property: the spectrum of two systems side by side is that of each, with the states of the other. Twenty groups in
// four parts; each line of a part of five stands for 2^15 states.
TEST(PartsAgainstWhole, FourPartsOfFiveGroups) {
    std::vector<double> shifts;
    for (int i = 0; i < 20; ++i) {
        shifts.push_back(1.0 + 0.37 * i + 0.003 * i * i);
    }
    SpinSystem all = LikeSpins(shifts, std::vector<double>(190, 0.0));
    std::vector<SpectrumLine> expected;
    for (std::size_t part = 0; part < 4; ++part) {
        std::vector<double> upper;
        for (std::size_t i = 0; i < 5; ++i) {
            for (std::size_t j = i + 1; j < 5; ++j) {
                upper.push_back(2.0 + 0.7 * static_cast<double>(part) + 0.31 * static_cast<double>(i * j));
                all.Couplings[(5 * part + i) * 20 + 5 * part + j] = upper.back();
            }
        }
        const auto first = shifts.begin() + static_cast<long>(5 * part);
        for (SpectrumLine line : LinesOfWhole(LikeSpins({first, first + 5}, upper))) {
            line.Intensity *= 32768.0f;
            line.Degeneracy *= 32768;
            expected.push_back(line);
        }
    }
    all.MinimalIntensity = 1.1e-8;
    const auto found = Merged(Simulate(all));
    const auto wanted = Merged(expected);
    ASSERT_EQ(found.size(), wanted.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        ASSERT_NEAR(found[i].Frequency, wanted[i].Frequency, 1e-9);
        ASSERT_NEAR(found[i].Intensity, wanted[i].Intensity, 1e-6 * wanted[i].Intensity);
        ASSERT_EQ(found[i].Degeneracy, wanted[i].Degeneracy);
    }
}
