// SPDX-License-Identifier: MIT
// Tests of the eigensolver: identities that eigenvectors must fulfil, closed forms, hard matrices, and agreement with
// a plain version of the algorithm, written line by line.
#include "numerics/eigensolver.h"

#include "numerics/dense_kernels.h"
#include "tests/unit/numerics/instruction_sets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

using Numbers = std::vector<double>;

constexpr double Epsilon = 2.2e-16;
constexpr double OrthonormalityTolerance = 1e-10;   // what the solver promises
constexpr double DirectTolerance = 1000 * Epsilon;  // of the norm: values and vectors of well separated levels
constexpr double IteratedTolerance = 3e-8;          // of the norm: degenerate groups, by the solver's own tolerance

std::size_t At(int i, int j, int n) {
    return static_cast<std::size_t>(i) * static_cast<std::size_t>(n) + static_cast<std::size_t>(j);
}

Numbers Symmetric(int n, const std::function<double(int, int)>& element) {
    Numbers matrix(At(n, 0, n));
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j <= i; ++j) {
            matrix[At(i, j, n)] = matrix[At(j, i, n)] = element(i, j);
        }
    }
    return matrix;
}

// Numbers from -1 to 1, the same on every platform.
struct Random {
    std::mt19937 Generator;
    double operator()() { return static_cast<double>(Generator()) / 2147483648.0 - 1.0; }
};

struct Solution {
    Numbers Vectors;
    Numbers Values;
};

Solution Solve(Numbers matrix, int n) {
    Solution solution = {Numbers(At(n, 0, n)), Numbers(static_cast<std::size_t>(n))};
    SolveEigenproblem(matrix.data(), solution.Vectors.data(), solution.Values.data(), n);
    return solution;
}

double RowSumNorm(const Numbers& matrix, int n) {
    double norm = 0.0;
    for (int i = 0; i < n; ++i) {
        double sum = 0.0;
        for (int j = 0; j < n; ++j) {
            sum += std::fabs(matrix[At(i, j, n)]);
        }
        norm = std::max(norm, sum);
    }
    return norm;
}

double Orthonormality(const Numbers& vectors, int n) {
    Numbers columns(vectors.size());
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            columns[At(j, i, n)] = vectors[At(i, j, n)];
        }
    }
    Numbers products(vectors.size());
    MultiplyMatrices(vectors.data(), n, columns.data(), n, products.data(), n, n, n, n);
    double worst = 0.0;
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            const double error = std::fabs(products[At(i, j, n)] - (i == j ? 1.0 : 0.0));
            worst = error <= worst ? worst : error;  // so that what isn't a number stays
        }
    }
    return worst;
}

// The largest norm of A x - value x.
double Residual(const Numbers& matrix, const Solution& solution, int n) {
    Numbers products(matrix.size());
    MultiplyMatrices(solution.Vectors.data(), n, matrix.data(), n, products.data(), n, n, n, n);
    double worst = 0.0;
    for (int i = 0; i < n; ++i) {
        double sum = 0.0;
        for (int j = 0; j < n; ++j) {
            const double error =
                products[At(i, j, n)] - solution.Values[static_cast<std::size_t>(i)] * solution.Vectors[At(i, j, n)];
            sum += error * error;
        }
        worst = std::sqrt(sum) <= worst ? worst : std::sqrt(sum);
    }
    return worst;
}

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

