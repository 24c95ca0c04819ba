// SPDX-License-Identifier: MIT
// Builds the closed-shell Fock matrix.
#include "wavefunction/fock_matrix.h"

#include "ground/message_poll.h"
#include "molecule/selected_atoms.h"
#include "numerics/dense_kernels.h"
#include "wavefunction/atom_block.h"
#include "wavefunction/slater_condon.h"

static void SubtractExchange(double* fock) {
    const long long n = Run.Basis.OrbitalCount;
    for (long long row = 0; row < n; ++row) {
        const double* q = Run.Field.HalfDensity + row * n;
        const double* gamma = Run.Field.GammaMatrix + row * n;
        double* f = fock + row * n;
        for (long long k = 0; k < n; ++k) {
            f[k] -= q[k] * gamma[k];
        }
        PollMessages(Run.Basis.OrbitalCount);
    }
}

// The change of a p orbital's diagonal element: x its own place in the block, y and z those of the other two. These two
// are added first, so that equal densities of two orbitals give equal elements, to the last bit.
static double DiagonalExchange(const AtomBlock& p, const AtomBlock& q, int x, int y, int z, double f, double g) {
    const double others = (2.0 * p.At(y, y) + 3.0 * q.At(y, y)) + (2.0 * p.At(z, z) + 3.0 * q.At(z, z));
    return (4.0 * (p.At(x, x) - q.At(x, x)) - others) * f - q.At(0, 0) * g;
}

static void AddExchangeOfAtom(const AtomBlock& fock, const AtomBlock& p, const AtomBlock& q, double g, double f) {
    fock.At(0, 0) -= (q.At(1, 1) + q.At(2, 2) + q.At(3, 3)) * g;
    for (int x = 1; x <= 3; ++x) {
        fock.At(0, x) += (2.0 * p.At(0, x) - q.At(0, x)) * g;
        fock.At(x, 0) += (2.0 * p.At(x, 0) - q.At(x, 0)) * g;
        for (int y = 1; y < x; ++y) {
            fock.At(x, y) += (6.0 * p.At(x, y) - q.At(x, y)) * f;
            fock.At(y, x) += (6.0 * p.At(y, x) - q.At(y, x)) * f;
        }
    }
    fock.At(1, 1) += DiagonalExchange(p, q, 1, 2, 3, f, g);
    fock.At(2, 2) += DiagonalExchange(p, q, 2, 3, 1, f, g);
    fock.At(3, 3) += DiagonalExchange(p, q, 3, 1, 2, f, g);
}

// Capping atoms and the second row take part, hydrogen and helium don't.
static void AddOneCentreExchange(double* fock) {
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const AtomRecord& atom = SelectedAtom(place);
        if (atom.AtomicNumber >= 3) {
            const AtomTypeParameters& parameters = ParametersOf(atom);
            const OrbitalRange& range = Run.Basis.OrbitalRanges[place];
            AddExchangeOfAtom(BlockOf(fock, range), BlockOf(Run.Field.TotalDensity, range),
                              BlockOf(Run.Field.HalfDensity, range), parameters.SlaterCondonG1 * Third,
                              parameters.SlaterCondonF2 * TwentyFifth);
        }
    }
}

// The diagonal of the density goes to the first scratch buffer, the potential that it makes to the second.
static void AddCoulomb(double* fock) {
    const int n = Run.Basis.OrbitalCount;
    const std::size_t stride = static_cast<std::size_t>(n);
    for (int nu = 0; nu < n; ++nu) {
        Run.Field.FirstScratch[nu] = Run.Field.TotalDensity[static_cast<std::size_t>(nu) * (stride + 1)];
    }
    Kernels().DotRows(Run.Field.GammaMatrix, stride, n, Run.Field.FirstScratch, n, Run.Field.SecondScratch);
    for (int mu = 0; mu < n; ++mu) {
        fock[static_cast<std::size_t>(mu) * (stride + 1)] += Run.Field.SecondScratch[mu];
    }
    PollMessages(n * n);
}

void BuildFockMatrix(double* fock) {
    SubtractExchange(fock);
    if (Run.Options.SemiEmpiricalMethod == 2) {
        AddOneCentreExchange(fock);
    }
    AddCoulomb(fock);
}
