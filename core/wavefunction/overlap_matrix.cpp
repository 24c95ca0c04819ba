// SPDX-License-Identifier: MIT
// Overlaps pair by pair: integrals in the frame of the pair, turned into the molecule's axes.
#include "wavefunction/overlap_matrix.h"

#include "ground/message_poll.h"
#include "molecule/element_tables.h"
#include "molecule/selected_atoms.h"
#include "numerics/mirrored_triangle.h"
#include "wavefunction/overlap_integrals.h"

#include <algorithm>
#include <cmath>

static constexpr int PairUnits = 200;            // of a poll
static constexpr double NearDistance = 0.001;    // bohr
static constexpr double SmallestRadius = 1e-10;  // bohr off the z axis
static constexpr double HalfRootOfThree = 0.8660254037841;
static constexpr double RootOfThree = 2.0 * HalfRootOfThree;
static constexpr int LastFirstRow = 10;  // neon
static constexpr int OrbitalsWithoutD = 4;
static constexpr int FirstOf[3] = {0, 1, 4};  // first row of s, p and d in a block

// Molecular orbitals of each l, in rows as a block has them, by the orbitals of the pair's frame: sigma, pi with
// x and with y, delta with x2-y2 and with xy.
struct OverlapRotation {
    double Of[3][5][5];
};

// The axes of the pair's frame in the molecule's axes.
struct PairFrame {
    double X[3];
    double Y[3];
    double Z[3];  // from atom i to atom j
};

static double SignOf(double value) {
    return value > 0.0 ? 1.0 : value < 0.0 ? -1.0 : 0.0;
}

static PairFrame MakeFrame(const double* from, const double* to, double distance) {
    const double dx = to[0] - from[0];
    const double dy = to[1] - from[1];
    const double dz = to[2] - from[2];
    const double r = std::sqrt(dx * dx + dy * dy);
    double cosPhi = SignOf(dz);
    double sinPhi = 0.0;
    double cosTheta = cosPhi;
    double sinTheta = 0.0;
    if (r >= SmallestRadius) {
        cosPhi = dx / r;
        sinPhi = dy / r;
        cosTheta = dz / distance;
        sinTheta = r / distance;
    }
    return {{cosTheta * cosPhi, cosTheta * sinPhi, -sinTheta},
            {-sinPhi, cosPhi, 0.0},
            {sinTheta * cosPhi, sinTheta * sinPhi, cosTheta}};
}

static void RotateP(const PairFrame& frame, double (*rows)[5]) {
    for (int axis = 0; axis < 3; ++axis) {
        rows[axis][0] = frame.Z[axis];
        rows[axis][1] = frame.X[axis];
        rows[axis][2] = frame.Y[axis];
    }
}

// A d orbital is a quadratic form; s and t are the axes whose product makes a function of the pair's frame, with
// s = t for the squares of which d functions are differences.
static double FormXY(const double* s, const double* t, int a, int b) {
    return s[a] * t[b] + s[b] * t[a];
}

static double FormSquares(const double* s, const double* t) {
    return s[0] * t[0] - s[1] * t[1];
}

// The rows dxz, dyz, dxy: a and b are the axes of the product.
static void RotateProduct(const PairFrame& f, int a, int b, double* row) {
    row[0] = RootOfThree * (f.Z[a] * f.Z[b]);
    row[1] = FormXY(f.X, f.Z, a, b);
    row[2] = FormXY(f.Y, f.Z, a, b);
    row[3] = f.X[a] * f.X[b] - f.Y[a] * f.Y[b];
    row[4] = FormXY(f.X, f.Y, a, b);
}

static void RotateD(const PairFrame& f, double (*rows)[5]) {
    double* squares = rows[0];
    squares[0] = HalfRootOfThree * FormSquares(f.Z, f.Z);
    squares[1] = FormSquares(f.X, f.Z);
    squares[2] = FormSquares(f.Y, f.Z);
    squares[3] = 0.5 * (FormSquares(f.X, f.X) - FormSquares(f.Y, f.Y));
    squares[4] = FormSquares(f.X, f.Y);
    double* axial = rows[2];
    axial[0] = 0.5 * (3.0 * f.Z[2] * f.Z[2] - 1.0);
    axial[1] = RootOfThree * (f.X[2] * f.Z[2]);
    axial[2] = RootOfThree * (f.Y[2] * f.Z[2]);
    axial[3] = HalfRootOfThree * (f.X[2] * f.X[2] - f.Y[2] * f.Y[2]);
    axial[4] = RootOfThree * (f.X[2] * f.Y[2]);
    RotateProduct(f, 0, 2, rows[1]);
    RotateProduct(f, 1, 2, rows[3]);
    RotateProduct(f, 0, 1, rows[4]);
}

// Only what the larger shell needs.
static void MakeRotation(const PairFrame& frame, int shell, OverlapRotation* rotation) {
    rotation->Of[0][0][0] = 1.0;
    if (shell >= 2) {
        RotateP(frame, rotation->Of[1]);
    }
    if (shell >= 3) {
        RotateD(frame, rotation->Of[2]);
    }
}