// The plain version: the three stages written line by line, without blocks, lanes or any care for lost vectors.
Solution SolvePlainly(Numbers A, int n) {
    Solution solution = {Numbers(At(n, 0, n)), Numbers(static_cast<std::size_t>(n))};
    double* Values = solution.Values.data();
    Numbers Diag(At(1, 0, n)), Off(At(1, 0, n)), Band(At(1, 1, n) + 1), Upper(At(1, 1, n) + 1);
    Numbers Pivot(At(1, 0, n)), v(At(1, 0, n)), p(At(1, 0, n)), q(At(1, 0, n)), m(At(1, 0, n));
    const auto a = [&](int i, int j) -> double& { return A[At(i, j, n)]; };
    const auto s = [](int i) { return static_cast<std::size_t>(i); };
    for (int i = 0; i < n - 2; ++i) {
        Diag[s(i)] = a(i, i);
        double sum = 0.0;
        for (int j = i + 1; j < n; ++j) {
            v[s(j)] = a(j, i);
            sum += v[s(j)] * v[s(j)];
        }
        const double sigma = v[s(i + 1)] < 0.0 ? -std::sqrt(sum) : std::sqrt(sum);
        Off[s(i)] = -sigma;
        v[s(i + 1)] += sigma;
        a(i + 1, i) = v[s(i + 1)];
        const double h = sigma * v[s(i + 1)];
        if (std::fabs(h) >= 1e-30) {
            double acc = 0.0;
            for (int j = i + 1; j < n; ++j) {
                double product = 0.0;
                for (int l = i + 1; l < n; ++l) {
                    product += a(std::max(j, l), std::min(j, l)) * v[s(l)];
                }
                p[s(j)] = product / h;
                acc += p[s(j)] * v[s(j)];
            }
            const double K = acc / (2.0 * h);
            for (int j = i + 1; j < n; ++j) {
                q[s(j)] = K * v[s(j)] - p[s(j)];
                for (int l = i + 1; l <= j; ++l) {
                    a(j, l) += v[s(j)] * q[s(l)] + q[s(j)] * v[s(l)];
                }
            }
        }
        a(i, i) = h;
    }
    Diag[s(n - 2)] = a(n - 2, n - 2);
    Diag[s(n - 1)] = a(n - 1, n - 1);
    Off[s(n - 2)] = a(n - 1, n - 2);
    Off[s(n - 1)] = 0.0;
    double Norm = 0.0;
    for (int j = 0; j < n; ++j) {
        Norm = std::max(Norm, std::fabs(Off[s(j)]) + std::fabs(Diag[s(j)]) + (j > 0 ? std::fabs(Off[s(j - 1)]) : 0.0));
        Band[s(j)] = Off[s(j)];
        Values[j] = Diag[s(j)];
    }
    const double Tol = 1e-8 * Norm;
    for (int k = n - 1; k > 0;) {
        int l = k;
        while (l > 0 && std::fabs(Band[s(l - 1)]) >= Tol) {
            --l;
        }
        if (l == k) {
            --k;
            continue;
        }
        const double Mid = (Values[k - 1] + Values[k]) / 2.0;
        const double d = Values[k] - Mid;
        const double root = std::sqrt(Band[s(k - 1)] * Band[s(k - 1)] + d * d);
        const double Shift = Mid + (d < 0.0 ? -root : root);
        Values[l] -= Shift;
        double g = Values[l], b = Band[s(l)], r = std::sqrt(Band[s(l)] * Band[s(l)] + g * g), c = 0.0, sine = 0.0;
        for (int j = l; j < k; ++j) {
            if (j > l) {
                r = std::sqrt(Values[j] * Values[j] + Band[s(j)] * Band[s(j)]);
                Band[s(j - 1)] = r * sine;
                g = c * Values[j];
                b = c * Band[s(j)];
            }
            c = Values[j] / r;
            sine = Band[s(j)] / r;
            const double t = Values[j + 1] - Shift;
            Values[j] = (c * b + t * sine) * sine + g + Shift;
            Values[j + 1] = c * t - b * sine;
        }
        Band[s(k - 1)] = sine * Values[k];
        Values[k] = c * Values[k] + Shift;
    }
    std::sort(Values, Values + n);
    double start = 0.0;
    int group = 0;
    const auto orTol = [&](double value) { return std::fabs(value) < 1e-30 ? Tol : value; };
    for (int i = 0; i < n; ++i) {
        double* x = &solution.Vectors[At(i, 0, n)];
        for (int j = 0; j < n; ++j) {
            Pivot[s(j)] = Diag[s(j)] - Values[i];
            Upper[s(j)] = Off[s(j)];
            Band[s(j)] = 0.0;
            start += 6.180339887485e-9;
            start -= start >= 1e-8 ? 1e-8 : 0.0;
            x[j] = start;
        }
        for (int j = 0; j < n - 1; ++j) {
            if (std::fabs(Pivot[s(j)]) >= std::fabs(Off[s(j)])) {
                Pivot[s(j)] = orTol(Pivot[s(j)]);
                m[s(j)] = -Off[s(j)] / Pivot[s(j)];
            } else {
                m[s(j)] = -Pivot[s(j)] / Off[s(j)];
                Pivot[s(j)] = Off[s(j)];
                std::swap(Pivot[s(j + 1)], Upper[s(j)]);
                Band[s(j)] = orTol(Upper[s(j + 1)]);
                Upper[s(j + 1)] = 0.0;
            }
            Upper[s(j + 1)] += Band[s(j)] * m[s(j)];
            Pivot[s(j + 1)] += Upper[s(j)] * m[s(j)];
        }
        Pivot[s(n - 1)] = orTol(Pivot[s(n - 1)]);
        for (int pass = 1; pass <= 5; ++pass) {
            for (int j = 0; pass > 1 && j < n - 1; ++j) {
                if (std::fabs(Band[s(j)]) >= 1e-30) {
                    std::swap(x[j], x[j + 1]);
                }
                x[j + 1] += m[s(j)] * x[j];
            }
            double Largest = 0.0;
            for (int k = n - 1; k >= 0; --k) {
                x[k] -= k < n - 1 ? Upper[s(k)] * x[k + 1] : 0.0;
                x[k] -= k < n - 2 ? Band[s(k)] * x[k + 2] : 0.0;
                x[k] /= Pivot[s(k)];
                Largest = std::max(Largest, std::fabs(x[k]));
            }
            Largest = Largest <= 1e-20 ? 1e-20 : Largest;
            for (int k = 0; k < n; ++k) {
                x[k] *= 1e-5 / Largest;
            }
            if (pass > 1 && Largest > 1.0) {
                break;
            }
        }
        for (int k = n - 3; k >= 0; --k) {
            if (std::fabs(a(k, k)) >= 1e-30) {
                double sum = 0.0;
                for (int j = k + 1; j < n; ++j) {
                    sum += x[j] * a(j, k);
                }
                for (int j = k + 1; j < n; ++j) {
                    x[j] -= sum / a(k, k) * a(j, k);
                }
            }
        }
        while (std::fabs(Values[group] - Values[i]) >= 0.05) {
            ++group;
        }
        for (int k = group; k < i; ++k) {
            double product = 0.0;
            for (int j = 0; j < n; ++j) {
                product += x[j] * solution.Vectors[At(k, j, n)];
            }
            for (int j = 0; j < n; ++j) {
                x[j] -= product * solution.Vectors[At(k, j, n)];
            }
        }
        double sum = 1e-24;
        for (int j = 0; j < n; ++j) {
            sum += x[j] * x[j];
        }
        for (int j = 0; j < n; ++j) {
            x[j] /= std::sqrt(sum);
        }
    }
    return solution;
}

