// SPDX-License-Identifier: MIT
// Lists of multipole terms: products of real harmonics projected on Legendre functions, as polynomials on the unit
// sphere, by the compiler.
//
// The nucleus a is at -R along z from b. The field there of the multipole l of a density is, with P_l of n_z,
//     along z:  (-1)^(l+1) <f P_l> axial radial field,   along x:  (-1)^(l+1) <f n_x P_l'> transverse radial field,
// < > the mean over the sphere. An L_a integral over orbitals mu, nu of equal radial function R(r) is the one of
// (mu nabla nu - nu nabla mu)/2, whose radial derivatives cancel:
//     <mu|L_a,k/r_a^3|nu> = 1/2 integral of R^2/r (r_a x A)_k/r_a^3,   A = Y_mu D Y_nu - Y_nu D Y_mu,   D = r nabla.
#include "nmr/field_terms.h"

#include "nmr/orbital_table.h"
#include "numerics/mathematical_constants.h"

namespace {

constexpr int LargestTermCount = 40;
constexpr int LargestMultipole = 5;

// Polynomial in the components of a unit vector.
struct Polynomial {
    int Count;
    double Factor[LargestTermCount];
    int Power[LargestTermCount][3];
};

constexpr void Add(Polynomial& p, double factor, int x, int y, int z) {
    for (int i = 0; i < p.Count; ++i) {
        if (p.Power[i][0] == x && p.Power[i][1] == y && p.Power[i][2] == z) {
            p.Factor[i] += factor;
            return;
        }
    }
    p.Factor[p.Count] = factor;
    p.Power[p.Count][0] = x;
    p.Power[p.Count][1] = y;
    p.Power[p.Count][2] = z;
    ++p.Count;
}

constexpr Polynomial Product(const Polynomial& a, const Polynomial& b) {
    Polynomial result = {};
    for (int i = 0; i < a.Count; ++i) {
        for (int j = 0; j < b.Count; ++j) {
            Add(result, a.Factor[i] * b.Factor[j], a.Power[i][0] + b.Power[j][0], a.Power[i][1] + b.Power[j][1],
                a.Power[i][2] + b.Power[j][2]);
        }
    }
    return result;
}

constexpr double OddFactorial(int n) {
    double result = 1.0;
    for (int i = n; i > 1; i -= 2) {
        result *= i;
    }
    return result;
}

// Mean of a b over the unit sphere.
constexpr double MeanOfProduct(const Polynomial& a, const Polynomial& b) {
    double mean = 0.0;
    for (int i = 0; i < a.Count; ++i) {
        for (int j = 0; j < b.Count; ++j) {
            const int x = a.Power[i][0] + b.Power[j][0];
            const int y = a.Power[i][1] + b.Power[j][1];
            const int z = a.Power[i][2] + b.Power[j][2];
            if (x % 2 == 0 && y % 2 == 0 && z % 2 == 0) {
                mean += a.Factor[i] * b.Factor[j] * OddFactorial(x - 1) * OddFactorial(y - 1) * OddFactorial(z - 1) /
                        OddFactorial(x + y + z + 1);
            }
        }
    }
    return mean;
}

constexpr int MomentumOf(int orbital) {
    return orbital == 0 ? 0 : orbital < 4 ? 1 : 2;
}

// Real harmonics with mean square 1, of degree l in the components.
constexpr Polynomial Harmonic(int orbital) {
    Polynomial p = {};
    switch (orbital) {
    case 0:
        Add(p, 1.0, 0, 0, 0);
        break;
    case 1:
        Add(p, RootThree, 1, 0, 0);
        break;
    case 2:
        Add(p, RootThree, 0, 1, 0);
        break;
    case 3:
        Add(p, RootThree, 0, 0, 1);
        break;
    case 4:
        Add(p, RootFive, 0, 0, 2);
        Add(p, -0.5 * RootFive, 2, 0, 0);
        Add(p, -0.5 * RootFive, 0, 2, 0);
        break;
    case 5:
        Add(p, RootFifteen, 1, 0, 1);
        break;
    case 6:
        Add(p, RootFifteen, 0, 1, 1);
        break;
    case 7:
        Add(p, 0.5 * RootFifteen, 2, 0, 0);
        Add(p, -0.5 * RootFifteen, 0, 2, 0);
        break;
    default:
        Add(p, RootFifteen, 1, 1, 0);
        break;
    }
    return p;
}

constexpr Polynomial Component(int axis) {
    Polynomial p = {};
    Add(p, 1.0, axis == 0, axis == 1, axis == 2);
    return p;
}

// r d/dr_axis of a harmonic of b.
constexpr Polynomial Gradient(int orbital, int axis) {
    const Polynomial s = Harmonic(orbital);
    Polynomial p = {};
    for (int i = 0; i < s.Count; ++i) {
        int power[3] = {s.Power[i][0], s.Power[i][1], s.Power[i][2]};
        if (power[axis] > 0) {
            --power[axis];
            Add(p, s.Factor[i] * s.Power[i][axis], power[0], power[1], power[2]);
        }
        power[0] = s.Power[i][0];
        power[1] = s.Power[i][1];
        power[2] = s.Power[i][2];
        ++power[axis];
        Add(p, -s.Factor[i] * MomentumOf(orbital), power[0], power[1], power[2]);
    }
    return p;
}

// The function whose mean with a density gives the field along axis: (-1)^(l+1) P_l(n_z), or n_axis P_l'(n_z).
constexpr Polynomial FieldProjector(int l, int axis) {
    constexpr double Legendre[LargestMultipole + 1][LargestMultipole + 1] = {{1.0},
                                                                             {0.0, 1.0},
                                                                             {-0.5, 0.0, 1.5},
                                                                             {0.0, -1.5, 0.0, 2.5},
                                                                             {0.375, 0.0, -3.75, 0.0, 4.375},
                                                                             {0.0, 1.875, 0.0, -8.75, 0.0, 7.875}};
    const double sign = l % 2 == 0 ? -1.0 : 1.0;
    Polynomial p = {};
    for (int i = 0; i <= l; ++i) {
        if (Legendre[l][i] == 0.0) {
            continue;
        }
        if (axis == 2) {
            Add(p, sign * Legendre[l][i], 0, 0, i);
        } else if (i > 0) {
            Add(p, sign * i * Legendre[l][i], axis == 0, axis == 1, i - 1);
        }
    }
    return p;
}

constexpr void Append(FieldTermList& list, double factor, int row, int column, int table, int l, bool axial) {
    if (factor < 1e-12 && factor > -1e-12) {
        return;
    }
    FieldTerm& term = list.Terms[list.Count];
    ++list.Count;
    term.Factor = factor;
    term.Row = static_cast<unsigned char>(row);
    term.Column = static_cast<unsigned char>(column);
    term.Table = static_cast<unsigned char>(table);
    term.L = static_cast<unsigned char>(l);
    term.Axial = axial;
}

constexpr FieldTermList MakeTensorTerms() {
    FieldTermList list = {};
    for (int row = 0; row < LargestOrbitals; ++row) {
        for (int column = row; column < LargestOrbitals; ++column) {
            const Polynomial density = Product(Harmonic(row), Harmonic(column));
            for (int table = 0; table < 9; ++table) {
                const Polynomial moment = Product(density, Component(table / 3));
                for (int l = 0; l <= LargestMultipole; ++l) {
                    const int axis = table % 3;
                    Append(list, MeanOfProduct(moment, FieldProjector(l, axis)), row, column, table, l, axis == 2);
                }
            }
        }
    }
    return list;
}

constexpr FieldTermList MakeMagneticTerms() {
    FieldTermList list = {};
    for (int row = 0; row < LargestOrbitals; ++row) {
        for (int column = row + 1; column < LargestOrbitals; ++column) {
            Polynomial current[3] = {};
            for (int axis = 0; axis < 3; ++axis) {
                current[axis] = Product(Harmonic(row), Gradient(column, axis));
                const Polynomial back = Product(Harmonic(column), Gradient(row, axis));
                for (int i = 0; i < back.Count; ++i) {
                    Add(current[axis], -back.Factor[i], back.Power[i][0], back.Power[i][1], back.Power[i][2]);
                }
            }
            for (int k = 0; k < 3; ++k) {
                const int i = (k + 1) % 3;
                const int j = (k + 2) % 3;
                for (int l = 0; l <= LargestMultipole; ++l) {
                    Append(list, 0.5 * MeanOfProduct(current[j], FieldProjector(l, i)), row, column, k, l, i == 2);
                    Append(list, -0.5 * MeanOfProduct(current[i], FieldProjector(l, j)), row, column, k, l, j == 2);
                }
            }
        }
    }
    return list;
}

}  // namespace

constinit const FieldTermList TensorTerms = MakeTensorTerms();
constinit const FieldTermList MagneticTerms = MakeMagneticTerms();
