// SPDX-License-Identifier: MIT
// Integrals between an orbital on the nucleus's own atom a and one on another atom b. Each is an integral over the
// distance from a of a radial function and of the projection of the orbital of b on the angular functions of a.
//
// With r = r_a, lo = min(r, R), hi = max(r, R) and t in (-1, 1):
//     r_b = hi + lo t,   cos(theta_a) = lo (1 - t^2)/(2 hi) - t,   r^2 dr dcos(theta_a) = r^2 r_b/hi dr dt,
// which is smooth on both panels (0, R) and (R, infinity): Gauss-Legendre in t and on (0, R), Gauss-Laguerre outside.
#include "nmr/pair_integrals.h"

#include "ground/message_poll.h"
#include "nmr/shielding_constants.h"
#include "numerics/elementary_functions.h"
#include "numerics/gauss_rules.h"
#include "numerics/mathematical_constants.h"

#include <algorithm>
#include <cmath>

// At this product of smallest exponent and distance the overlap is below 1e-20.
static constexpr double LargestDecay = 60.0;

// Orbitals that differ only by azimuth share a kind. Kinds 0 to 2 are sigma, 3 and 4 pi, 5 delta.
enum { KindS, KindPSigma, KindDSigma, KindPPi, KindDPi, KindDDelta, KindCount };

static constexpr int KindOfOrbital[LargestOrbitals] = {KindS,   KindPPi, KindPPi,    KindPSigma, KindDSigma,
                                                       KindDPi, KindDPi, KindDDelta, KindDDelta};
static constexpr int MomentumOfKind[KindCount] = {0, 1, 2, 1, 2, 2};
static constexpr int SymmetryOfKind[KindCount] = {0, 0, 0, 1, 1, 2};
// Orbitals of different azimuthal function are orthogonal: 0 sigma, 1 and 2 pi, 3 and 4 delta.
static constexpr int AzimuthOfOrbital[LargestOrbitals] = {0, 1, 2, 0, 0, 1, 2, 3, 4};

// L_k on an orbital is a sum of orbitals of the same l: rows of (orbital, factor).
struct RotatedTerm {
    int Orbital;
    double Factor;
};
static constexpr RotatedTerm RotatedOrbital[3][LargestOrbitals][2] = {
    {{},
     {},
     {{3, -1.0}},
     {{2, 1.0}},
     {{6, RootThree}},
     {{8, 1.0}},
     {{4, -RootThree}, {7, -1.0}},
     {{6, 1.0}},
     {{5, -1.0}}},
    {{},
     {{3, 1.0}},
     {},
     {{1, -1.0}},
     {{5, -RootThree}},
     {{4, RootThree}, {7, -1.0}},
     {{8, -1.0}},
     {{5, 1.0}},
     {{6, 1.0}}},
    {{}, {{2, -1.0}}, {{1, 1.0}}, {}, {}, {{6, -1.0}}, {{5, 1.0}}, {{8, -2.0}}, {{7, 2.0}}}};

// Sums over the points with one distance from a: of the orbital of b times sin(theta)^m cos(theta)^power.
using Moments = double[KindCount][4];

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
    static constexpr double Factorials[4] = {1.0, 2.0, 24.0, 720.0};
    const double z = 2.0 * zeta;
    double power = z;
    for (int i = 1; i < shell; ++i) {
        power *= z;
    }
    return power * std::sqrt(z / Factorials[shell] * (2 * momentum + 1) / (4.0 * Pi));
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
static void FillDecays(const GaussRule& rule, double argument, double* decay) {
    const int half = rule.Count / 2;
    for (int i = 0; i < half; ++i) {
        const double e = Exponential(argument * rule.Nodes[i]);
        decay[half - 1 - i] = e;
        decay[half + i] = 1.0 / e;
    }
}

// A Legendre rule with both signs of its nodes, rising.
struct WholeRule {
    int Count;
    double Nodes[LargestLegendreRule];
    double Weights[LargestLegendreRule];
};

static void FillWholeRule(const GaussRule& rule, WholeRule& whole) {
    const int half = rule.Count / 2;
    whole.Count = rule.Count;
    for (int i = 0; i < half; ++i) {
        whole.Nodes[half - 1 - i] = -rule.Nodes[i];
        whole.Nodes[half + i] = rule.Nodes[i];
        whole.Weights[half - 1 - i] = rule.Weights[i];
        whole.Weights[half + i] = rule.Weights[i];
    }
}

