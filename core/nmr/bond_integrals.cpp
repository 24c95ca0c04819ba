// SPDX-License-Identifier: MIT
// Integrals between an orbital on the nucleus's own atom a and one on another atom b. Each is an integral over the
// distance from a of a radial function and of the projection of the orbital of b on the angular functions of a.
//
// With r = r_a, lo = min(r, R), hi = max(r, R) and t in (-1, 1):
//     r_b = hi + lo t,   cos(theta_a) = lo (1 - t^2)/(2 hi) - t,   r^2 dr dcos(theta_a) = r^2 r_b/hi dr dt,
// which is smooth on both panels (0, R) and (R, infinity): Gauss-Legendre in t and on (0, R), Gauss-Laguerre outside.
#include "nmr/pair_integrals.h"

#include "ground/message_poll.h"
#include "numerics/elementary_functions.h"
#include "numerics/gauss_rules.h"

#include <cmath>
#include <cstring>

static const double squareRoot3 = 1.7320508075688772;
static const double pi = 3.141592653589793;
static const double diamagneticFactor = 17.7504539779;
// At this product of smallest exponent and distance the overlap is below 1e-20.
static const double largestDecay = 60.0;

// Orbitals that differ only by azimuth share a kind. Kinds 0 to 2 are sigma, 3 and 4 pi, 5 delta.
enum { KindS, KindPSigma, KindDSigma, KindPPi, KindDPi, KindDDelta, KindCount };

static const int kindOfOrbital[PairTableSize] = {KindS,   KindPPi, KindPPi,    KindPSigma, KindDSigma,
                                                 KindDPi, KindDPi, KindDDelta, KindDDelta};
static const int momentumOfKind[KindCount] = {0, 1, 2, 1, 2, 2};
static const int symmetryOfKind[KindCount] = {0, 0, 0, 1, 1, 2};
// Orbitals of different azimuthal function are orthogonal: 0 sigma, 1 and 2 pi, 3 and 4 delta.
static const int azimuthOfOrbital[PairTableSize] = {0, 1, 2, 0, 0, 1, 2, 3, 4};

// L_k on an orbital is a sum of orbitals of the same l: rows of (orbital, factor).
struct RotatedTerm {
    int Orbital;
    double Factor;
};
static const RotatedTerm rotatedOrbital[3][PairTableSize][2] = {
    {{},
     {},
     {{3, -1.0}},
     {{2, 1.0}},
     {{6, squareRoot3}},
     {{8, 1.0}},
     {{4, -squareRoot3}, {7, -1.0}},
     {{6, 1.0}},
     {{5, -1.0}}},
    {{},
     {{3, 1.0}},
     {},
     {{1, -1.0}},
     {{5, -squareRoot3}},
     {{4, squareRoot3}, {7, -1.0}},
     {{8, -1.0}},
     {{5, 1.0}},
     {{6, 1.0}}},
    {{}, {{2, -1.0}}, {{1, 1.0}}, {}, {}, {{6, -1.0}}, {{5, 1.0}}, {{8, -2.0}}, {{7, 2.0}}}};

// Sums over the points with one distance from a: of the orbital of b times sin(theta)^m cos(theta)^power.
typedef double Moments[KindCount][4];

// Radial integrals of the pairs of kinds of equal symmetry, [kind of a][kind of b].
struct RadialSums {
    double Charge[KindCount][KindCount];  // of 1/r_a
    double Gauge[KindCount][KindCount];   // of (r_b . r_a)/r_a^3 = 1/r_a - R cos(theta)/r_a^2
    double Cube[KindCount][KindCount];    // of 1/r_a^3; not for s orbitals of a
};

int PairOrbitalCount(int shell) {
    return shell < 1 || shell > 3 ? 0 : shell * shell;
}

// Normalisation of r^(shell - 1) e^(-zeta r) times the angular function of the orbital.
static double OrbitalNorm(int shell, int momentum, double zeta) {
    static const double factorials[4] = {1.0, 2.0, 24.0, 720.0};
    const double z = 2.0 * zeta;
    double power = z;
    for (int i = 1; i < shell; i++) {
        power *= z;
    }
    return power * std::sqrt(z / factorials[shell] * (2 * momentum + 1) / (4.0 * pi));
}

