// SPDX-License-Identifier: MIT
// Drives the iterations of the self-consistent field through their three regimes: exact diagonalisation with density
// extrapolation, pseudo-diagonalisation, and exact diagonalisation alone.
#include "wavefunction/solve_wavefunction.h"

#include "ground/log.h"
#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "integrals/gamma_matrix.h"
#include "molecule/units.h"
#include "numerics/dense_kernels.h"
#include "numerics/eigensolver.h"
#include "wavefunction/core_hamiltonian.h"
#include "wavefunction/density_extrapolation.h"
#include "wavefunction/density_matrix.h"
#include "wavefunction/dipole.h"
#include "wavefunction/fock_extrapolation.h"
#include "wavefunction/fock_matrix.h"
#include "wavefunction/level_shifter.h"
#include "wavefunction/matrix_listings.h"
#include "wavefunction/overlap_matrix.h"
#include "wavefunction/pseudo_diagonalisation.h"
#include "wavefunction/report_wavefunction.h"
#include "wavefunction/run_cautions.h"

#include <algorithm>
#include <cmath>

static constexpr double FastLimit = 0.1;  // change of the density, or commutator measure, that opens the fast phase
static constexpr int LogOff = 10;         // LogPrintLevel that switches the log off
static constexpr int NearEndIterations = 5;

// State of one call.
struct ScfState {
    int IterationNumber;              // 1 in the first iteration
    double ElectronicEnergy;          // of this iteration, Hartree
    double PreviousEnergy;            // of the iteration before, Hartree
    double EnergyBeforeLast;          // of the one before that, Hartree
    double EnergyChange;              // kcal/mol
    double DensityChange;             // largest change of a diagonal element, or the commutator measure
    bool ScfConverged;                // one further iteration, and the loop stops
    bool FastPhase;                   // latch: pseudo-diagonalisation and Fock extrapolation
    bool ExactPhase;                  // exact diagonalisation, no density extrapolation
    double ConvergenceLimit;          // kcal/mol
    double ExactLimit;                // kcal/mol
    FockExtrapolation Extrapolation;  // history of the Fock extrapolation
    LevelShifter Shifter;             // off in every run
};

static long long SquareSize() {
    return static_cast<long long>(Run.Basis.OrbitalCount) * Run.Basis.OrbitalCount;
}

static bool ListsMatrices() {
    return Run.Options.LogPrintLevel < LogOff;
}

static void SetUnitMatrix(double* matrix, double diagonal) {
    const long long n = Run.Basis.OrbitalCount;
    std::fill(matrix, matrix + n * n, 0.0);
    for (long long i = 0; i < n; ++i) {
        matrix[i * n + i] = diagonal;
    }
}

// One electron in every orbital, whatever the number of electrons.
static void StartDensity() {
    SetUnitMatrix(Run.Field.TotalDensity, 1.0);
    SetUnitMatrix(Run.Field.HalfDensity, 0.5);
    SetUnitMatrix(Run.Field.MolecularOrbitals, 1.0);
    SetUnitMatrix(Run.Field.PreviousDensity, 0.5);
    std::fill(Run.Field.DiagonalHistory, Run.Field.DiagonalHistory + Run.Basis.OrbitalCount, 0.0);
}

static void StartState(ScfState& state) {
    state = {};
    state.PreviousEnergy = 99.0;
    state.DensityChange = 1.0;
    state.Extrapolation.ResetHistory = true;
    state.ConvergenceLimit = static_cast<double>(Run.Options.SCFConvergenceLimit);
    state.ExactLimit = 100.0 * state.ConvergenceLimit;
    StartLevelShifter(state.Shifter);
}

static void SetUp() {
    ComputeReferencePoint();
    ++Run.Field.ScfPassCounter;
    BuildOverlapMatrix(Run.Field.CoreHamiltonian);
    BuildGammaMatrix(Run.Field.GammaMatrix);
    BuildCoreHamiltonian(Run.Field.CoreHamiltonian, Run.Field.GammaMatrix);
    StartDensity();
    if (ListsMatrices()) {
        ListScfStage(CoreStage);
    }
}

// The first iteration of the first wavefunction of a run starts from a one-electron matrix with the orbitals' own
// energies on its diagonal; the first of the second starts, on purpose, from the field of the unit density.
static void FormFockMatrix(ScfState& state) {
    const ScfProgress progress = {state.IterationNumber, state.ScfConverged, state.PreviousEnergy,
                                  state.EnergyBeforeLast, state.DensityChange};
    UpdateLevelShift(state.Shifter, progress, &state.FastPhase);
    std::copy(Run.Field.CoreHamiltonian, Run.Field.CoreHamiltonian + SquareSize(), Run.Field.FockMatrix);
    ApplyLevelShift(state.Shifter);
    if (state.IterationNumber == 1 && Run.Field.ScfPassCounter < 1) {
        for (long long i = 0; i < Run.Basis.OrbitalCount; ++i) {
            Run.Field.FockMatrix[i * Run.Basis.OrbitalCount + i] = Run.Field.CoreDiagonal[i];
        }
    } else {
        BuildFockMatrix(Run.Field.FockMatrix);
    }
}