// sums[k] += f c^k.
template <int Count> static void AddPowers(double f, double c, double* sums) {
    for (int k = 0; k < Count; ++k) {
        sums[k] += f;
        f *= c;
    }
}

// moments := sums over t at the distance r from a. decays [MomentumB + 1][count]: e^(-zeta lo t).
template <int MomentumA, int MomentumB>
static void SumMoments(const WholeRule& rule, int shellB, double r, double distance,
                       const double (&decays)[3][LargestLegendreRule], Moments& moments) {
    const double lo = r < distance ? r : distance;
    const double hi = r < distance ? distance : r;
    const double ratio = lo / hi;
    Moments sums = {};
    for (int i = 0; i < rule.Count; ++i) {
        const double t = rule.Nodes[i];
        const double c = 0.5 * ratio * (1.0 - t * t) - t;  // cosine, and square of the sine, of theta_a
        const double s2 = (1.0 - t * t) * (1.0 + 0.5 * ratio * (1.0 + t)) * (1.0 - 0.5 * ratio * (1.0 - t));
        const double rb = hi + lo * t;
        const double weight = rule.Weights[i] * rb / hi;
        const double radial = shellB == 1 ? weight : shellB == 2 ? weight * rb : weight * rb * rb;
        AddPowers<MomentumA + 2>(radial * decays[0][i], c, sums[KindS]);
        if constexpr (MomentumB >= 1) {
            const double z = r * c - distance;
            const double p = (shellB == 2 ? weight : weight * rb) * decays[1][i];
            AddPowers<MomentumA + 2>(p * z, c, sums[KindPSigma]);
            AddPowers<MomentumA + 1>(p * r * s2, c, sums[KindPPi]);
            if constexpr (MomentumB >= 2) {
                const double d = weight * decays[2][i];
                AddPowers<MomentumA + 2>(d * (1.5 * z * z - 0.5 * rb * rb), c, sums[KindDSigma]);
                AddPowers<MomentumA + 1>(RootThree * d * r * s2 * z, c, sums[KindDPi]);
                AddPowers<MomentumA>(0.5 * RootThree * d * r * r * s2 * s2, c, sums[KindDDelta]);
            }
        }
    }
    std::copy(&sums[0][0], &sums[0][0] + KindCount * 4, &moments[0][0]);
}

// What an angular function of a projects out of the moments of an orbital of b, and the same times cos(theta).
struct Projection {
    double Plain;
    double WithCosine;
};

static Projection ProjectionOn(int kind, const double* m) {
    switch (kind) {
    case KindPSigma:
        return {m[1], m[2]};
    case KindDSigma:
        return {1.5 * m[2] - 0.5 * m[0], 1.5 * m[3] - 0.5 * m[1]};
    case KindDPi:
        return {RootThree * m[1], RootThree * m[2]};
    case KindDDelta:
        return {0.5 * RootThree * m[0], 0.5 * RootThree * m[1]};
    default:
        return {m[0], m[1]};
    }
}

// Adds what the points at distance r from a, of the radial weight given, contribute. radialA: r^(n - 1) e^(-zeta r) for
// the s, p, d orbitals of a; radialB: what the moments of b leave out.
template <int MomentumA, int MomentumB> static void AddRadialPoint(const Moments& moments, double weight, double r,
                                                                   double distance, const double* radialA,
                                                                   const double* radialB, RadialSums& sums) {
    for (int b = 0; b < KindCount; ++b) {
        if (MomentumOfKind[b] > MomentumB) {
            continue;
        }
        const int symmetry = SymmetryOfKind[b];
        const double* m = moments[b];
        for (int a = 0; a < KindCount; ++a) {
            if (MomentumOfKind[a] > MomentumA || SymmetryOfKind[a] != symmetry) {
                continue;
            }
            const Projection p = ProjectionOn(a, m);
            const double f = weight * radialA[MomentumOfKind[a]] * radialB[MomentumOfKind[b]];
            const double charge = f * r * p.Plain;
            sums.Charge[a][b] += charge;
            sums.Gauge[a][b] += charge - f * distance * p.WithCosine;
            sums.Cube[a][b] += f / r * p.Plain;
        }
    }
}