// The smallest rule with enough points; the largest one where none has enough. A large exponent may want more points
// than an integer holds, so they are limited before they become one.
static int LegendreRule(double decay, int powers) {
    const double points = std::fmin(4.0 * std::sqrt(decay), LargestLegendreRule);
    const int wanted = static_cast<int>(points) + powers;
    const int rule = (wanted - SmallestLegendreRule + LegendreRuleStep - 1) / LegendreRuleStep;
    return rule < 0 ? 0 : rule >= LegendreRuleCount ? LegendreRuleCount - 1 : rule;
}

// decay[i] := e^(-argument t) at the points t of the rule, rising.
static void FillDecays(const GaussRule* rule, double argument, double* decay) {
    const int half = rule->Count / 2;
    for (int i = 0; i < half; i++) {
        const double e = Exponential(argument * rule->Nodes[i]);
        decay[half - 1 - i] = e;
        decay[half + i] = 1.0 / e;
    }
}

// moments := sums over t at the distance r from a. decays [MomentumB + 1][count]: e^(-zeta lo t).
template <int MomentumA, int MomentumB>
static void SumMoments(const double* t, const double* weights, int count, int shellB, double r, double distance,
                       const double (*decays)[LargestLegendreRule], Moments moments) {
    const double lo = r < distance ? r : distance;
    const double hi = r < distance ? distance : r;
    const double ratio = lo / hi;
    double sums[KindCount][4] = {};
    for (int i = 0; i < count; i++) {
        const double c = 0.5 * ratio * (1.0 - t[i] * t[i]) - t[i];
        const double s2 = (1.0 - t[i] * t[i]) * (1.0 + 0.5 * ratio * (1.0 + t[i])) * (1.0 - 0.5 * ratio * (1.0 - t[i]));
        const double rb = hi + lo * t[i];
        const double weight = weights[i] * rb / hi;
        const double radial = shellB == 1 ? weight : shellB == 2 ? weight * rb : weight * rb * rb;
        double f = radial * decays[0][i];
        for (int k = 0; k < MomentumA + 2; k++) {
            sums[KindS][k] += f;
            f *= c;
        }
        if constexpr (MomentumB >= 1) {
            const double z = r * c - distance;
            const double p = (shellB == 2 ? weight : weight * rb) * decays[1][i];
            f = p * z;
            for (int k = 0; k < MomentumA + 2; k++) {
                sums[KindPSigma][k] += f;
                f *= c;
            }
            f = p * r * s2;
            for (int k = 0; k < MomentumA + 1; k++) {
                sums[KindPPi][k] += f;
                f *= c;
            }
            if constexpr (MomentumB >= 2) {
                const double d = weight * decays[2][i];
                f = d * (1.5 * z * z - 0.5 * rb * rb);
                for (int k = 0; k < MomentumA + 2; k++) {
                    sums[KindDSigma][k] += f;
                    f *= c;
                }
                f = squareRoot3 * d * r * s2 * z;
                for (int k = 0; k < MomentumA + 1; k++) {
                    sums[KindDPi][k] += f;
                    f *= c;
                }
                f = 0.5 * squareRoot3 * d * r * r * s2 * s2;
                for (int k = 0; k < MomentumA; k++) {
                    sums[KindDDelta][k] += f;
                    f *= c;
                }
            }
        }
    }
    std::memcpy(moments, sums, sizeof sums);
}

