// SPDX-License-Identifier: MIT
// Three-centre integrals by quadrature: the geometry, the inner sums of each pair of exponents, and the tables.
//
// All elements are linear in scalar functions of u. With F(m, j) the integral of t^(2m) s^(-j) over t and the scale s
// of the Gaussians, q = r - P, d = P - A, E = r_a / r_a^3, and a common factor 4 pi left out:
//     <E_j>          = d_j F(1,0)
//     <E_j q_k>      = delta_jk F(1,1)/2 - d_j d_k F(2,0)
//     <E_j q_k q_l>  = d_j d_k d_l F(3,0) - (delta_jk d_l + delta_jl d_k + delta_kl d_j) F(2,1)/2
//                      + delta_kl d_j F(1,1)/2
//     <1/r_a>        = F(0,1)/2
//     <q_k/r_a>      = -d_k F(1,1)/2
//     <q_k q_l/r_a>  = d_k d_l F(2,1)/2 + delta_kl (F(0,2) - F(1,2))/4
// The gauge operator is 1/r_a + (A - C).E; r_a x nabla turns the Gaussian of the ket into -2 (1 - u) s r_a x (A - C)
// times itself, and its p factor into a unit vector.
#include "nmr/three_centre_quadrature.h"

#include "nmr/three_centre_kernels.h"
#include "numerics/mathematical_constants.h"
#include "numerics/reduced_bessel.h"

#include <cmath>

static constexpr double LeastFastStart = 4.0;  // the kernels know x >= 2 only

// Vectors between the centres and their products.
struct TripleGeometry {
    double FromAToB[3];  // B - A
    double FromAToC[3];  // C - A
    double FromCToB[3];  // B - C
    double Cross[3];     // (B - A) x (C - A)
    double SquareAC;     // |C - A|^2
    double SquareBC;     // |B - C|^2
    double Dot;          // (C - A) . (B - C)
};

static void FillGeometry(const double* b, const double* c, const double* a, TripleGeometry& geometry) {
    for (int i = 0; i < 3; ++i) {
        geometry.FromAToB[i] = b[i] - a[i];
        geometry.FromAToC[i] = c[i] - a[i];
        geometry.FromCToB[i] = b[i] - c[i];
    }
    const double* ab = geometry.FromAToB;
    const double* ac = geometry.FromAToC;
    const double* cb = geometry.FromCToB;
    geometry.Cross[0] = ab[1] * ac[2] - ab[2] * ac[1];
    geometry.Cross[1] = ab[2] * ac[0] - ab[0] * ac[2];
    geometry.Cross[2] = ab[0] * ac[1] - ab[1] * ac[0];
    geometry.SquareAC = ac[0] * ac[0] + ac[1] * ac[1] + ac[2] * ac[2];
    geometry.SquareBC = cb[0] * cb[0] + cb[1] * cb[1] + cb[2] * cb[2];
    geometry.Dot = ac[0] * cb[0] + ac[1] * cb[1] + ac[2] * cb[2];
}

// The inner sums node by node, for two atoms so close that x comes below 2.
static void InnerSumsOfClosePair(LaneMoments& moments) {
    for (int lane = 0; lane < OuterLanes; ++lane) {
        for (int m = 0; m < 4; ++m) {
            moments.Zero[m][lane] = 0.0;
            moments.One[m][lane] = 0.0;
        }
        if (lane >= OuterCount) {
            continue;
        }
        for (int i = 0; i < 2 * InnerPairs; ++i) {
            const double t = i % 2 == 0 ? InnerNodes[i / 2] : InnerMirrors[i / 2];
            double k0 = 0.0;
            double xk1 = 0.0;
            ReducedBesselPair(std::sqrt(moments.Slope[lane] * (t * t) + moments.Start[lane]), &k0, &xk1);
            double weight = InnerWeights[i / 2];
            for (int m = 0; m < 4; ++m) {
                moments.Zero[m][lane] += k0 * weight;
                moments.One[m][lane] += xk1 * weight;
                weight *= t * t;
            }
        }
    }
}

static void FillMoments(const TripleGeometry& geometry, double zetaB, double zetaC, LaneMoments& moments) {
    const double squareB = zetaB * zetaB;
    const double squareC = zetaC * zetaC;
    double leastStart = LeastFastStart;
    for (int lane = 0; lane < OuterLanes; ++lane) {
        const double u = OuterNodes[lane];
        const double v = OuterComplements[lane];
        const double mixed = squareC * u + squareB * v;
        const double distance = (geometry.SquareBC * u + 2.0 * geometry.Dot) * u + geometry.SquareAC;  // |P - A|^2
        moments.Ratio[lane] = 2.0 * (u * v) / mixed;
        moments.Slope[lane] = mixed / (u * v) * distance;
        moments.Start[lane] = mixed * geometry.SquareBC;
        leastStart = moments.Start[lane] < leastStart ? moments.Start[lane] : leastStart;
    }
    if (leastStart < LeastFastStart) {
        InnerSumsOfClosePair(moments);
    } else {
        KernelsOfThreeCentres().InnerSums(moments);
    }
}

