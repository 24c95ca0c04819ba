// SPDX-License-Identifier: MIT
// The three-centre quadrature order by order, and elements put together from it.
#include "tests/unit/nmr/three_centre_oracle.h"

#include "numerics/quadrature_rules.h"
#include "numerics/reduced_bessel.h"

#include <cmath>
#include <cstdlib>
#include <initializer_list>

static constexpr double Pi = 3.14159265358979323846;

static double WholePower(double x, int n) {
    return n < 0 ? 1.0 / WholePower(x, -n) : n == 0 ? 1.0 : x * WholePower(x, n - 1);
}

double ThreeCentreQuadrature(int m, int k1, int k2, int k3, const QuadratureContext& context) {
    const int order = std::abs(k3 + 1);
    double sum = 0.0;
    for (int i = 0; i < OuterCount; ++i) {
        const double u = OuterNodes[i];
        const double v = 1.0 - u;
        const double y = (context.SquareC / v + context.SquareB / u) / 4.0;
        double inner = 0.0;
        for (int j = 0; j < InnerPairs; ++j) {
            for (const double t : {InnerNodes[j], InnerMirrors[j]}) {
                const double x = ((context.SquareBC * u + 2.0 * context.Dot) * u + context.SquareAC) * (t * t) +
                                 u * v * context.SquareBC;
                inner += InnerWeights[j] * WholePower(t, 2 * m) * ReducedBessel(order, 2.0 * std::sqrt(x * y));
            }
        }
        sum += OuterWeights[i] * std::sqrt(WholePower(u, k1)) * std::sqrt(WholePower(v, k2)) * inner /
               WholePower(y, order);
    }
    return 0.5 * WholePower(2.0, std::abs(k3) - 2 * order) * sum;
}

namespace {

double NormOf(int orbital, double zeta) {
    return orbital == 0   ? std::sqrt(WholePower(zeta, 3) / Pi)
           : orbital == 1 ? std::sqrt(WholePower(zeta, 5) / (3.0 * Pi))
                          : std::sqrt(WholePower(zeta, 5) / Pi);
}

void Cross(const double* a, const double* b, double* result) {
    for (int k = 0; k < 3; ++k) {
        result[k] = a[(k + 1) % 3] * b[(k + 2) % 3] - a[(k + 2) % 3] * b[(k + 1) % 3];
    }
}

}  // namespace

