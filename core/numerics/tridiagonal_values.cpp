// SPDX-License-Identifier: MIT
// Eigenvalues of a symmetric tridiagonal matrix by QR iteration with shifts, for the eigensolver.
// Francis, Comput. J. 4 (1961) 265; Kublanovskaya, USSR Comput. Math. Math. Phys. 1 (1962) 637.
#include "numerics/eigensolver_work.h"

#include <algorithm>
#include <cmath>
#include <utility>

static constexpr double ZeroTolerance = 1e-30;  // at or below it the matrix is zero: nothing to iterate
static constexpr int SweepLimit = 1000;         // far beyond what an eigenvalue needs (2 or 3): rounding in a circle
static constexpr double WorkOfRotation = 60.0;  // a rotation waits for a root and a division

// The eigenvalue of the trailing 2 x 2 block of values[..m] that is nearest to values[m].
static double ShiftAt(const double* values, const double* band, int m) {
    const double middle = (values[m - 1] + values[m]) / 2.0;
    const double difference = values[m] - middle;
    const double root = std::sqrt(band[m - 1] * band[m - 1] + difference * difference);
    return difference >= 0.0 ? middle + root : middle - root;
}

// One sweep of plane rotations over the block from l to m.
static void SweepRotations(double* values, double* band, int l, int m, double shift) {
    values[l] -= shift;
    double g = values[l];
    double b = band[l];
    double r = std::sqrt(band[l] * band[l] + g * g);
    double cosine = 1.0;
    double sine = 0.0;
    for (int k = l; k < m; ++k) {
        if (k > l) {
            r = std::sqrt(values[k] * values[k] + band[k] * band[k]);
            band[k - 1] = r * sine;
            g = cosine * values[k];
            b = cosine * band[k];
        }
        cosine = values[k] / r;
        sine = band[k] / r;
        const double t = values[k + 1] - shift;
        values[k] = (cosine * b + t * sine) * sine + g + shift;
        values[k + 1] = cosine * t - b * sine;
    }
    band[m - 1] = sine * values[m];
    values[m] = cosine * values[m] + shift;
}

// Ascending. Each pass exchanges the largest value so far with the last one below it, behind which all is in place.
// Unlike std::sort it keeps within the array where values aren't numbers.
static void SortAscending(double* values, int n) {
    for (int end = n; end > 0;) {
        int largest = 0;
        int from = 0;
        int to = 0;
        for (int k = 1; k < end; ++k) {
            if (values[largest] > values[k]) {
                from = largest;
                to = k;
            } else {
                largest = k;
            }
        }
        std::swap(values[from], values[to]);
        end = to;
    }
}

void FindEigenvalues(double* values, int n, double tolerance) {
    double* band = SolverWork.Band;
    std::copy(SolverWork.Diagonal, SolverWork.Diagonal + n, values);
    std::copy(SolverWork.Off, SolverWork.Off + n, band);
    int sweeps = 0;
    for (int m = n - 1; m > 0 && tolerance > ZeroTolerance;) {
        int l = m;
        while (l > 0 && std::fabs(band[l - 1]) >= tolerance) {
            --l;
        }
        if (l == m || sweeps == SweepLimit) {
            --m;
            sweeps = 0;
            continue;
        }
        SweepRotations(values, band, l, m, ShiftAt(values, band, m));
        ++sweeps;
        CountSolverWork(WorkOfRotation * (m - l));
    }
    SortAscending(values, n);
}