// Component k of (unit vector l) x vector.
static double CrossOfUnit(int l, const double* vector, int k) {
    if (k == l) {
        return 0.0;
    }
    const int m = 3 - k - l;
    return (l - k + 3) % 3 == 1 ? vector[m] : -vector[m];
}

static void FillSS(const TripleGeometry& geometry, const double* sums, double norm, ThreeCentreTables& tables) {
    const double alongAC = geometry.SquareAC * sums[0] + geometry.Dot * sums[1];
    const double alongCB = geometry.Dot * sums[0] + geometry.SquareBC * sums[1];
    tables.Gauge[0][0] = norm * (0.5 * sums[2] - alongAC);
    tables.ReverseGauge[0][0] = norm * (0.5 * sums[2] - alongAC - alongCB);
    for (int k = 0; k < 3; ++k) {
        tables.Magnetic[k][0][0] = norm * (sums[3] * geometry.Cross[k]);
    }
}

// s on B, p on C.
static void FillSP(const TripleGeometry& geometry, const double* sums, double norm, ThreeCentreTables& tables) {
    const double* ac = geometry.FromAToC;
    const double* cb = geometry.FromCToB;
    // the vector E of an element times C - A and times B - C, as multiples of both
    const double acOfAC = 0.5 * sums[0] - (geometry.SquareAC * sums[1] + geometry.Dot * sums[2]);
    const double acOfCB = geometry.SquareAC * sums[3] + geometry.Dot * sums[4];
    const double cbOfAC = -(geometry.Dot * sums[1] + geometry.SquareBC * sums[2]);
    const double cbOfCB = 0.5 * sums[0] + (geometry.Dot * sums[3] + geometry.SquareBC * sums[4]);
    const double gaugeAC = -0.5 * sums[0] - acOfAC;
    const double gaugeCB = 0.5 * sums[5] - acOfCB;
    for (int l = 0; l < 3; ++l) {
        tables.Gauge[0][l + 1] = norm * (gaugeAC * ac[l] + gaugeCB * cb[l]);
        tables.ReverseGauge[0][l + 1] = norm * ((gaugeAC - cbOfAC) * ac[l] + (gaugeCB - cbOfCB) * cb[l]);
        const double cross = sums[8] * cb[l] - sums[7] * ac[l];
        for (int k = 0; k < 3; ++k) {
            tables.Magnetic[k][0][l + 1] =
                norm * (cross * geometry.Cross[k] - sums[6] * CrossOfUnit(l, geometry.FromAToB, k));
        }
    }
}

// p on B, s on C.
static void FillPS(const TripleGeometry& geometry, const double* sums, double norm, ThreeCentreTables& tables) {
    const double* ac = geometry.FromAToC;
    const double* cb = geometry.FromCToB;
    const double acOfAC = 0.5 * sums[0] - (geometry.SquareAC * sums[1] + geometry.Dot * sums[2]);
    const double acOfCB = -(geometry.SquareAC * sums[3] + geometry.Dot * sums[4]);
    const double cbOfAC = -(geometry.Dot * sums[1] + geometry.SquareBC * sums[2]);
    const double cbOfCB = 0.5 * sums[0] - (geometry.Dot * sums[3] + geometry.SquareBC * sums[4]);
    const double gaugeAC = -0.5 * sums[0] - acOfAC;
    const double gaugeCB = -0.5 * sums[5] - acOfCB;
    for (int l = 0; l < 3; ++l) {
        tables.Gauge[l + 1][0] = norm * (gaugeAC * ac[l] + gaugeCB * cb[l]);
        tables.ReverseGauge[l + 1][0] = norm * ((gaugeAC - cbOfAC) * ac[l] + (gaugeCB - cbOfCB) * cb[l]);
        const double cross = -(sums[7] * ac[l] + sums[8] * cb[l]);
        for (int k = 0; k < 3; ++k) {
            tables.Magnetic[k][l + 1][0] = norm * (cross * geometry.Cross[k] + sums[6] * CrossOfUnit(l, ac, k));
        }
    }
}