// Half the electronic energy: 0.5 times the sum over all elements of (H + F) Q, row by row.
static double HalfEnergy() {
    const int n = Run.Basis.OrbitalCount;
    const std::size_t stride = static_cast<std::size_t>(n);
    double sum = 0.0;
    for (std::size_t row = 0; row < stride; ++row) {
        const double* density = Run.Field.HalfDensity + row * stride;
        double core;
        double fock;
        Kernels().DotRows(Run.Field.CoreHamiltonian + row * stride, stride, 1, density, n, &core);
        Kernels().DotRows(Run.Field.FockMatrix + row * stride, stride, 1, density, n, &fock);
        sum += core + fock;
        PollMessages(n);
    }
    return 0.5 * sum;
}

static void Diagonalise(ScfState& state) {
    if (state.FastPhase) {
        if (Run.Options.SCFAccelerateConvergence) {
            state.DensityChange = ExtrapolateFock(state.Extrapolation);
        }
        if (!state.ExactPhase) {
            PseudoDiagonalise();
            return;
        }
    }
    SolveEigenproblem(Run.Field.FockMatrix, Run.Field.MolecularOrbitals, Run.Field.OrbitalEnergiesRaw,
                      Run.Basis.OrbitalCount);
}

static void SplitDensity() {
    const long long size = SquareSize();
    for (long long i = 0; i < size; ++i) {
        Run.Field.TotalDensity[i] = Run.Field.HalfDensity[i];
        Run.Field.HalfDensity[i] *= 0.5;
    }
    PollMessages(Run.Basis.OrbitalCount);
}

static void UpdateDensity(ScfState& state) {
    BuildDensity(Run.Field.HalfDensity);
    if (ListsMatrices()) {
        ListScfStage(DensityStage);
    }
    if (!state.ExactPhase && !(state.FastPhase && Run.Options.SCFAccelerateConvergence)) {
        state.DensityChange = ExtrapolateDensity(state.IterationNumber, state.DensityChange);
    }
    SplitDensity();
    state.Shifter.ShiftOk = state.DensityChange < FastLimit && state.Shifter.ShiftQuiet;
    state.FastPhase = state.FastPhase || state.Shifter.ShiftOk;
}

// The number and the difference lag one iteration behind, so that the line reads as a count of differences.
static void ReportScfProgress(int iteration, double difference) {
    LogProgress(Message::IterationDifference, static_cast<double>(iteration), difference);
}

static void UpdatePhases(ScfState& state) {
    if (state.EnergyChange < state.ConvergenceLimit) {
        state.ScfConverged = true;
    }
    const bool nearEnd =
        state.IterationNumber >= static_cast<long long>(Run.Options.SCFIterationLimit) - NearEndIterations;
    if (state.EnergyChange < state.ExactLimit || nearEnd) {
        state.ExactPhase = true;
    }
    if (state.EnergyChange > state.ExactLimit && !nearEnd) {
        state.ExactPhase = false;
    }
}

// One iteration; false when it was the last.
static bool Iterate(ScfState& state) {
    ++state.IterationNumber;
    FormFockMatrix(state);
    if (ListsMatrices()) {
        ListScfStage(FockStage);
    }
    const double halfEnergy = HalfEnergy();
    Diagonalise(state);
    UpdateDensity(state);
    state.ElectronicEnergy = 2.0 * halfEnergy;
    if (state.ScfConverged || state.IterationNumber > static_cast<long long>(Run.Options.SCFIterationLimit) + 1) {
        return false;
    }
    state.EnergyChange = std::fabs(state.ElectronicEnergy - state.PreviousEnergy) * KcalPerHartree;
    if (state.IterationNumber >= 2) {
        ReportScfProgress(state.IterationNumber - 1, state.EnergyChange);
    }
    UpdatePhases(state);
    state.EnergyBeforeLast = state.PreviousEnergy;
    state.PreviousEnergy = state.ElectronicEnergy;
    return true;
}

void SolveWavefunction() {
    SetUp();
    ScfState state;
    StartState(state);
    while (Iterate(state)) {
    }
    if (!state.ScfConverged) {
        CautionAboutField(state.EnergyChange, state.ConvergenceLimit);
    }
    if (ListsMatrices()) {
        ListScfStage(FinalStage);
    }
    ComputeNetCharges();
    ReportWavefunction(state.ElectronicEnergy);
}