double QuadratureElement(int component, int bra, int ket, double zb, double zc, const double* a, const double* b,
                         const double* c) {
    double cb[3];
    double cc[3];
    double bc[3];
    QuadratureContext context = {0.0, 0.0, 0.0, zb * zb, zc * zc};
    for (int i = 0; i < 3; ++i) {
        cb[i] = b[i] - a[i];
        cc[i] = c[i] - a[i];
        bc[i] = b[i] - c[i];
        context.SquareBC += bc[i] * bc[i];
        context.SquareAC += cc[i] * cc[i];
        context.Dot += bc[i] * cc[i];
    }
    double cross[3];
    Cross(cb, cc, cross);
    const double square = context.SquareAC;
    const double dot = context.Dot;
    const double norm = NormOf(bra, zb) * NormOf(ket, zc);
    const auto q = [&](int m, int k1, int k2, int k3) { return ThreeCentreQuadrature(m, k1, k2, k3, context); };
    const auto base = [&](int p, int g) {
        return 0.5 * q(0, -3, p, g - 1) - square * q(1, -3, p, g) - dot * q(1, -1, p, g);
    };
    if (component < 0) {
        if (ket == 0) {  // 1s, 1s
            return norm * zb * zc * base(-3, -2);
        }
        if (ket == 1) {  // 1s, 2s
            return norm * zb * (0.5 * zc * zc * base(-5, -3) - base(-3, -2));
        }
        const double ccl = cc[ket - 2];
        const double bcl = bc[ket - 2];
        return norm * zb * zc *
               (-ccl * q(1, -3, -3, -3) - 0.5 * bcl * q(1, -1, -3, -3) + 0.5 * bcl * q(0, -1, -3, -3) +
                square * ccl * q(2, -3, -3, -2) + (square * bcl + dot * ccl) * q(2, -1, -3, -2) +
                dot * bcl * q(2, 1, -3, -2) - bcl * (square * q(1, -1, -3, -2) + dot * q(1, 1, -3, -2)));
    }
    const double g = -cross[component];
    if (bra == 0 && ket == 0) {
        return -2.0 / Pi * std::sqrt(WholePower(zb * zc, 5)) * g * q(1, -1, -1, -1);
    }
    if (bra == 0 && ket == 1) {
        return -2.0 * norm * zb * g * (0.5 * zc * zc * q(1, -1, -3, -2) - q(1, -1, -1, -1));
    }
    if (bra == 1) {
        return -2.0 * norm * zc * g * (0.5 * zb * zb * q(1, -3, -1, -2) - q(1, -1, -1, -1));
    }
    double turned[3];
    if (bra == 0) {
        const int l = ket - 2;
        const double unit[3] = {l == 0 ? 1.0 : 0.0, l == 1 ? 1.0 : 0.0, l == 2 ? 1.0 : 0.0};
        Cross(unit, cb, turned);
        return norm * zb * zc *
               (-2.0 * g *
                    (bc[l] * q(1, 1, -1, -1) -
                     (cc[l] * q(2, -1, -3, -1) + (bc[l] - cc[l]) * q(2, 1, -3, -1) - bc[l] * q(2, 3, -3, -1))) -
                turned[component] * q(1, -1, -3, -2));
    }
    const int l = bra - 2;
    const double unit[3] = {l == 0 ? 1.0 : 0.0, l == 1 ? 1.0 : 0.0, l == 2 ? 1.0 : 0.0};
    Cross(unit, cc, turned);
    return norm * zb * zc *
           (-2.0 * g * (-bc[l] * q(1, -1, 1, -1) - (cb[l] * q(2, -1, -1, -1) - bc[l] * q(2, -1, 1, -1))) +
            turned[component] * q(1, -3, -1, -2));
}

namespace {

// The moments of one node: F(m, n) with the power s^-n of the whole integrand chosen by the caller.
struct Node {
    double D[3];     // P - A
    double PB[3];    // P - B
    double PC[3];    // P - C
    double H[4][5];  // integral over s of s^(-n-1) exp(-Y/s - s X), times w t^(2m)
};

// <E_j mu nu> times s^-g, index -1 for an absent factor. Without 4 pi.
double FieldMoment(const Node& node, int j, int mu, int nu, int g) {
    const auto f = [&](int m, int power) { return node.H[m][power + g - 1]; };
    const auto delta = [](int p, int q) { return p == q ? 1.0 : 0.0; };
    const double* d = node.D;
    const auto one = [&](int k) { return 0.5 * delta(j, k) * f(1, 1) - d[j] * d[k] * f(2, 0); };
    double sum = 0.0;
    if (mu < 0 && nu < 0) {
        return d[j] * f(1, 0);
    }
    if (mu < 0) {
        return one(nu) + node.PC[nu] * d[j] * f(1, 0);
    }
    if (nu < 0) {
        return one(mu) + node.PB[mu] * d[j] * f(1, 0);
    }
    sum = d[j] * d[mu] * d[nu] * f(3, 0) -
          0.5 * (delta(j, mu) * d[nu] + delta(j, nu) * d[mu] + delta(mu, nu) * d[j]) * f(2, 1) +
          0.5 * delta(mu, nu) * d[j] * f(1, 1);
    return sum + node.PB[mu] * one(nu) + node.PC[nu] * one(mu) + node.PB[mu] * node.PC[nu] * d[j] * f(1, 0);
}

double InverseMoment(const Node& node, int mu, int nu, int g) {
    const auto f = [&](int m, int power) { return node.H[m][power + g - 1]; };
    const double* d = node.D;
    if (mu < 0 && nu < 0) {
        return 0.5 * f(0, 1);
    }
    if (mu < 0) {
        return 0.5 * (node.PC[nu] * f(0, 1) - d[nu] * f(1, 1));
    }
    if (nu < 0) {
        return 0.5 * (node.PB[mu] * f(0, 1) - d[mu] * f(1, 1));
    }
    return 0.5 * (d[mu] * d[nu] * f(2, 1) + (mu == nu ? 0.5 * (f(0, 2) - f(1, 2)) : 0.0) -
                  node.PB[mu] * d[nu] * f(1, 1) - node.PC[nu] * d[mu] * f(1, 1) + node.PB[mu] * node.PC[nu] * f(0, 1));
}

}  // namespace