double LargestDifference(const double* x, const double* y, double sign, int n) {
    double largest = 0.0;
    for (int j = 0; j < n; ++j) {
        largest = std::max(largest, std::fabs(x[j] - sign * y[j]));
    }
    return largest;
}

struct Comparison {
    int Matrices;  // whose plain vectors are orthonormal, so that they were compared
    int Vectors;   // of them
    int Signs;     // of those vectors, the ones whose sign was compared
};

// Where the plain version gives orthonormal vectors, the solver gives the same ones, sign included: its blocks, lanes
// and further projections change roundings alone, and those come back in the vectors multiplied by norm / distance of
// values, below 1e6 here. Where changes of the matrix in its last digit turn the sign of the plain version itself,
// as they do for vectors that are small at the end of the tridiagonal matrix, either sign is right; so it is where a
// value hits a pivot of exactly 0 by chance, which is why orders from 40 on are compared without the sign.
void CompareWithPlain(const std::string& name, const Numbers& matrix, int n, bool allSigns, Comparison* comparison) {
    SCOPED_TRACE(name + " of order " + std::to_string(n));
    const Solution plain = SolvePlainly(matrix, n);
    const Solution solution = Solve(matrix, n);
    const double norm = RowSumNorm(matrix, n);
    for (std::size_t i = 0; i < plain.Values.size(); ++i) {
        EXPECT_NEAR(solution.Values[i], plain.Values[i], 1e-12 * norm);
    }
    if (Orthonormality(plain.Vectors, n) > OrthonormalityTolerance) {
        return;
    }
    std::vector<Solution> others;
    for (int k = 2; k < 10; ++k) {
        others.push_back(SolvePlainly(
            Symmetric(n, [&](int i, int j) { return matrix[At(i, j, n)] * (1.0 + (i + j) % k * 8.0 * Epsilon); }), n));
    }
    ++comparison->Matrices;
    for (int i = 0; i < n; ++i) {
        const double* found = &solution.Vectors[At(i, 0, n)];
        const double* expected = &plain.Vectors[At(i, 0, n)];
        const auto keepsSign = [&](const Solution& other) {
            return LargestDifference(expected, &other.Vectors[At(i, 0, n)], 1.0, n) < 1e-7;
        };
        const bool isSignFirm = allSigns || (n < 40 && std::all_of(others.begin(), others.end(), keepsSign));
        const double difference = LargestDifference(found, expected, 1.0, n);
        const double opposite = LargestDifference(found, expected, -1.0, n);
        EXPECT_LE(isSignFirm ? difference : std::min(difference, opposite), 1e-8) << "vector " << i;
        ++comparison->Vectors;
        comparison->Signs += isSignFirm;
    }
}