// Turns the overlaps of orbitals la of atom i with lb of atom j. The frames of the two atoms face each other: the
// functions of atom j that are odd along the axis change their sign on the way into one frame.
static void RotateOverlaps(const LocalOverlaps& local, const OverlapRotation& rotation, int la, int lb,
                           OverlapBlock* block) {
    const int last = std::min(la, lb);
    double value[3];
    for (int m = 0; m <= last; ++m) {
        value[m] = (lb + m) % 2 == 0 ? local.Value[la][lb][m] : -local.Value[la][lb][m];
    }
    for (int a = 0; a < 2 * la + 1; ++a) {
        const double* rowA = rotation.Of[la][a];
        for (int b = 0; b < 2 * lb + 1; ++b) {
            const double* rowB = rotation.Of[lb][b];
            double sum = rowA[0] * rowB[0] * value[0];
            for (int m = 1; m <= last; ++m) {
                sum += (rowA[2 * m - 1] * rowB[2 * m - 1] + rowA[2 * m] * rowB[2 * m]) * value[m];
            }
            block->Value[FirstOf[lb] + b][FirstOf[la] + a] = sum;
        }
    }
}

// Asked of the option and not of the orbitals, on purpose: TNDO/2 with the option on has no d orbitals, and its
// pairs of the second row come from OverlapGeneral all the same.
static bool HasClosedForm(int codeI, int codeJ) {
    const int larger = std::max(codeI, codeJ);
    return larger <= LastFirstRow || (larger <= LastElement && !Run.Options.IncludeDOrbitalsForSecondRow);
}

static OverlapCentre MakeCentre(int code, const double* exponents) {
    return {code, ValenceShellTable[code - 1], {exponents[0], exponents[1], exponents[2]}};
}

void DiatomicOverlapBlock(int codeI, int codeJ, const double* positionI, const double* positionJ,
                          const double* exponentsI, const double* exponentsJ, OverlapBlock* block) {
    const OverlapCentre i = MakeCentre(codeI, exponentsI);
    const OverlapCentre j = MakeCentre(codeJ, exponentsJ);
    const double distance = Distance(positionI, positionJ);
    if (distance >= FarOverlap || distance < NearDistance) {
        return;  // on purpose neither written nor cleared
    }
    OverlapRotation rotation;
    MakeRotation(MakeFrame(positionI, positionJ, distance), std::max(i.Shell, j.Shell), &rotation);
    LocalOverlaps local;
    if (HasClosedForm(codeI, codeJ)) {
        OverlapClosedForm(i, j, distance, &local);
    } else {
        OverlapGeneral(i, j, distance, &local);
    }
    for (int la = 0; la < i.Shell; ++la) {
        for (int lb = 0; lb < j.Shell; ++lb) {
            RotateOverlaps(local, rotation, la, lb, block);
        }
    }
}

// From the order of d orbitals in a block to that of the orbitals: dz2, dxz, dyz, dx2-y2, dxy. A block that a far
// pair left as it was is turned once more, on purpose.
static void PermuteD(OverlapBlock* block) {
    for (int row = 0; row < OverlapBlockOrder; ++row) {
        double* value = block->Value[row];
        const double squares = value[4];
        value[4] = value[6];
        value[6] = value[7];
        value[7] = squares;
    }
    for (int column = 0; column < OverlapBlockOrder; ++column) {
        const double squares = block->Value[4][column];
        block->Value[4][column] = block->Value[6][column];
        block->Value[6][column] = block->Value[7][column];
        block->Value[7][column] = squares;
    }
}

static int OrbitalsOf(const OrbitalRange& range) {
    return range.Last - range.First + 1;
}

static void CopyBlock(const OverlapBlock& block, const OrbitalRange& i, const OrbitalRange& j, double* overlap) {
    for (int a = 0; a < OrbitalsOf(i); ++a) {
        double* row = overlap + static_cast<long long>(i.First - 1 + a) * Run.Basis.OrbitalCount + (j.First - 1);
        for (int b = 0; b < OrbitalsOf(j); ++b) {
            row[b] = block.Value[b][a];
        }
    }
}

static void FillPair(int placeI, int placeJ, OverlapBlock* block, double* overlap) {
    const AtomRecord& i = SelectedAtom(placeI);
    const AtomRecord& j = SelectedAtom(placeJ);
    const AtomTypeParameters& parametersI = ParametersOf(i);
    const AtomTypeParameters& parametersJ = ParametersOf(j);
    const double exponentsI[3] = {parametersI.SlaterExponentS, parametersI.SlaterExponentP,
                                  parametersI.SlaterExponentD};
    const double exponentsJ[3] = {parametersJ.SlaterExponentS, parametersJ.SlaterExponentP,
                                  parametersJ.SlaterExponentD};
    DiatomicOverlapBlock(i.AtomicNumber, j.AtomicNumber, SelectedPosition(placeI), SelectedPosition(placeJ), exponentsI,
                         exponentsJ, block);
    const OrbitalRange& rangeI = Run.Basis.OrbitalRanges[placeI];
    const OrbitalRange& rangeJ = Run.Basis.OrbitalRanges[placeJ];
    if (OrbitalsOf(rangeI) > OrbitalsWithoutD || OrbitalsOf(rangeJ) > OrbitalsWithoutD) {
        PermuteD(block);
    }
    CopyBlock(*block, rangeI, rangeJ, overlap);
    PollMessages(PairUnits);
}

static void SetUnitMatrix(double* matrix) {
    const long long n = Run.Basis.OrbitalCount;
    std::fill_n(matrix, n * n, 0.0);
    for (long long k = 0; k < n; ++k) {
        matrix[k * n + k] = 1.0;
    }
}

void BuildOverlapMatrix(double* overlap) {
    SetUnitMatrix(overlap);
    OverlapBlock block = {};
    for (int i = 0; i < Run.Molecule.SelectedAtomCount; ++i) {
        for (int j = 0; j < i; ++j) {
            if (SelectedAtom(i).AtomicNumber >= 1 && SelectedAtom(j).AtomicNumber >= 1) {
                FillPair(i, j, &block, overlap);
            }
        }
    }
    MirrorLowerTriangle(overlap, Run.Basis.OrbitalCount);
}
