// SPDX-License-Identifier: MIT
// Tests of the eigensolver: identities that eigenvectors must fulfil, closed forms, hard matrices.
#include "tests/unit/numerics/symmetric_problems.h"

namespace {

// Whatever the matrix: values ascend, vectors are orthonormal to what the solver promises, each is an eigenvector
// within tolerance times the norm, and trace and sum of squares, which similar matrices share, agree likewise.
void ExpectSolved(const std::string& name, const Numbers& matrix, int n, double tolerance) {
    SCOPED_TRACE(name + " of order " + std::to_string(n));
    const Solution solution = Solve(matrix, n);
    const double norm = RowSumNorm(matrix, n);
    EXPECT_TRUE(std::is_sorted(solution.Values.begin(), solution.Values.end()));
    EXPECT_LE(Orthonormality(solution.Vectors, n), OrthonormalityTolerance);
    EXPECT_LE(Residual(matrix, solution, n), tolerance * norm);
    double trace = 0.0;
    double squares = 0.0;
    for (int i = 0; i < n; ++i) {
        trace += matrix[At(i, i, n)] - solution.Values[static_cast<std::size_t>(i)];
        for (int j = 0; j < n; ++j) {
            squares += matrix[At(i, j, n)] * matrix[At(i, j, n)];
        }
        squares -= solution.Values[static_cast<std::size_t>(i)] * solution.Values[static_cast<std::size_t>(i)];
    }
    EXPECT_LE(std::fabs(trace), n * DirectTolerance * norm);
    EXPECT_LE(std::fabs(squares), n * DirectTolerance * norm * norm);
}

TEST(Eigensolver, RandomMatrices) {
    Random random = {std::mt19937(1)};
    for (const int n : {1, 2, 3, 4, 5, 8, 9, 31, 32, 33, 40, 41, 64, 65, 97, 100, 300}) {
        for (const double scale : {1.0, 1e-12, 1e12}) {
            ExpectSolved("random", Symmetric(n, [&](int, int) { return scale * random(); }), n, DirectTolerance);
        }
        ExpectSolved("signs", Symmetric(n, [&](int, int) { return random() < 0.0 ? -1.0 : 1.0; }), n,
                     IteratedTolerance);
    }
}

TEST(Eigensolver, OrderZeroIsHarmless) {
    double value = 7.0;
    SolveEigenproblem(&value, &value, &value, 0);
    EXPECT_EQ(value, 7.0);
}

// Matrices whose start vectors depend on one another, so that vectors of a group are lost and have to be replaced.
TEST(Eigensolver, DegenerateMatrices) {
    Random random = {std::mt19937(2)};
    for (const int n : {2, 3, 4, 5, 6, 7, 8, 9, 20, 40, 100}) {
        for (const double scale : {1.0, 1e-12, 1e12}) {
            ExpectSolved("identity", Symmetric(n, [&](int i, int j) { return i == j ? scale : 0.0; }), n,
                         IteratedTolerance);
            ExpectSolved("ones", Numbers(At(n, 0, n), scale), n, IteratedTolerance);
        }
        ExpectSolved("zero", Numbers(At(n, 0, n), 0.0), n, IteratedTolerance);
        ExpectSolved("diagonal", Symmetric(n, [](int i, int j) { return i == j ? i % 7 : 0; }), n, IteratedTolerance);
        ExpectSolved("rank one", Symmetric(n, [](int i, int j) { return (i % 5 + 1) * (j % 5 + 1); }), n,
                     IteratedTolerance);
        ExpectSolved("exchanges", Symmetric(n, [](int i, int j) { return i == j + 1 && i % 2 == 1 ? 1 : 0; }), n,
                     IteratedTolerance);
        ExpectSolved("blocks of three",
                     Symmetric(n, [](int i, int j) { return i / 3 == j / 3 ? 1.0 + i % 3 * (j % 3) : 0.0; }), n,
                     IteratedTolerance);
        const int half = n / 2;
        const Numbers block = Symmetric(half, [&](int, int) { return random(); });
        ExpectSolved(
            "two equal blocks",
            Symmetric(2 * half,
                      [&](int i, int j) { return i / half == j / half ? block[At(i % half, j % half, half)] : 0.0; }),
            2 * half, IteratedTolerance);
    }
}

// Wilkinson's matrix has pairs that agree to machine precision, glued copies of it clusters of them, and couplings of
// 1e-29 lie beside what counts as zero.
TEST(Eigensolver, NearlyDegenerateMatrices) {
    for (const double scale : {1.0, 1e-6, 1e5}) {
        ExpectSolved("Wilkinson",
                     Symmetric(21,
                               [&](int i, int j) {
                                   return scale * (i == j ? std::abs(i - 10) : i == j + 1 ? 1 : 0);
                               }),
                     21, IteratedTolerance);
        for (const double glue : {1e-4, 1e-8, 1e-11, 1e-14, 1e-29}) {
            ExpectSolved("glued Wilkinson",
                         Symmetric(105,
                                   [&](int i, int j) {
                                       const double coupling = i % 21 == 0 ? glue : 1.0;
                                       return scale * (i == j ? std::abs(i % 21 - 10) : i == j + 1 ? coupling : 0.0);
                                   }),
                         105, IteratedTolerance);
        }
    }
    for (const double grade : {-8.0, 8.0}) {
        ExpectSolved(
            "graded",
            Symmetric(
                40, [&](int i, int j) { return std::pow(10.0, grade * (i + j) / 40.0) * (1.0 + 0.1 * ((i * j) % 7)); }),
            40, IteratedTolerance);
    }
}

// The perturbation that spin Hamiltonians carry: 1e-10 with a sign that alternates along the rows of the triangle.
double Perturbation(int i, int j) {
    return (i * (i + 1) / 2 + j) % 2 == 0 ? 1e-10 : -1e-10;
}

// Equal spins, uncoupled or in a ring, give levels with the degeneracies of the binomial coefficients and more.
TEST(Eigensolver, SpinHamiltonians) {
    for (const int spins : {3, 5, 7}) {
        const int n = 1 << spins;
        ExpectSolved("free spins",
                     Symmetric(n,
                               [&](int i, int j) {
                                   double energy = 0.0;
                                   for (int s = 0; i == j && s < spins; ++s) {
                                       energy += (i >> s & 1) != 0 ? 400.0 : -400.0;
                                   }
                                   return energy + Perturbation(i, j);
                               }),
                     n, IteratedTolerance);
        ExpectSolved(
            "ring",
            Symmetric(n,
                      [&](int i, int j) {
                          double energy = Perturbation(i, j);
                          for (int s = 0; s < spins; ++s) {
                              const int pair = 1 << s | 1 << (s + 1) % spins;
                              const bool parallel = (i & pair) == 0 || (i & pair) == pair;
                              energy += i == j ? (parallel ? 1.75 : -1.75) : !parallel && (i ^ j) == pair ? 3.5 : 0.0;
                          }
                          return energy;
                      }),
            n, IteratedTolerance);
    }
}

// The second difference matrix of order n has the values 2 - 2 cos(k pi / (n + 1)), all ones n and 0, and a 2 x 2
// matrix the roots of its quadratic equation. The arithmetic is direct, so errors are a few roundings of the norm.
TEST(Eigensolver, ValuesOfClosedForms) {
    for (const int n : {2, 3, 10, 50, 200}) {
        const Numbers differences = Symmetric(n, [](int i, int j) { return i == j ? 2 : i == j + 1 ? -1 : 0; });
        const Solution solution = Solve(differences, n);
        for (int k = 1; k <= n; ++k) {
            EXPECT_NEAR(solution.Values[static_cast<std::size_t>(k - 1)],
                        2.0 - 2.0 * std::cos(k * 3.14159265358979323846 / (n + 1)), 4.0 * DirectTolerance);
        }
        const Solution ones = Solve(Numbers(At(n, 0, n), 1.0), n);
        for (int k = 0; k < n; ++k) {
            EXPECT_NEAR(ones.Values[static_cast<std::size_t>(k)], k == n - 1 ? n : 0.0, n * DirectTolerance);
        }
    }
    const Solution two = Solve({1.0, 2.0, 2.0, -2.0}, 2);
    EXPECT_NEAR(two.Values[0], -3.0, DirectTolerance);
    EXPECT_NEAR(two.Values[1], 2.0, DirectTolerance);
    const Solution one = Solve({-5.0}, 1);
    EXPECT_EQ(one.Values[0], -5.0);
    EXPECT_EQ(one.Vectors[0], 1.0);
    const Solution zero = Solve(Numbers(25, 0.0), 5);
    EXPECT_EQ(zero.Values, Numbers(5, 0.0));
}

// The same matrix gives the same bytes: on a second call, after one of another order, whatever stands in the upper
// triangle and behind the matrix, and with every implementation of the kernels.
TEST(Eigensolver, SameMatrixSameBytes) {
    Random random = {std::mt19937(3)};
    for (const int n : {5, 37, 100}) {
        const Numbers matrix = Symmetric(n, [&](int, int) { return random(); });
        const Solution first = Solve(matrix, n);
        Solve(Numbers(9, 1.0), 3);
        WithEachInstructionSet([&](InstructionSet) {
            Numbers larger = matrix;
            for (int i = 0; i < n; ++i) {
                std::fill(larger.begin() + static_cast<std::ptrdiff_t>(At(i, i + 1, n)),
                          larger.begin() + static_cast<std::ptrdiff_t>(At(i + 1, 0, n)), 1e300);
            }
            larger.resize(matrix.size() + 100, 5.0);
            Solution second = {Numbers(matrix.size() + 100, 6.0), Numbers(static_cast<std::size_t>(n) + 3, 7.0)};
            SolveEigenproblem(larger.data(), second.Vectors.data(), second.Values.data(), n);
            EXPECT_EQ(std::memcmp(first.Vectors.data(), second.Vectors.data(), matrix.size() * sizeof(double)), 0);
            EXPECT_EQ(std::memcmp(first.Values.data(), second.Values.data(), static_cast<std::size_t>(n) * 8), 0);
            EXPECT_EQ(std::count(larger.begin() + static_cast<std::ptrdiff_t>(matrix.size()), larger.end(), 5.0), 100);
            EXPECT_EQ(std::count(second.Vectors.begin() + static_cast<std::ptrdiff_t>(matrix.size()),
                                 second.Vectors.end(), 6.0),
                      100);
            EXPECT_EQ(std::count(second.Values.begin() + n, second.Values.end(), 7.0), 3);
        });
    }
}

TEST(Eigensolver, WorkCanBeFreedAndMadeAgain) {
    EXPECT_NE(ReserveEigensolverWork(10), 0);
    FreeEigensolverWork();
    FreeEigensolverWork();
    ExpectSolved("after freeing", Symmetric(12, [](int i, int j) { return 1.0 / (i + j + 1); }), 12, IteratedTolerance);
}

}  // namespace