// radial[l] := r^(n - 1) e^(-zeta r).
static void RadialFunctions(const SlaterAtom& atom, int momentum, double r, double* radial) {
    const double power = atom.Shell == 1 ? 1.0 : atom.Shell == 2 ? r : r * r;
    for (int l = 0; l <= momentum; ++l) {
        radial[l] = power * Exponential(-atom.Zeta[l] * r);
    }
}

// Of the exponents of an atom, up to the momentum that counts.
struct ExponentRange {
    double Smallest;
    double Largest;
};

static ExponentRange RangeOfExponents(const SlaterAtom& atom, int momentum) {
    ExponentRange range = {atom.Zeta[0], atom.Zeta[0]};
    for (int l = 1; l <= momentum; ++l) {
        range.Smallest = std::fmin(range.Smallest, atom.Zeta[l]);
        range.Largest = std::fmax(range.Largest, atom.Zeta[l]);
    }
    return range;
}

// The panel (0, R), by a Legendre rule.
template <int MomentumA, int MomentumB> static void SumInside(const SlaterAtom& a, const SlaterAtom& b, double distance,
                                                              const GaussRule& angular, const GaussRule& radial,
                                                              RadialSums& sums) {
    WholeRule angles;
    WholeRule radii;
    FillWholeRule(angular, angles);
    FillWholeRule(radial, radii);
    double decays[3][LargestLegendreRule];
    double radialA[3];
    double radialB[3] = {};
    Moments moments;
    for (int i = 0; i < radii.Count; ++i) {
        const double r = 0.5 * distance * (1.0 + radii.Nodes[i]);
        const double weight = 0.5 * distance * radii.Weights[i];
        for (int l = 0; l <= MomentumB; ++l) {
            if (l > 0 && b.Zeta[l] == b.Zeta[l - 1]) {
                std::copy(decays[l - 1], decays[l - 1] + angles.Count, decays[l]);
            } else {
                FillDecays(angular, b.Zeta[l] * r, decays[l]);
            }
            radialB[l] = Exponential(-b.Zeta[l] * distance);
        }
        SumMoments<MomentumA, MomentumB>(angles, b.Shell, r, distance, decays, moments);
        RadialFunctions(a, MomentumA, r, radialA);
        AddRadialPoint<MomentumA, MomentumB>(moments, weight, r, distance, radialA, radialB, sums);
    }
}

// The panel (R, infinity), by a Laguerre rule; scale makes its decay that of the integrand.
template <int MomentumA, int MomentumB> static void SumOutside(const SlaterAtom& a, const SlaterAtom& b,
                                                               double distance, double scale, const GaussRule& angular,
                                                               const GaussRule& radial, RadialSums& sums) {
    WholeRule angles;
    FillWholeRule(angular, angles);
    double decays[3][LargestLegendreRule];
    double radialA[3];
    double radialB[3] = {};
    Moments moments;
    for (int l = 0; l <= MomentumB; ++l) {
        FillDecays(angular, b.Zeta[l] * distance, decays[l]);
    }
    for (int i = 0; i < radial.Count; ++i) {
        const double r = distance + radial.Nodes[i] / scale;
        SumMoments<MomentumA, MomentumB>(angles, b.Shell, r, distance, decays, moments);
        RadialFunctions(a, MomentumA, r, radialA);
        for (int l = 0; l <= MomentumB; ++l) {
            radialB[l] = Exponential(-b.Zeta[l] * r);
        }
        AddRadialPoint<MomentumA, MomentumB>(moments, radial.Weights[i] / scale, r, distance, radialA, radialB, sums);
    }
}

template <int MomentumA, int MomentumB>
static void SumRadially(const SlaterAtom& a, const SlaterAtom& b, double distance, RadialSums& sums) {
    const ExponentRange rangeA = RangeOfExponents(a, MomentumA);
    const ExponentRange rangeB = RangeOfExponents(b, MomentumB);
    const GaussRule& angular = LegendreRules[LegendreRule(rangeB.Largest * distance, 4 + MomentumA + MomentumB)];
    const GaussRule& inside = LegendreRules[LegendreRule((rangeA.Largest + rangeB.Largest) * distance / 2.0, 7)];
    const GaussRule& outside = LaguerreRules[MomentumA + MomentumB > 2 ? 3 : 2];
    const double scale = std::sqrt((rangeA.Smallest + rangeB.Smallest) * (rangeA.Largest + rangeB.Largest));
    SumInside<MomentumA, MomentumB>(a, b, distance, angular, inside, sums);
    SumOutside<MomentumA, MomentumB>(a, b, distance, scale, angular, outside, sums);
}