TEST(Eigensolver, AgreesWithPlainVersion) {
    Comparison comparison = {};
    for (const int n : {2, 3, 4, 7, 12, 31, 33, 70}) {
        for (unsigned seed = 1; seed <= 5; ++seed) {
            Random random = {std::mt19937(seed)};
            CompareWithPlain("random", Symmetric(n, [&](int i, int j) { return random() + (i == j ? 0.1 * i : 0.0); }),
                             n, false, &comparison);
        }
    }
    EXPECT_GE(comparison.Matrices, 20);
    EXPECT_GE(comparison.Signs, comparison.Vectors / 3);
}

// Degenerate levels whose vectors are chosen by the start sequence alone: equal blocks without any coupling.
TEST(Eigensolver, AgreesWithPlainVersionInDegenerateGroups) {
    Comparison comparison = {};
    for (const int n : {2, 3, 4, 5, 6, 9}) {
        CompareWithPlain("identity", Symmetric(n, [](int i, int j) { return i == j ? 1 : 0; }), n, true, &comparison);
        CompareWithPlain("diagonal", Symmetric(n, [](int i, int j) { return i == j ? 2 + i % 2 : 0; }), n, true,
                         &comparison);
        Random random = {std::mt19937(4)};
        const Numbers block = Symmetric(n, [&](int, int) { return random(); });
        CompareWithPlain(
            "two equal blocks",
            Symmetric(2 * n, [&](int i, int j) { return i / n == j / n ? block[At(i % n, j % n, n)] : 0.0; }), 2 * n,
            true, &comparison);
    }
    EXPECT_GE(comparison.Matrices, 6);
    EXPECT_EQ(comparison.Signs, comparison.Vectors);
}

}  // namespace
