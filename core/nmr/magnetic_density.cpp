// SPDX-License-Identifier: MIT
// Iterates the coupled first-order equation for each direction of the field.
#include "nmr/magnetic_density.h"

#include "ground/log.h"
#include "ground/message_poll.h"
#include "molecule/selected_atoms.h"
#include "numerics/elementary_functions.h"
#include "numerics/mathematical_constants.h"
#include "wavefunction/atom_block.h"
#include "wavefunction/first_order_orbitals.h"
#include "wavefunction/orbital_places.h"
#include "wavefunction/response_solver.h"
#include "wavefunction/run_cautions.h"

#include <algorithm>
#include <cmath>

static constexpr double LimitFactor = 1e-7;             // of SCFConvergenceLimit
static constexpr double AcceleratedLimitFactor = 1e-8;  // of SCFConvergenceLimit
static constexpr double FieldComponent = 0.57735027;    // eight digits on purpose: the constants of the terms fit it
static constexpr double HalfFineStructure =
    0.00364865;                                    // half of the fine-structure constant in six digits, on purpose
static constexpr double ThirdOfG1 = 0.3333333333;  // on purpose ten threes, not the thirteen of the other fields

// Angular momentum about the atom's own centre; h is the field in atomic units times HalfFineStructure.
static void FillOneCentreBlock(const AtomBlock& block, int orbitals, const double* h) {
    if (orbitals > 1) {
        block.SetAntisymmetric(Y, X, h[2]);
        block.SetAntisymmetric(Z, X, -h[1]);
        block.SetAntisymmetric(Z, Y, h[0]);
    }
    if (orbitals > 4) {
        block.SetAntisymmetric(DXZ, DZ2, RoundedRootThree * h[1]);
        block.SetAntisymmetric(DYZ, DZ2, -RoundedRootThree * h[0]);
        block.SetAntisymmetric(DYZ, DXZ, h[2]);
        block.SetAntisymmetric(DX2, DXZ, h[1]);
        block.SetAntisymmetric(DXY, DXZ, -h[0]);
        block.SetAntisymmetric(DX2, DYZ, h[0]);
        block.SetAntisymmetric(DXY, DYZ, h[1]);
        block.SetAntisymmetric(DXY, DX2, 2.0 * h[2]);
    }
}

// The sine is that of the whole phase, on purpose: it isn't linearised, though a field of 1 is no small one for a
// molecule of some size, and so the matrix depends weakly on where the molecule lies.
static double SineOfPhase(const double* a, const double* b, const double* h) {
    const double phase =
        h[0] * (a[1] * b[2] - a[2] * b[1]) + h[1] * (a[2] * b[0] - a[0] * b[2]) + h[2] * (a[0] * b[1] - a[1] * b[0]);
    return std::isfinite(phase) ? Sine(phase) : 0.0;
}

static void FillPairBlock(const OrbitalRange& a, const OrbitalRange& b, double sine, double* hamiltonian) {
    const long long n = Run.Basis.OrbitalCount;
    for (long long mu = a.First - 1; mu < a.Last; ++mu) {
        for (long long nu = b.First - 1; nu < b.Last; ++nu) {
            hamiltonian[mu * n + nu] = sine * Run.Field.CoreHamiltonian[mu * n + nu];
            hamiltonian[nu * n + mu] = -hamiltonian[mu * n + nu];
        }
    }
}

static void BuildMagneticHamiltonian(const double* field, double* hamiltonian) {
    const long long n = Run.Basis.OrbitalCount;
    const double scale = Run.Options.FinitePerturbation * HalfFineStructure;
    const double h[3] = {scale * field[0], scale * field[1], scale * field[2]};
    std::fill(hamiltonian, hamiltonian + n * n, 0.0);
    for (int a = 0; a < Run.Molecule.SelectedAtomCount; ++a) {
        const OrbitalRange& range = Run.Basis.OrbitalRanges[a];
        FillOneCentreBlock(BlockOf(hamiltonian, range), range.Last - range.First + 1, h);
        for (int b = 0; b < a; ++b) {
            FillPairBlock(range, Run.Basis.OrbitalRanges[b], SineOfPhase(SelectedPosition(a), SelectedPosition(b), h),
                          hamiltonian);
        }
        PollMessages(Run.Basis.OrbitalCount);
    }
}

// One-centre exchange: in TNDO/1 the whole block through gamma, in TNDO/2 the s and p orbitals through the
// Slater-Condon constants.
static void ReplaceOneCentreExchange(int place, const double* hamiltonian, const double* density, double* fock) {
    const OrbitalRange& range = Run.Basis.OrbitalRanges[place];
    const int orbitals = range.Last - range.First + 1;
    if (orbitals < 1) {
        return;  // a lone pair
    }
    const long long n = Run.Basis.OrbitalCount;
    const long long start = (range.First - 1) * (n + 1);
    const AtomTypeParameters& parameters = ParametersOf(SelectedAtom(place));
    const double g = Run.Field.GammaMatrix[start];
    const double sp = g - parameters.SlaterCondonG1 * ThirdOfG1;
    const double pp = g - parameters.SlaterCondonF2 * 0.2;
    for (int mu = 0; mu < orbitals; ++mu) {
        for (int nu = 0; nu < orbitals; ++nu) {
            const long long at = start + mu * n + nu;
            double weight = Run.Field.GammaMatrix[at];
            if (Run.Options.SemiEmpiricalMethod == 2) {
                weight = mu > Z || nu > Z ? 0.0 : mu == S || nu == S ? sp : pp;
            }
            fock[at] = hamiltonian[at] + (mu != nu && orbitals > 1 ? 0.5 * weight * density[at] : 0.0);
        }
    }
    PollMessages(orbitals * orbitals);
}