static void FillPP(const TripleGeometry& geometry, const double* sums, double norm, ThreeCentreTables& tables) {
    const double* ac = geometry.FromAToC;
    const double* cb = geometry.FromCToB;
    double alongAC[5];  // the five coefficients of E's part along d, times C - A
    double alongCB[5];  // and times B - C
    for (int i = 0; i < 5; ++i) {
        alongAC[i] = geometry.SquareAC * sums[3 + 2 * i] + geometry.Dot * sums[4 + 2 * i];
        alongCB[i] = geometry.Dot * sums[3 + 2 * i] + geometry.SquareBC * sums[4 + 2 * i];
    }
    for (int m = 0; m < 3; ++m) {
        const double bra = 0.5 * (sums[0] * ac[m] + sums[1] * cb[m]);
        const double turn = sums[22] * ac[m] + sums[23] * cb[m];
        for (int l = 0; l < 3; ++l) {
            const double ket = 0.5 * (sums[2] * cb[l] - sums[0] * ac[l]);
            const double same = m == l ? 1.0 : 0.0;
            const double products[5] = {same, ac[m] * ac[l], ac[m] * cb[l], cb[m] * ac[l], cb[m] * cb[l]};
            double timesAC = ket * ac[m] - bra * ac[l];
            double timesCB = ket * cb[m] - bra * cb[l];
            double cross = 0.0;
            for (int i = 0; i < 5; ++i) {
                timesAC += alongAC[i] * products[i];
                timesCB += alongCB[i] * products[i];
                cross += sums[15 + i] * products[i];
            }
            const double inverse = 0.5 * (sums[0] * products[1] - sums[2] * products[2] + sums[1] * products[3] +
                                          sums[13] * products[4] + 0.5 * sums[14] * same);
            tables.Gauge[m + 1][l + 1] = norm * (inverse - timesAC);
            tables.ReverseGauge[m + 1][l + 1] = norm * (inverse - timesAC - timesCB);
            const double back = sums[21] * cb[l] - sums[20] * ac[l];
            for (int k = 0; k < 3; ++k) {
                tables.Magnetic[k][m + 1][l + 1] =
                    norm * (cross * geometry.Cross[k] + turn * CrossOfUnit(l, geometry.FromAToB, k) +
                            back * CrossOfUnit(m, ac, k));
            }
            if (m != l) {  // the product of the two unit vectors
                const int k = 3 - m - l;
                const double unit = 0.5 * norm * sums[24];
                tables.Magnetic[k][m + 1][l + 1] += (l - m + 3) % 3 == 1 ? unit : -unit;
            }
        }
    }
}

static SuperpositionWeight WeightOf(const SlaterAtom& atom, int orbital) {
    const double zeta = atom.Zeta[orbital];
    return atom.Shell == 2 && orbital == 0 ? SuperpositionWeight{-1.0, 0.5 * zeta * zeta}
                                           : SuperpositionWeight{zeta, 0.0};
}

// The norm of exp(-zr), r exp(-zr) for 2s, r_k exp(-zr) for 2p.
static double NormOf(const SlaterAtom& atom, int orbital) {
    const double zeta = atom.Zeta[orbital];
    const double cube = zeta * zeta * zeta;
    if (atom.Shell == 1) {
        return std::sqrt(cube / Pi);
    }
    return std::sqrt(cube * (zeta * zeta) / (orbital == 0 ? 3.0 * Pi : Pi));
}

void QuadratureThreeCentre(const SlaterAtom& b, const SlaterAtom& c, const double* positionA,
                           ThreeCentreTables& tables) {
    TripleGeometry geometry;
    FillGeometry(b.Position, c.Position, positionA, geometry);
    const int kindsB = b.Shell == 1 ? 1 : 2;
    const int kindsC = c.Shell == 1 ? 1 : 2;
    LaneMoments moments[4];  // of s-s, s-p, p-s, p-p
    LanePairs pairs = {};
    for (int i = 0; i < kindsB; ++i) {
        for (int j = 0; j < kindsC; ++j) {
            const int sourceI = i == 1 && b.Zeta[0] == b.Zeta[1] ? 0 : i;  // equal exponents share their sums
            const int sourceJ = j == 1 && c.Zeta[0] == c.Zeta[1] ? 0 : j;
            if (sourceI == i && sourceJ == j) {
                FillMoments(geometry, b.Zeta[i], c.Zeta[j], moments[2 * i + j]);
            }
            pairs.Moments[2 * i + j] = &moments[2 * sourceI + sourceJ];
            pairs.First[2 * i + j] = WeightOf(b, i);
            pairs.Second[2 * i + j] = WeightOf(c, j);
        }
    }
    double sums[SumCount];
    KernelsOfThreeCentres().WeightedSums(pairs, sums);
    FillSS(geometry, sums + SumsOfSS, NormOf(b, 0) * NormOf(c, 0), tables);
    if (kindsC == 2) {
        FillSP(geometry, sums + SumsOfSP, NormOf(b, 0) * NormOf(c, 1), tables);
    }
    if (kindsB == 2) {
        FillPS(geometry, sums + SumsOfPS, NormOf(b, 1) * NormOf(c, 0), tables);
        if (kindsC == 2) {
            FillPP(geometry, sums + SumsOfPP, NormOf(b, 1) * NormOf(c, 1), tables);
        }
    }
}