// Adds what the points at distance r from a, of the radial weight given, contribute. radialA: r^(n - 1) e^(-zeta r) for
// the s, p, d orbitals of a; radialB: what the moments of b leave out.
template <int MomentumA, int MomentumB> static void AddRadialPoint(const Moments moments, double weight, double r,
                                                                   double distance, const double* radialA,
                                                                   const double* radialB, RadialSums* sums) {
    for (int b = 0; b < KindCount; b++) {
        if (momentumOfKind[b] > MomentumB) {
            continue;
        }
        const int symmetry = symmetryOfKind[b];
        const double* m = moments[b];
        for (int a = 0; a < KindCount; a++) {
            if (momentumOfKind[a] > MomentumA || symmetryOfKind[a] != symmetry) {
                continue;
            }
            double plain;
            double withCosine;
            switch (a) {
            case KindPSigma:
                plain = m[1];
                withCosine = m[2];
                break;
            case KindDSigma:
                plain = 1.5 * m[2] - 0.5 * m[0];
                withCosine = 1.5 * m[3] - 0.5 * m[1];
                break;
            case KindDPi:
                plain = squareRoot3 * m[1];
                withCosine = squareRoot3 * m[2];
                break;
            case KindDDelta:
                plain = 0.5 * squareRoot3 * m[0];
                withCosine = 0.5 * squareRoot3 * m[1];
                break;
            default:
                plain = m[0];
                withCosine = m[1];
                break;
            }
            const double f = weight * radialA[momentumOfKind[a]] * radialB[momentumOfKind[b]];
            const double charge = f * r * plain;
            sums->Charge[a][b] += charge;
            sums->Gauge[a][b] += charge - f * distance * withCosine;
            sums->Cube[a][b] += f / r * plain;
        }
    }
}

// radial[l] := r^(n - 1) e^(-zeta r).
static void RadialFunctions(const PairOrbitals* atom, int momentum, double r, double* radial) {
    const double power = atom->Shell == 1 ? 1.0 : atom->Shell == 2 ? r : r * r;
    for (int l = 0; l <= momentum; l++) {
        radial[l] = power * Exponential(-atom->Zeta[l] * r);
    }
}

template <int MomentumA, int MomentumB>
static void SumRadially(const PairOrbitals* a, const PairOrbitals* b, double distance, RadialSums* sums) {
    double smallest[2] = {a->Zeta[0], b->Zeta[0]};
    double largest[2] = {a->Zeta[0], b->Zeta[0]};
    for (int l = 1; l <= MomentumA; l++) {
        smallest[0] = std::fmin(smallest[0], a->Zeta[l]);
        largest[0] = std::fmax(largest[0], a->Zeta[l]);
    }
    for (int l = 1; l <= MomentumB; l++) {
        smallest[1] = std::fmin(smallest[1], b->Zeta[l]);
        largest[1] = std::fmax(largest[1], b->Zeta[l]);
    }
    const GaussRule* angular = &LegendreRules[LegendreRule(largest[1] * distance, 4 + MomentumA + MomentumB)];
    const GaussRule* inner = &LegendreRules[LegendreRule((largest[0] + largest[1]) * distance / 2.0, 7)];
    const GaussRule* outer = &LaguerreRules[MomentumA + MomentumB > 2 ? 3 : 2];
    const int count = angular->Count;
    double t[LargestLegendreRule];
    double weights[LargestLegendreRule];
    double decays[3][LargestLegendreRule];
    double radialA[3];
    double radialB[3] = {};
    Moments moments;
    for (int i = 0; i < count / 2; i++) {
        t[count / 2 - 1 - i] = -angular->Nodes[i];
        t[count / 2 + i] = angular->Nodes[i];
        weights[count / 2 - 1 - i] = angular->Weights[i];
        weights[count / 2 + i] = angular->Weights[i];
    }
    for (int i = 0; i < inner->Count; i++) {
        const int half = inner->Count / 2;
        const double x = i < half ? -inner->Nodes[half - 1 - i] : inner->Nodes[i - half];
        const double r = 0.5 * distance * (1.0 + x);
        const double weight = 0.5 * distance * inner->Weights[i < half ? half - 1 - i : i - half];
        for (int l = 0; l <= MomentumB; l++) {
            if (l > 0 && b->Zeta[l] == b->Zeta[l - 1]) {
                std::memcpy(decays[l], decays[l - 1], sizeof decays[l]);
            } else {
                FillDecays(angular, b->Zeta[l] * r, decays[l]);
            }
            radialB[l] = Exponential(-b->Zeta[l] * distance);
        }
        SumMoments<MomentumA, MomentumB>(t, weights, count, b->Shell, r, distance, decays, moments);
        RadialFunctions(a, MomentumA, r, radialA);
        AddRadialPoint<MomentumA, MomentumB>(moments, weight, r, distance, radialA, radialB, sums);
    }
    const double scale = std::sqrt((smallest[0] + smallest[1]) * (largest[0] + largest[1]));
    for (int l = 0; l <= MomentumB; l++) {
        FillDecays(angular, b->Zeta[l] * distance, decays[l]);
    }
    for (int i = 0; i < outer->Count; i++) {
        const double r = distance + outer->Nodes[i] / scale;
        SumMoments<MomentumA, MomentumB>(t, weights, count, b->Shell, r, distance, decays, moments);
        RadialFunctions(a, MomentumA, r, radialA);
        for (int l = 0; l <= MomentumB; l++) {
            radialB[l] = Exponential(-b->Zeta[l] * r);
        }
        AddRadialPoint<MomentumA, MomentumB>(moments, outer->Weights[i] / scale, r, distance, radialA, radialB, sums);
    }
}