static void BuildMagneticFock(int iteration, const double* hamiltonian, const double* density, double* fock) {
    const long long n = Run.Basis.OrbitalCount;
    if (iteration == 0) {
        std::copy(hamiltonian, hamiltonian + n * n, fock);
        return;
    }
    for (long long mu = 0; mu < n; ++mu) {
        for (long long nu = 0; nu < n; ++nu) {
            fock[mu * n + nu] =
                hamiltonian[mu * n + nu] + 0.5 * Run.Field.GammaMatrix[mu * n + nu] * density[mu * n + nu];
        }
        PollMessages(Run.Basis.OrbitalCount);
    }
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        ReplaceOneCentreExchange(place, hamiltonian, density, fock);
    }
}

static constexpr const char* DirectionNames[] = {"x", "y", "z"};

static void BuildHamiltonianAlong(int direction, double* hamiltonian) {
    double field[3] = {};
    field[direction] = FieldComponent;
    BuildMagneticHamiltonian(field, hamiltonian);
}

// Iterates one direction; the stored density is the last iterate, converged or not.
static void IterateDirection(int direction, double limit) {
    double* hamiltonian = Run.Field.FirstScratch;
    double* fock = Run.Field.SecondScratch;
    double* u = Run.Field.FockMatrix;
    double* density = Run.Field.HalfDensity;
    BuildHamiltonianAlong(direction, hamiltonian);
    double change = 0.0;
    for (int iteration = 0; iteration < Run.Options.SCFIterationLimit; ++iteration) {
        BuildMagneticFock(iteration, hamiltonian, density, fock);
        SolveFirstOrderOrbitals(fock, Antisymmetric, u);
        BuildFirstOrderDensity(u, 2.0, Antisymmetric, density);  // of both spins
        change = MeasureDensityChange(density, Run.Shielding.MagneticDensities[direction], iteration);
        if (iteration > 0) {
            LogProgress(Message::PerturbedDirectionIteration, DirectionNames[direction], iteration, change);
        }
        if (change <= limit && iteration > 1) {
            return;
        }
    }
    const long long n = Run.Basis.OrbitalCount;
    const auto isZero = [](double element) { return element == 0.0; };
    if (!std::all_of(hamiltonian, hamiltonian + n * n, isZero)) {  // without it the response is 0
        CautionAboutMagneticResponse(DirectionNames[direction], change, limit);
    }
}

static void LogDifference(int direction, int iteration, double difference) {
    LogProgress(Message::PerturbedDirectionIteration, DirectionNames[direction], iteration, difference);
}

// The field of a density of ones without a perturbation: the factors of the elements of any density.
static void BuildExchangeWeights(double* weights) {
    const long long square = static_cast<long long>(Run.Basis.OrbitalCount) * Run.Basis.OrbitalCount;
    std::fill(Run.Field.FirstScratch, Run.Field.FirstScratch + square, 0.0);
    std::fill(Run.Field.HalfDensity, Run.Field.HalfDensity + square, 1.0);
    BuildMagneticFock(1, Run.Field.FirstScratch, Run.Field.HalfDensity, weights);
}

static void SolveAllDirections() {
    const double limit = std::max(0.0, static_cast<double>(Run.Options.SCFConvergenceLimit)) * AcceleratedLimitFactor;
    const ResponseOperator kind = {Antisymmetric, 2.0, Run.Field.SecondScratch, nullptr};
    BuildExchangeWeights(Run.Field.SecondScratch);
    PrepareResponses(3);
    for (int direction = 0; direction < 3; ++direction) {
        BuildHamiltonianAlong(direction, Run.Field.FirstScratch);
        ProjectOnLevels(Run.Field.FirstScratch, ResponseRows(), ResponsePerturbations() + direction * AmplitudeCount());
    }
    const ResponseOutcome outcome = SolveResponses(kind, 3, limit, LogDifference);
    for (int direction = 0; direction < 3; ++direction) {
        FormFirstOrderOrbitals(ResponseAmplitudes() + direction * AmplitudeCount(), 1, ResponseRows());
        BuildFirstOrderDensity(ResponseRows(), kind.DensityFactor, kind.Symmetry,
                               Run.Shielding.MagneticDensities[direction]);
        if (!(outcome.Differences[direction] <= outcome.Limit)) {
            CautionAboutMagneticResponse(DirectionNames[direction], outcome.Differences[direction], outcome.Limit);
        }
    }
    if (outcome.Unstable) {
        CautionAboutInstability("magnetic", kind);
    }
}

void ComputeMagneticDensities() {
    const long long n = Run.Basis.OrbitalCount;
    const double limit = static_cast<double>(Run.Options.SCFConvergenceLimit) * LimitFactor;
    Run.Options.FinitePerturbation = 1.0;  // whatever the input gave
    PrepareFirstOrderOrbitals();
    if (Run.Options.ResponseAcceleration) {
        SolveAllDirections();
        return;
    }
    for (int direction = 0; direction < 3; ++direction) {
        double* density = Run.Shielding.MagneticDensities[direction];
        std::fill(density, density + n * n, 0.0);
        IterateDirection(direction, limit);
    }
}