using RadialSummation = void (*)(const SlaterAtom&, const SlaterAtom&, double, RadialSums&);

// [momentum of a][momentum of b]
static constexpr RadialSummation Summations[3][3] = {{SumRadially<0, 0>, SumRadially<0, 1>, SumRadially<0, 2>},
                                                     {SumRadially<1, 0>, SumRadially<1, 1>, SumRadially<1, 2>},
                                                     {SumRadially<2, 0>, SumRadially<2, 1>, SumRadially<2, 2>}};

static double SmallestDecay(const SlaterAtom& atom) {
    double smallest = atom.Zeta[0];
    for (int l = 1; l < atom.Shell; ++l) {
        smallest = atom.Zeta[l] < smallest ? atom.Zeta[l] : smallest;
    }
    return smallest;
}

static void Normalise(const SlaterAtom& a, const SlaterAtom& b, RadialSums& sums) {
    for (int i = 0; i < KindCount; ++i) {
        for (int j = 0; j < KindCount; ++j) {
            if (MomentumOfKind[i] >= a.Shell || MomentumOfKind[j] >= b.Shell) {
                continue;
            }
            const double norm = OrbitalNorm(a.Shell, MomentumOfKind[i], a.Zeta[MomentumOfKind[i]]) *
                                OrbitalNorm(b.Shell, MomentumOfKind[j], b.Zeta[MomentumOfKind[j]]) *
                                (SymmetryOfKind[i] == 0 ? 2.0 * Pi : Pi);
            sums.Charge[i][j] *= norm;
            sums.Gauge[i][j] *= norm;
            sums.Cube[i][j] *= norm;
        }
    }
}

// L_a/r_a^3 between orbital row of b and orbital column of a, and its mirror image: it is antihermitian.
static void FillMagneticEntry(const RadialSums& sums, int row, int column, PairBondIntegrals& result) {
    for (int k = 0; k < 3; ++k) {
        for (const RotatedTerm& rotated : RotatedOrbital[k][column]) {
            if (rotated.Factor != 0.0 && AzimuthOfOrbital[row] == AzimuthOfOrbital[rotated.Orbital]) {
                const double value = rotated.Factor * sums.Cube[KindOfOrbital[rotated.Orbital]][KindOfOrbital[row]];
                result.Bond[k][row][column] += value;
                result.Cross[k][column][row] -= value;
            }
        }
    }
}

// From the sums over kinds to the tables over orbitals.
static void FillTables(const SlaterAtom& a, const SlaterAtom& b, const RadialSums& sums, PairBondIntegrals& result) {
    for (int row = 0; row < PairOrbitalCount(b.Shell); ++row) {
        for (int column = 0; column < PairOrbitalCount(a.Shell); ++column) {
            if (AzimuthOfOrbital[row] == AzimuthOfOrbital[column]) {
                const int kindA = KindOfOrbital[column];
                const int kindB = KindOfOrbital[row];
                result.Charge[row][column] = IsotropicFactor * sums.Charge[kindA][kindB];
                result.Gauge[column][row] = IsotropicFactor * sums.Gauge[kindA][kindB];
            }
            FillMagneticEntry(sums, row, column, result);
        }
    }
}

void BondPairIntegrals(const SlaterAtom& a, const SlaterAtom& b, double r, PairBondIntegrals& result) {
    PollMessages(200);
    result = {};
    if (PairOrbitalCount(a.Shell) == 0 || PairOrbitalCount(b.Shell) == 0) {
        return;
    }
    const double decayA = SmallestDecay(a);
    const double decayB = SmallestDecay(b);
    if (!(decayA > 0.0) || !(decayB > 0.0) || !(std::fmin(decayA, decayB) * r < LargestDecay)) {
        return;
    }
    RadialSums sums = {};
    Summations[a.Shell - 1][b.Shell - 1](a, b, r, sums);
    Normalise(a, b, sums);
    FillTables(a, b, sums, result);
}
