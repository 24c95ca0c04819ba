// SPDX-License-Identifier: MIT
// Rotation of pair tables: the axes of the pair, the rotation of real p and d functions from them, and its application.
#include "nmr/pair_rotation.h"

#include "numerics/mathematical_constants.h"

#include <cmath>

static constexpr double SmallestRho = 1e-6;  // bohr off the z axis

// Direction of a pair.
struct PairAngles {
    double CosPhi;
    double SinPhi;
    double CosTheta;
    double SinTheta;
};

static PairAngles AnglesOfPair(const double* a, const double* b) {
    const double x = b[0] - a[0];
    const double y = b[1] - a[1];
    const double z = b[2] - a[2];
    const double rho = std::sqrt(x * x + y * y);
    PairAngles angles;
    angles.CosPhi = rho <= SmallestRho ? 1.0 : x / rho;
    angles.SinPhi = rho <= SmallestRho ? 0.0 : y / rho;
    angles.CosTheta = z / std::sqrt(x * x + y * y + z * z);
    const double squared = 1.0 - angles.CosTheta * angles.CosTheta;
    // a cosine that rounds beyond 1 has no sine
    angles.SinTheta = squared < 0.0 ? 0.0 : std::sqrt(squared);
    return angles;
}

static void AxesOfAngles(const PairAngles& angles, double (&axes)[3][3]) {
    axes[0][0] = angles.CosTheta * angles.CosPhi;
    axes[0][1] = angles.CosTheta * angles.SinPhi;
    axes[0][2] = -angles.SinTheta;
    axes[1][0] = -angles.SinPhi;
    axes[1][1] = angles.CosPhi;
    axes[1][2] = 0.0;
    axes[2][0] = angles.SinTheta * angles.CosPhi;
    axes[2][1] = angles.SinTheta * angles.SinPhi;
    axes[2][2] = angles.CosTheta;
}

void PairAxes(const double* a, const double* b, double (&axes)[3][3]) {
    const PairAngles angles = AnglesOfPair(a, b);
    AxesOfAngles(angles, axes);
}

// Adds factor sqrt(3) (u . n)(v . n) to a row of the d rotation: dz2, dxz, dyz, dx2-y2, dxy. What is added to one row
// must be traceless in the end.
static void AddQuadraticRow(const double* u, const double* v, double factor, double* row) {
    row[0] += factor * RootThree * u[2] * v[2];
    row[1] += factor * (u[0] * v[2] + u[2] * v[0]);
    row[2] += factor * (u[1] * v[2] + u[2] * v[1]);
    row[3] += factor * (u[0] * v[0] - u[1] * v[1]);
    row[4] += factor * (u[0] * v[1] + u[1] * v[0]);
}

static void FillRotation(const PairAngles& angles, OrbitalTable& rotation) {
    double axes[3][3];
    AxesOfAngles(angles, axes);
    ClearTable(rotation);
    rotation[0][0] = 1.0;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            rotation[1 + i][1 + j] = axes[i][j];
        }
    }
    const double cosTheta = angles.CosTheta;
    const double sinTheta = angles.SinTheta;
    const double cosTwoPhi = angles.CosPhi * angles.CosPhi - angles.SinPhi * angles.SinPhi;
    AddQuadraticRow(axes[2], axes[2], 0.5 * RootThree, rotation[4] + 4);
    rotation[4][4] = 1.5 * cosTheta * cosTheta - 0.5;
    rotation[4][7] = 0.5 * RootThree * sinTheta * sinTheta * cosTwoPhi;
    AddQuadraticRow(axes[0], axes[2], 1.0, rotation[5] + 4);
    AddQuadraticRow(axes[1], axes[2], 1.0, rotation[6] + 4);
    AddQuadraticRow(axes[0], axes[0], 0.5, rotation[7] + 4);
    AddQuadraticRow(axes[1], axes[1], -0.5, rotation[7] + 4);
    AddQuadraticRow(axes[0], axes[1], 1.0, rotation[8] + 4);
}

void PairOrbitalRotation(const double* a, const double* b, OrbitalTable& rotation) {
    const PairAngles angles = AnglesOfPair(a, b);
    FillRotation(angles, rotation);
}

// First orbital of the block of equal l that an orbital belongs to, and its end.
static constexpr int FirstOfBlock[LargestOrbitals] = {0, 1, 1, 1, 4, 4, 4, 4, 4};
static constexpr int EndOfBlock[LargestOrbitals] = {1, 4, 4, 4, 9, 9, 9, 9, 9};

static void ApplyRotation(const OrbitalTable& rotation, OrbitalTable& table, int rows, int columns) {
    OrbitalTable half;
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < columns; ++j) {
            double sum = 0.0;
            for (int m = FirstOfBlock[j]; m < EndOfBlock[j]; ++m) {
                sum += table[i][m] * rotation[m][j];
            }
            half[i][j] = sum;
        }
    }
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < columns; ++j) {
            double sum = 0.0;
            for (int m = FirstOfBlock[i]; m < EndOfBlock[i]; ++m) {
                sum += rotation[m][i] * half[m][j];
            }
            table[i][j] = sum;
        }
    }
}

void RotatePairTable(const double* a, const double* b, OrbitalTable& table, int rows, int columns) {
    const PairAngles angles = AnglesOfPair(a, b);
    OrbitalTable rotation;
    FillRotation(angles, rotation);
    // not the rotation's element, on purpose
    const double cosTwoPhi = angles.CosPhi * angles.CosPhi - angles.SinPhi * angles.SinPhi;
    rotation[4][7] = 0.5 * RootThree * angles.SinTheta * angles.SinPhi * cosTwoPhi;
    ApplyRotation(rotation, table, rows, columns);
}

void RotatePairVector(const double* a, const double* b, int k, const OrbitalTable (&tables)[3], OrbitalTable& out,
                      int rows, int columns) {
    OrbitalTable rotation;
    PairOrbitalRotation(a, b, rotation);
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < columns; ++j) {
            out[i][j] = rotation[1][1 + k] * tables[0][i][j] + rotation[2][1 + k] * tables[1][i][j] +
                        rotation[3][1 + k] * tables[2][i][j];
        }
    }
    ApplyRotation(rotation, out, rows, columns);
}

void RotatePairScalars(const double* a, const double* b, OrbitalTable& table, int rows, int columns) {
    OrbitalTable rotation;
    PairOrbitalRotation(a, b, rotation);
    ApplyRotation(rotation, table, rows, columns);
}

void RotatePairTensor(const double* a, const double* b, int rows, int columns, OrbitalTable (&tables)[9]) {
    double axes[3][3];
    PairAxes(a, b, axes);
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < columns; ++j) {
            double half[3][3];
            for (int p = 0; p < 3; ++p) {
                for (int l = 0; l < 3; ++l) {
                    half[p][l] = tables[3 * p][i][j] * axes[0][l] + tables[3 * p + 1][i][j] * axes[1][l] +
                                 tables[3 * p + 2][i][j] * axes[2][l];
                }
            }
            for (int k = 0; k < 3; ++k) {
                for (int l = 0; l < 3; ++l) {
                    tables[3 * k + l][i][j] =
                        axes[0][k] * half[0][l] + axes[1][k] * half[1][l] + axes[2][k] * half[2][l];
                }
            }
        }
    }
}
