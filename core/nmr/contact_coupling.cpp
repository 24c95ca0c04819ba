// SPDX-License-Identifier: MIT
// Iterates the contact response of each NMR atom, and converts responses to coupling constants.
#include "nmr/contact_coupling.h"

#include "ground/log.h"
#include "ground/message_poll.h"
#include "molecule/selected_atoms.h"
#include "wavefunction/density_extrapolation.h"
#include "wavefunction/first_order_orbitals.h"
#include "wavefunction/response_solver.h"
#include "wavefunction/run_cautions.h"
#include "wavefunction/slater_condon.h"

#include <algorithm>
#include <cmath>
#include <limits>

static constexpr double LimitFactor = 1e-5;             // of SCFConvergenceLimit
static constexpr double ExtrapolationFactor = 10.0;     // of the limit
static constexpr double AcceleratedLimitFactor = 1e-9;  // of SCFConvergenceLimit
static constexpr double Unlimited = std::numeric_limits<double>::infinity();

// Stored values in the system's cgs convention, with alpha the fine-structure constant: they come from constants of
// their own, not from those of the shielding, and stay on purpose, as results depend on each digit.
static constexpr double ContactFactor = 1.2438805210547523e-8;       // (2 pi alpha^2 / 3)^2
static constexpr double InverseVolumeFactor = 5.069040731147547e29;  // 4 / (alpha^2 a0^3), a0 in cm
static constexpr double MagnetonFactor = 3.850008004857603e-21;      // nuclear magneton squared over Planck's constant

// 0-based number of the s orbital of an atom, -1 if it is not in the selection or has none.
static long long FirstOrbitalOf(int atomNumber) {
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        if (Run.Molecule.QuantumSelection.SelectedAtomList[place] == atomNumber &&
            SelectedAtom(place).AtomicNumber >= 1) {
            return Run.Basis.OrbitalRanges[place].First - 1;
        }
    }
    return -1;
}

// One-centre exchange of TNDO/2 on the s and p orbitals of an atom, s at (0, 0) of both blocks.
static void SubtractExchangeOfAtom(double* fock, const double* p, double g, double f) {
    const long long n = Run.Basis.OrbitalCount;
    const auto density = [&](int row, int column) { return p[row * n + column]; };
    const auto element = [&](int row, int column) -> double& { return fock[row * n + column]; };
    element(0, 0) -= g * (density(1, 1) + density(2, 2) + density(3, 3));
    for (int x = 1; x <= 3; ++x) {
        element(0, x) -= g * density(0, x);
        element(x, 0) -= g * density(x, 0);
        for (int y = 1; y <= 3; ++y) {
            if (y != x) {
                element(x, y) -= f * density(x, y);
            }
        }
        const int y = x % 3 + 1;
        const int z = y % 3 + 1;
        element(x, x) -= f * (3.0 * (density(y, y) + density(z, z)) + 4.0 * density(x, x)) + g * density(0, 0);
    }
}

static void SubtractOneCentreExchange(double* fock, const double* density) {
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const AtomRecord& atom = SelectedAtom(place);
        if (atom.AtomicNumber >= 3) {
            const AtomTypeParameters& parameters = ParametersOf(atom);
            const long long start = (Run.Basis.OrbitalRanges[place].First - 1) * (Run.Basis.OrbitalCount + 1LL);
            SubtractExchangeOfAtom(fock + start, density + start, parameters.SlaterCondonG1 * Third,
                                   parameters.SlaterCondonF2 * TwentyFifth);
        }
        PollMessages(100);
    }
}

ResponseOperator ContactOperator() {
    return {Symmetric, 1.0, Run.Field.GammaMatrix,
            Run.Options.SemiEmpiricalMethod == 2 ? SubtractOneCentreExchange : nullptr};
}

// The perturbation, 1 Hartree on the s orbital, and from iteration 1 on the exchange field of the density. There is no
// Coulomb term: the densities of the two spins are opposite.
static void BuildContactFock(int iteration, long long orbital, const double* density, double* fock) {
    const long long n = Run.Basis.OrbitalCount;
    if (iteration < 1) {
        std::fill(fock, fock + n * n, 0.0);
    } else {
        BuildExchange(ContactOperator(), density, fock);
    }
    if (orbital >= 0) {
        fock[orbital * (n + 1)] += 1.0;
    }
}

// The response of both spins on the s orbitals of the other atoms.
static void StoreContactResponse(int atomNumber, const double* density, double* response) {
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        double value = 0.0;
        if (SelectedAtom(place).AtomicNumber >= 1 &&
            Run.Molecule.QuantumSelection.SelectedAtomList[place] != atomNumber) {
            value = density[(Run.Basis.OrbitalRanges[place].First - 1) * (Run.Basis.OrbitalCount + 1LL)];
        }
        response[place] = value + value;
    }
}

// Iterates the response of one atom. A limit that isn't reached is no error: the last density
// stands, and the log says so.
static void IterateResponse(int atomNumber, double* change) {
    double* fock = Run.Field.FirstScratch;
    double* u = Run.Field.SecondScratch;
    double* density = Run.Field.FockMatrix;
    const double limit = static_cast<double>(Run.Options.SCFConvergenceLimit) * LimitFactor;
    const long long orbital = FirstOrbitalOf(atomNumber);
    for (int iteration = 0; iteration < Run.Options.SCFIterationLimit; ++iteration) {
        BuildContactFock(iteration, orbital, density, fock);
        SolveFirstOrderOrbitals(fock, Symmetric, u);
        BuildFirstOrderDensity(u, 1.0, Symmetric, density);  // of one spin
        if (*change > ExtrapolationFactor * limit) {
            ExtrapolateMatrix(density, iteration, -Unlimited, Unlimited, *change);
        }
        *change = MeasureDensityChange(density, Run.Field.HalfDensity, iteration);
        if (iteration > 0) {
            LogProgress(Message::PerturbedAtomIteration, atomNumber, iteration, *change);
        }
        if (*change <= limit && iteration > 1) {
            return;
        }
    }
    if (orbital >= 0) {  // without the perturbation the response is 0
        CautionAboutContactResponse(atomNumber, *change, limit);
    }
}

