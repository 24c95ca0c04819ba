// SPDX-License-Identifier: MIT
// Tests of the tensor eigenproblem: stored values in the prescribed precision, cases by hand, and the behaviour that is
// kept on purpose.
#include "nmr/tensor_eigenproblem.h"
#include "tests/reference/shielding/tensor_eigen.inc"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

// A single rounds to 6e-8; a library's last digit of pow, exp or atan2 may turn the rounding of three such values.
static constexpr double SingleTolerance = 2e-7;

static double LargestValue(const double* values) {
    double largest = 0.0;
    for (int i = 0; i < 3; ++i) {
        largest = std::max(largest, std::fabs(values[i]));
    }
    return largest;
}

static std::vector<double> Solve(const std::vector<double>& tensor) {
    std::vector<double> values(5, -99.0);
    EXPECT_EQ(SolveTensorEigenproblem(tensor.data(), values.data()), 1);
    return values;
}

static std::vector<double> Diagonal(double x, double y, double z) {
    return {x, 0, 0, 0, y, 0, 0, 0, z};
}

// Property: the five values of a general tensor. Set-up: symmetric and unsymmetric tensors of the size that molecules
// have. The reference evaluates the same formula with its singles by another program. Tolerance: SingleTolerance of the
// largest eigenvalue; twice that for the anisotropy, which is a difference.
TEST(TensorEigenproblem, StoredValues) {
    for (const TensorEigenReference& reference : TensorEigenReferences) {
        const std::vector<double> values = Solve({reference.Tensor, reference.Tensor + 9});
        const double tolerance = SingleTolerance * LargestValue(reference.Values);
        for (int i = 0; i < 5; ++i) {
            EXPECT_NEAR(values[static_cast<std::size_t>(i)], reference.Values[i], i == 4 ? 2 * tolerance : tolerance)
                << "tensor " << &reference - TensorEigenReferences << ", value " << i;
        }
    }
}

// Property: the values are eigenvalues. Set-up: the same tensors; the reference is a solver in full double precision.
// Tolerance: the discriminant and q pass through singles of 6e-8; where two roots lie close the cube roots magnify that
// to some 2e-7 of the largest value.
TEST(TensorEigenproblem, ExactEigenvalues) {
    for (const TensorEigenReference& reference : TensorEigenReferences) {
        const std::vector<double> values = Solve({reference.Tensor, reference.Tensor + 9});
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR(values[static_cast<std::size_t>(i)], reference.Exact[i],
                        SingleTolerance * LargestValue(reference.Exact));
        }
    }
}

// Property: single precision is used on purpose. Set-up: the same tensors; if everything were double the formula would
// reach about 1e-14 of the largest value. Some row has to be off by more than 1e-9 of it.
TEST(TensorEigenproblem, NarrowingShows) {
    double worst = 0.0;
    for (const TensorEigenReference& reference : TensorEigenReferences) {
        const std::vector<double> values = Solve({reference.Tensor, reference.Tensor + 9});
        for (int i = 0; i < 3; ++i) {
            const double error = std::fabs(values[static_cast<std::size_t>(i)] - reference.Exact[i]);
            worst = std::max(worst, error / std::max(1.0, LargestValue(reference.Exact)));
        }
    }
    EXPECT_GT(worst, 1e-9);
}

// Everything in the formula is exactly 0.
TEST(TensorEigenproblem, ZeroTensor) {
    for (const double value : Solve(std::vector<double>(9, 0.0))) {
        EXPECT_EQ(value, 0.0);
    }
}

// Property: a multiple of the unit tensor. By hand all values are t. Tolerance: q and p come from cancelling terms, so
// that a residue of the doubles, 1e-16 t^3, stays under the cube root: some 5e-6 t.
TEST(TensorEigenproblem, EqualDiagonal) {
    for (const double t : {25.0, -3.0, 1.0, 187.25, 30.1}) {
        const std::vector<double> values = Solve(Diagonal(t, t, t));
        const double tolerance = 1e-5 * std::fabs(t);
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_NEAR(values[i], t, tolerance);
        }
        EXPECT_NEAR(values[4], 0.0, 2 * tolerance);
    }
}

// Property: a diagonal tensor keeps its values, in any order of the axes. By hand: 1, 2, 3, mean 2, anisotropy
// 3 - 1.5. Tolerance: SingleTolerance of the largest.
TEST(TensorEigenproblem, DiagonalTensor) {
    double t[3] = {1, 2, 3};
    do {
        const std::vector<double> values = Solve(Diagonal(t[0], t[1], t[2]));
        const double expected[5] = {1, 2, 3, 2, 1.5};
        for (std::size_t i = 0; i < 5; ++i) {
            EXPECT_NEAR(values[i], expected[i], 3 * SingleTolerance);
        }
    } while (std::next_permutation(t, t + 3));
}

// Property: real parts of complex eigenvalues are reported, ascending, without a word. Set-up: a rotation about z with
// values 1 +- i/2, and 5; by hand the real parts are 1, 1 and 5. Neither sum under the cube roots cancels. Tolerance:
// SingleTolerance of 5, twice that for the anisotropy.
TEST(TensorEigenproblem, ComplexPair) {
    const std::vector<double> values = Solve({1, -0.5, 0, 0.5, 1, 0, 0, 0, 5});
    const double expected[5] = {1, 1, 5, 7.0 / 3.0, 4};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_NEAR(values[i], expected[i], 5 * (i == 4 ? 2 : 1) * SingleTolerance);
    }
}