typedef void (*RadialSummation)(const PairOrbitals*, const PairOrbitals*, double, RadialSums*);

static const RadialSummation summations[3][3] = {{SumRadially<0, 0>, SumRadially<0, 1>, SumRadially<0, 2>},
                                                 {SumRadially<1, 0>, SumRadially<1, 1>, SumRadially<1, 2>},
                                                 {SumRadially<2, 0>, SumRadially<2, 1>, SumRadially<2, 2>}};

static double SmallestDecay(const PairOrbitals* atom) {
    double smallest = atom->Zeta[0];
    for (int l = 1; l < atom->Shell; l++) {
        smallest = atom->Zeta[l] < smallest ? atom->Zeta[l] : smallest;
    }
    return smallest;
}

// From the sums over kinds to the tables over orbitals.
static void FillTables(const PairOrbitals* a, const PairOrbitals* b, RadialSums* sums, PairBondIntegrals* result) {
    for (int i = 0; i < KindCount; i++) {
        for (int j = 0; j < KindCount; j++) {
            if (momentumOfKind[i] >= a->Shell || momentumOfKind[j] >= b->Shell) {
                continue;
            }
            const double norm = OrbitalNorm(a->Shell, momentumOfKind[i], a->Zeta[momentumOfKind[i]]) *
                                OrbitalNorm(b->Shell, momentumOfKind[j], b->Zeta[momentumOfKind[j]]) *
                                (symmetryOfKind[i] == 0 ? 2.0 * pi : pi);
            sums->Charge[i][j] *= norm;
            sums->Gauge[i][j] *= norm;
            sums->Cube[i][j] *= norm;
        }
    }
    const int countA = PairOrbitalCount(a->Shell);
    const int countB = PairOrbitalCount(b->Shell);
    for (int row = 0; row < countB; row++) {
        for (int column = 0; column < countA; column++) {
            const int kindA = kindOfOrbital[column];
            const int kindB = kindOfOrbital[row];
            if (azimuthOfOrbital[row] == azimuthOfOrbital[column]) {
                result->Charge[row][column] = diamagneticFactor * sums->Charge[kindA][kindB];
                result->Gauge[column][row] = diamagneticFactor * sums->Gauge[kindA][kindB];
            }
            for (int k = 0; k < 3; k++) {
                for (int term = 0; term < 2; term++) {
                    const RotatedTerm* rotated = &rotatedOrbital[k][column][term];
                    if (rotated->Factor != 0.0 && azimuthOfOrbital[row] == azimuthOfOrbital[rotated->Orbital]) {
                        const double value = rotated->Factor * sums->Cube[kindOfOrbital[rotated->Orbital]][kindB];
                        // L_a/r_a^3 is antihermitian
                        result->Bond[k][row][column] += value;
                        result->Cross[k][column][row] -= value;
                    }
                }
            }
        }
    }
}

void BondPairIntegrals(const PairOrbitals* a, const PairOrbitals* b, double r, PairBondIntegrals* result) {
    PollMessages(200);
    std::memset(result, 0, sizeof *result);
    if (PairOrbitalCount(a->Shell) == 0 || PairOrbitalCount(b->Shell) == 0) {
        return;
    }
    const double decayA = SmallestDecay(a);
    const double decayB = SmallestDecay(b);
    if (!(decayA > 0.0) || !(decayB > 0.0) || !(std::fmin(decayA, decayB) * r < largestDecay)) {
        return;
    }
    RadialSums sums = {};
    summations[a->Shell - 1][b->Shell - 1](a, b, r, &sums);
    FillTables(a, b, &sums, result);
}