double NodewiseElement(int component, int bra, int ket, double zb, double zc, const double* a, const double* b,
                       const double* c) {
    const int mu = bra >= 2 ? bra - 2 : -1;
    const int nu = ket >= 2 ? ket - 2 : -1;
    double ab[3];
    double ac[3];
    for (int i = 0; i < 3; ++i) {
        ab[i] = b[i] - a[i];
        ac[i] = c[i] - a[i];
    }
    double total = 0.0;
    for (int i = 0; i < OuterCount; ++i) {
        const double u = OuterNodes[i];
        const double v = 1.0 - u;
        const double y = (zc * zc / v + zb * zb / u) / 4.0;
        Node node = {};
        double squareD = 0.0;
        double squareBC = 0.0;
        for (int k = 0; k < 3; ++k) {
            node.D[k] = u * b[k] + v * c[k] - a[k];
            node.PB[k] = -v * (b[k] - c[k]);
            node.PC[k] = u * (b[k] - c[k]);
            squareD += node.D[k] * node.D[k];
            squareBC += (b[k] - c[k]) * (b[k] - c[k]);
        }
        for (int j = 0; j < InnerPairs; ++j) {
            for (const double t : {InnerNodes[j], InnerMirrors[j]}) {
                const double x = 2.0 * std::sqrt((squareD * t * t + u * v * squareBC) * y);
                for (int m = 0; m < 4; ++m) {
                    for (int n = 0; n < 5; ++n) {
                        const double scaled = std::ldexp(ReducedBessel(n, x), 1 - n) / WholePower(y, n);
                        node.H[m][n] += InnerWeights[j] * WholePower(t, 2 * m) * scaled;
                    }
                }
            }
        }
        // the product of both weights over s1 = u s and s2 = (1 - u) s, times s: coefficients of s^-2, s^-3, s^-4
        const double b0 = bra == 1 ? -1.0 : zb;
        const double b1 = bra == 1 ? 0.5 * zb * zb / u : 0.0;
        const double c0 = ket == 1 ? -1.0 : zc;
        const double c1 = ket == 1 ? 0.5 * zc * zc / v : 0.0;
        const double weights[3] = {b0 * c0, b0 * c1 + b1 * c0, b1 * c1};
        double sum = 0.0;
        for (int g = 2; g < 5; ++g) {
            if (weights[g - 2] == 0.0) {
                continue;
            }
            double value = 0.0;
            if (component < 0) {
                value = InverseMoment(node, mu, nu, g);
                for (int j = 0; j < 3; ++j) {
                    value -= ac[j] * FieldMoment(node, j, mu, nu, g);
                }
            } else {
                const int p = (component + 1) % 3;
                const int q = (component + 2) % 3;
                // +2 s1 (E x (A - B)) - E[without the bra's factor] x e_mu
                value = FieldMoment(node, p, mu, nu, g - 1) * ab[q] - FieldMoment(node, q, mu, nu, g - 1) * ab[p];
                value *= -2.0 * u;
                if (mu == q) {
                    value -= FieldMoment(node, p, -1, nu, g);
                }
                if (mu == p) {
                    value += FieldMoment(node, q, -1, nu, g);
                }
            }
            sum += weights[g - 2] * value;
        }
        total += 0.5 * OuterWeights[i] / (std::sqrt(u * v) * (u * v)) * sum;
    }
    return NormOf(bra, zb) * NormOf(ket, zc) * total;
}