// B of the perturbation of an s orbital; 0 if there is none.
static void FillPerturbation(long long orbital, double* amplitudes) {
    const long long n = Run.Basis.OrbitalCount;
    const double* c = Run.Field.MolecularOrbitals;
    for (long long i = 0; i < Run.Basis.DoublyOccupiedLevels; ++i) {
        for (long long a = Run.Basis.DoublyOccupiedLevels; a < n; ++a) {
            *amplitudes++ = orbital >= 0 ? -c[i * n + orbital] * c[a * n + orbital] : 0.0;
        }
        PollMessages(Run.Basis.OrbitalCount);
    }
}

// True if the responses at one another are all that is asked for: each is a quadratic form, whose error is the square
// of that of the amplitudes.
static bool AllAtomsArePerturbed(const int* atoms, int count) {
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        if (HasOrbitals(place) && std::find(atoms, atoms + count, SelectedAtomNumber(place)) == atoms + count) {
            return false;
        }
        PollMessages(count);
    }
    return true;
}

static double AcceleratedLimit(const int* atoms, int count) {
    const double limit = std::max(0.0, static_cast<double>(Run.Options.SCFConvergenceLimit)) * AcceleratedLimitFactor;
    return AllAtomsArePerturbed(atoms, count) ? std::sqrt(limit) : limit;
}

static int FirstOfBatch;  // place in NMRAtomList

static void LogDifference(int perturbation, int iteration, double difference) {
    LogProgress(Message::PerturbedAtomIteration, Run.Molecule.NMRAtomList[FirstOfBatch + perturbation], iteration,
                difference);
}

// Solves some of the responses; true if the wavefunction has shown itself unstable.
static bool SolveBatch(const ResponseOperator& kind, int count) {
    const int* atoms = Run.Molecule.NMRAtomList + FirstOfBatch;
    for (int c = 0; c < count; ++c) {
        FillPerturbation(FirstOrbitalOf(atoms[c]), ResponsePerturbations() + c * AmplitudeCount());
    }
    const ResponseOutcome outcome = SolveResponses(kind, count, AcceleratedLimit(atoms, count), LogDifference);
    for (int c = 0; c < count; ++c) {
        FormFirstOrderOrbitals(ResponseAmplitudes() + c * AmplitudeCount(), 1, ResponseRows());
        BuildFirstOrderDensity(ResponseRows(), kind.DensityFactor, kind.Symmetry, Run.Field.HalfDensity);
        StoreContactResponse(atoms[c], Run.Field.HalfDensity,
                             Run.Coupling.CouplingMatrix +
                                 (FirstOfBatch + c) * static_cast<long long>(Run.Molecule.SelectedAtomCount));
        if (!(outcome.Differences[c] <= outcome.Limit)) {
            CautionAboutContactResponse(atoms[c], outcome.Differences[c], outcome.Limit);
        }
    }
    return outcome.Unstable;
}

static void SolveAllResponses() {
    const ResponseOperator kind = ContactOperator();
    const int batch = std::min(ResponseBatch(), Run.Molecule.NMRAtomCount);
    bool unstable = false;
    PrepareResponses(batch);
    for (FirstOfBatch = 0; FirstOfBatch < Run.Molecule.NMRAtomCount; FirstOfBatch += batch) {
        unstable = SolveBatch(kind, std::min(batch, Run.Molecule.NMRAtomCount - FirstOfBatch)) || unstable;
    }
    if (unstable) {
        CautionAboutInstability("contact", kind);
    }
}

void ComputeCouplingResponses() {
    const long long n = Run.Basis.OrbitalCount;
    PrepareFirstOrderOrbitals();
    if (Run.Options.ResponseAcceleration) {
        SolveAllResponses();
        return;
    }
    std::fill(Run.Field.FockMatrix, Run.Field.FockMatrix + n * n, 0.0);  // no iteration at all leaves no response
    double change = 99.9;
    for (int g = 0; g < Run.Molecule.NMRAtomCount; ++g) {
        IterateResponse(Run.Molecule.NMRAtomList[g], &change);
        StoreContactResponse(Run.Molecule.NMRAtomList[g], Run.Field.FockMatrix,
                             Run.Coupling.CouplingMatrix + static_cast<long long>(g) * Run.Molecule.SelectedAtomCount);
    }
}

void ConvertCouplingConstants(double* reduced) {
    for (long long g = 0; g < Run.Molecule.NMRAtomCount; ++g) {
        const AtomRecord& atomA = Run.Molecule.AtomRecords[Run.Molecule.NMRAtomList[g] - 1];
        const NuclearConstants& a = Run.Parameters.CouplingConstants[atomA.AtomType];
        for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
            const AtomRecord& atomB = SelectedAtom(place);
            const NuclearConstants& b = Run.Parameters.CouplingConstants[atomB.AtomType];
            double& response = Run.Coupling.CouplingMatrix[g * Run.Molecule.SelectedAtomCount + place];
            double& k = reduced[g * Run.Molecule.SelectedAtomCount + place];
            k = 0.0;
            if (atomA.AtomicNumber >= 1 && atomB.AtomicNumber >= 1) {
                k = response * ContactFactor * a.SDensity * b.SDensity * InverseVolumeFactor;
                response = (a.GFactor * b.GFactor) * k * MagnetonFactor;
            }
        }
    }
}