// On purpose: the cube root of a negative number is its principal value, v = |v| exp(i pi / 3), not conjugate to u. By
// hand for the values 1 +- 2i and 2: q/2 = -37/27, p/3 = 11/9, and the parts are u + |v|/2, (|v| - u)/2, -u/2 - |v|.
// Tolerance: SingleTolerance of the largest, 3.2.
TEST(TensorEigenproblem, PrincipalCubeRoot) {
    const double q = -37.0 / 27.0;
    const double root = std::sqrt(q * q + std::pow(11.0 / 9.0, 3));
    const double u = std::cbrt(root - q);
    const double v = std::cbrt(root + q);
    const double expected[3] = {4.0 / 3.0 - u / 2 - v, 4.0 / 3.0 + (v - u) / 2, 4.0 / 3.0 + u + v / 2};
    const std::vector<double> values = Solve({1, -2, 0, 2, 1, 0, 0, 0, 2});
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(values[i], expected[i], SingleTolerance * expected[2]);
    }
}

// Property: u to the third is 1 and v is 0, whose logarithms are 0 and none at all. Set-up: the cyclic permutation of
// the axes; x^3 = 1 has the real root 1 and a pair with the real part -1/2. Tolerance: SingleTolerance.
TEST(TensorEigenproblem, CyclicPermutation) {
    const double expected[5] = {-0.5, -0.5, 1.0, 0.0, 1.5};
    const std::vector<double> values = Solve({0, 1, 0, 0, 0, 1, 1, 0, 0});
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_NEAR(values[i], expected[i], SingleTolerance);
    }
}

// Property: mean and anisotropy follow from the three values as printed, and the mean is a third of the trace. The
// trace passes through one single. Tolerance: 1e-15 for the first two, SingleTolerance of the largest for the last.
TEST(TensorEigenproblem, MeanAndAnisotropy) {
    for (const TensorEigenReference& reference : TensorEigenReferences) {
        const std::vector<double> values = Solve({reference.Tensor, reference.Tensor + 9});
        EXPECT_LE(values[0], values[1]);
        EXPECT_LE(values[1], values[2]);
        EXPECT_DOUBLE_EQ(values[3], (values[1] + values[0] + values[2]) * 0.3333333333333333);
        EXPECT_DOUBLE_EQ(values[4], values[2] - (values[1] + values[0]) * 0.5);
        const double trace = reference.Tensor[0] + reference.Tensor[4] + reference.Tensor[8];
        EXPECT_NEAR(values[3], trace / 3.0, SingleTolerance * LargestValue(reference.Values));
    }
}

// A transposed tensor has the same characteristic polynomial. Tolerance: rounding turns singles over.
TEST(TensorEigenproblem, TransposedTensor) {
    for (const TensorEigenReference& reference : TensorEigenReferences) {
        const double* t = reference.Tensor;
        const std::vector<double> plain = Solve({t, t + 9});
        const std::vector<double> values = Solve({t[0], t[3], t[6], t[1], t[4], t[7], t[2], t[5], t[8]});
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(values[i], plain[i], SingleTolerance * LargestValue(reference.Values));
        }
    }
}

// On purpose: an axial tensor whose unique value is the lowest comes out wrong when the discriminant rounds to 0 or
// above, for the principal cube roots then aren't conjugates. By hand for (1, 3, 3): u = v = (2/3) exp(i pi / 3), so
// that the real parts are 7/3 + 2/3 and twice 7/3 - 1/3: 2, 2, 3, with the right mean. With the unique value highest
// the formula is right.
TEST(TensorEigenproblem, AxialTensorIsWrongOnPurpose) {
    const std::vector<double> values = Solve(Diagonal(1, 3, 3));
    EXPECT_NEAR(values[3], 7.0 / 3.0, 2e-6);
    EXPECT_NEAR(values[4], 1, 2e-6);  // as for 1, 3, 3
    const double expected[3] = {2, 2, 3};
    const std::vector<double> highest = Solve(Diagonal(1, 1, 3));
    const double right[3] = {1, 1, 3};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(values[i], expected[i], 2e-6);
        EXPECT_NEAR(highest[i], right[i], 2e-4);  // the root of a discriminant that is 0 but for 1e-16
    }
}

// A value that isn't a number passes through.
TEST(TensorEigenproblem, NotANumber) {
    const std::vector<double> values = Solve(Diagonal(1, std::numeric_limits<double>::quiet_NaN(), 2));
    for (const double value : values) {
        EXPECT_TRUE(std::isnan(value));
    }
}

// The same source once more, at each level of optimisation (tests/CMakeLists.txt).
int SolveTensorAtO0(const double* t, double* e);
int SolveTensorAtO1(const double* t, double* e);
int SolveTensorAtO2(const double* t, double* e);
int SolveTensorAtO3(const double* t, double* e);

// Property: no level of optimisation loses a rounding to single precision. Set-up: 100,000 random tensors of the size
// that molecules have, one in ten symmetric. Bit by bit.
TEST(TensorEigenproblem, EveryOptimisationGivesTheSameBits) {
    std::mt19937_64 random(11);
    const auto element = [&] { return static_cast<double>(random() >> 11) * 0x1p-53 * 400.0 - 200.0; };
    int different = 0;
    for (int n = 0; n < 100000; ++n) {
        double tensor[9];
        for (double& value : tensor) {
            value = element();
        }
        if (n % 10 == 0) {
            tensor[3] = tensor[1];
            tensor[6] = tensor[2];
            tensor[7] = tensor[5];
        }
        double expected[5];
        SolveTensorAtO0(tensor, expected);
        for (const auto solve : {SolveTensorEigenproblem, SolveTensorAtO1, SolveTensorAtO2, SolveTensorAtO3}) {
            double values[5];
            solve(tensor, values);
            different += std::memcmp(values, expected, sizeof values) != 0;
        }
    }
    EXPECT_EQ(different, 0);
}
