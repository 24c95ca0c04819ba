// SPDX-License-Identifier: MIT
// Identities that every spectrum has to keep: sum rule, first moment, invariance under regrouping, the weak
// limit.
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

// Thousands of 32-bit intensities, each rounded by 6e-8 of itself, the dropped ones under 1e-10 each.
static constexpr double SumTolerance = 1e-6;

struct IdentityCase {
    const char* Name;
    SpinSystem System;
};

// Shifts within 10 ppm and couplings within 20 Hz, at 60 MHz: mixed strengths of coupling.
static SpinSystem RandomSystem(const std::vector<int>& isotopes, const std::vector<int>& nuclei, unsigned seed) {
    const std::size_t n = nuclei.size();
    std::mt19937 random(seed);
    std::vector<double> shifts(n);
    for (double& shift : shifts) {
        shift = 1.0 + 0.01 * static_cast<double>(random() % 900);
    }
    std::vector<double> upper(n * (n - 1) / 2);
    for (double& coupling : upper) {
        coupling = -5.0 + 0.01 * static_cast<double>(random() % 2500);
    }
    SpinSystem system = LikeSpins(shifts, upper);
    system.Isotopes = isotopes;
    system.Nuclei = nuclei;
    system.Frequency = 60.0;
    return system;
}

static std::vector<IdentityCase> IdentityCases() {
    std::vector<IdentityCase> cases;
    cases.push_back({"five single nuclei", RandomSystem({1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, 1)});
    cases.push_back({"eight single nuclei", RandomSystem(std::vector<int>(8, 1), std::vector<int>(8, 1), 2)});
    cases.push_back({"A3B2C", RandomSystem({1, 1, 1}, {3, 2, 1}, 3)});
    cases.push_back({"A6B1", RandomSystem({1, 1}, {6, 1}, 4)});
    cases.push_back({"A9B2 and two of fluorine", RandomSystem({1, 1, 19, 19}, {9, 2, 1, 2}, 5)});
    cases.push_back({"one group of four", RandomSystem({1}, {4}, 6)});
    cases.push_back({"a group of none", RandomSystem({1, 1, 1}, {0, 2, 1}, 7)});
    return cases;
}

static int Nuclei(const SpinSystem& system) {
    int count = 0;
    for (const int n : system.Nuclei) {
        count += n;
    }
    return count;
}

// Property: the total intensity is n 2^(n-1) for n nuclei in all, composite groups included. Right because it
// is the trace of the lowering operator times its adjoint, Tr(F- F+) = sum over the nuclei of Tr(1/2 + Iz
// ...) = n 2^n / 2, in any basis. Tolerance: 32-bit intensities.
TEST(SpectrumIdentities, TotalIntensityOfTheExactSpectrum) {
    for (const IdentityCase& one : IdentityCases()) {
        const int n = Nuclei(one.System);
        const double expected = n * std::ldexp(1.0, n - 1);
        EXPECT_NEAR(TotalIntensity(Simulate(one.System)) / expected, 1.0, SumTolerance) << one.Name;
    }
}

// Property: the first moment is the sum over groups of n_g nu_g, times 2^(n-1). Right because it is Tr([F+,
// H] F-): scalar couplings of like nuclei commute with the total spin, and those of unlike ones shift the
// lines of a nucleus symmetrically. Tolerance: lines merge towards the lower one by less than 0.001 Hz, at
// frequencies of some 300 Hz.
TEST(SpectrumIdentities, FirstMomentOfTheExactSpectrum) {
    for (const IdentityCase& one : IdentityCases()) {
        const int n = Nuclei(one.System);
        double expected = 0.0;
        for (std::size_t g = 0; g < one.System.Nuclei.size(); ++g) {
            expected += one.System.Nuclei[g] * one.System.Shifts[g] * one.System.Frequency;
        }
        expected *= std::ldexp(1.0, n - 1);
        EXPECT_NEAR(FirstMoment(Simulate(one.System)) / expected, 1.0, 5e-6) << one.Name;
    }
}

// Property: the weak-coupling spectrum keeps the sum rule too, as long as no intensity is negative: the
// first-order leans m B / Delta sum up to 0 over the projections m of each group.
TEST(SpectrumIdentities, TotalIntensityOfTheWeakSpectrum) {
    SpinSystem system = RandomSystem({1, 1, 19}, {3, 2, 1}, 3);
    system.Frequency = 600.0;
    system.Weak = 1;
    EXPECT_NEAR(TotalIntensity(Simulate(system)) / (6 * 32.0), 1.0, SumTolerance);
}

// Lines as the sums of intensities in windows around the lines of the first list.
static void ExpectSameSpectrum(const std::vector<SpectrumLine>& a, const std::vector<SpectrumLine>& b, double window,
                               double tolerance) {
    for (const SpectrumLine& center : a) {
        double sums[2] = {0.0, 0.0};
        int side = 0;
        for (const std::vector<SpectrumLine>* lines : {&a, &b}) {
            for (const SpectrumLine& line : *lines) {
                if (std::fabs(static_cast<double>(line.Frequency) - static_cast<double>(center.Frequency)) < window) {
                    sums[side] += static_cast<double>(line.Intensity);
                }
            }
            ++side;
        }
        EXPECT_NEAR(sums[0], sums[1], tolerance * (1.0 + sums[0])) << center.Frequency;
    }
}

// Property: a composite group is the same as its nuclei entered one by one with one shift and no coupling
// among them; couplings within a group don't show. Set-up: A3B2 and 3 + 2 single nuclei. Right because both
// are the same Hamiltonian up to terms that commute with the total spin of the group. Windows of 0.01 Hz,
// since single nuclei merge lines of more transitions; tolerance of 32-bit sums.
TEST(SpectrumIdentities, CompositeGroupIsItsNuclei) {
    SpinSystem groups = LikeSpins({1.0, 1.3}, {7.0});
    groups.Nuclei = {3, 2};
    const double j = 7.0;
    for (const double within : {0.0, -12.0}) {
        const SpinSystem nuclei =
            LikeSpins({1.0, 1.0, 1.0, 1.3, 1.3}, {within, within, j, j, within, j, j, j, j, within});
        const auto a = Simulate(groups);
        const auto b = Simulate(nuclei);
        ExpectSameSpectrum(a, b, 0.01, 1e-5);
        ExpectSameSpectrum(b, a, 0.01, 1e-5);
    }
}

// Property: two uncoupled groups of nine at one shift are one line with the intensity of 18 nuclei, 18 *
// 2^17.
TEST(SpectrumIdentities, NineAndNineNucleiAtOneShift) {
    SpinSystem system = LikeSpins({1.0, 1.0}, {0.0});
    system.Nuclei = {9, 9};
    const auto lines = Simulate(system);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NEAR(static_cast<double>(lines[0].Intensity) / 2359296.0, 1.0, 1e-5);
    EXPECT_NEAR(static_cast<double>(lines[0].Frequency), 100.0, 1e-3);
}

// Property: at very high field the exact spectrum turns into the weak-coupling one. Set-up: three groups 1
// ppm apart at 100 GHz (D = 1e5 Hz). Second order is kept by both; third order is J^3/D^2 = 1e-7 Hz,
// second-order intensity (J/D)^2 = 1e-8. Tolerance: frequencies are stored in 32 bits, whose unit at 3e5 Hz
// is 0.03 Hz.
TEST(SpectrumIdentities, ExactIsWeakAtHighField) {
    SpinSystem system = LikeSpins({1.0, 2.0, 3.0}, {7.0, 4.0, 11.0});
    system.Nuclei = {3, 2, 1};
    system.Frequency = 100000.0;
    const auto exact = Simulate(system);
    system.Weak = 1;
    const auto weak = Simulate(system);
    ExpectSameSpectrum(weak, exact, 0.2, 1e-4);
    EXPECT_NEAR(TotalIntensity(exact), TotalIntensity(weak), 1e-3);
}

// Property: the order in which groups are entered doesn't matter.
TEST(SpectrumIdentities, OrderOfGroupsDoesNotMatter) {
    SpinSystem first = LikeSpins({1.0, 1.3, 2.0}, {7.0, 1.0, 4.0});
    first.Nuclei = {3, 1, 2};
    SpinSystem second = LikeSpins({2.0, 1.0, 1.3}, {1.0, 4.0, 7.0});
    second.Nuclei = {2, 3, 1};
    ExpectSameSpectrum(Simulate(first), Simulate(second), 0.01, 1e-5);
    first.Weak = second.Weak = 1;
    ExpectSameSpectrum(Simulate(first), Simulate(second), 0.01, 1e-5);
}

// Property: changing the sign of all couplings leaves the frequencies of a system of two groups' AB quartet,
// and of any exact spectrum of two nuclei, where they are.
TEST(SpectrumIdentities, SignOfTheOnlyCouplingDoesNotShow) {
    ExpectSameSpectrum(Simulate(LikeSpins({1.0, 1.1}, {8.0})), Simulate(LikeSpins({1.0, 1.1}, {-8.0})), 0.003, 1e-5);
}
