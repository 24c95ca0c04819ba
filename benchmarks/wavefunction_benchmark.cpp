// SPDX-License-Identifier: MIT
// Single steps of a parameter run within the process, by molecule: integrals, the parts of one iteration in
// each of its regimes, a whole wavefunction, and one coupling response. N is the number of orbitals. The steps of an
// iteration start from the field a few iterations in, not from a converged one.
#include "benchmarks/molecule_input.h"
#include "files/atom_selection.h"
#include "files/parameter_files.h"
#include "files/run_input.h"
#include "ground/run_state.h"
#include "integrals/gamma_matrix.h"
#include "nmr/contact_coupling.h"
#include "numerics/eigensolver.h"
#include "wavefunction/core_hamiltonian.h"
#include "wavefunction/density_matrix.h"
#include "wavefunction/dipole.h"
#include "wavefunction/first_order_orbitals.h"
#include "wavefunction/fock_extrapolation.h"
#include "wavefunction/fock_matrix.h"
#include "wavefunction/orbital_tables.h"
#include "wavefunction/overlap_matrix.h"
#include "wavefunction/prepare_system.h"
#include "wavefunction/pseudo_diagonalisation.h"
#include "wavefunction/solve_wavefunction.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <vector>

static constexpr double FockNoise = 1e-3;  // Hartree; keeps the matrices of an extrapolation apart

static std::string WorkFolder;
static std::string LoadedCase;  // molecule and state that are in Run
static FockExtrapolation Extrapolation;

// What a step may spoil, as it was when the state was loaded.
static struct { std::vector<double> Fock, HalfDensity, TotalDensity, PreviousDensity, Orbitals, Energies; } Saved;

static std::size_t SquareSize() {
    return static_cast<std::size_t>(Run.Basis.OrbitalCount) * static_cast<std::size_t>(Run.Basis.OrbitalCount);
}

static std::vector<double> CopyOf(const double* array, std::size_t length) {
    return std::vector<double>(array, array + length);
}

static void Save() {
    std::copy(Run.Field.CoreHamiltonian, Run.Field.CoreHamiltonian + SquareSize(), Run.Field.FockMatrix);
    BuildFockMatrix(Run.Field.FockMatrix);
    Saved.Fock = CopyOf(Run.Field.FockMatrix, SquareSize());
    Saved.HalfDensity = CopyOf(Run.Field.HalfDensity, SquareSize());
    Saved.TotalDensity = CopyOf(Run.Field.TotalDensity, SquareSize());
    Saved.PreviousDensity = CopyOf(Run.Field.PreviousDensity, SquareSize());
    Saved.Orbitals = CopyOf(Run.Field.MolecularOrbitals, SquareSize());
    Saved.Energies = CopyOf(Run.Field.OrbitalEnergiesRaw, static_cast<std::size_t>(Run.Basis.OrbitalCount));
}

static void Restore() {
    std::copy(Saved.Fock.begin(), Saved.Fock.end(), Run.Field.FockMatrix);
    std::copy(Saved.HalfDensity.begin(), Saved.HalfDensity.end(), Run.Field.HalfDensity);
    std::copy(Saved.TotalDensity.begin(), Saved.TotalDensity.end(), Run.Field.TotalDensity);
    std::copy(Saved.PreviousDensity.begin(), Saved.PreviousDensity.end(), Run.Field.PreviousDensity);
    std::copy(Saved.Orbitals.begin(), Saved.Orbitals.end(), Run.Field.MolecularOrbitals);
    std::copy(Saved.Energies.begin(), Saved.Energies.end(), Run.Field.OrbitalEnergiesRaw);
}

static char* Keep(const std::string& text) {
    static std::vector<std::string> texts;
    texts.reserve(8);
    texts.push_back(text);
    return texts.back().data();
}

static void SetUpRun() {
    Run.Job.ParameterDirectory = Keep(WorkFolder + "/parameters/");
    Run.Job.LogFilePath = Keep("");
    std::snprintf(Run.Job.InputFilePath, FilePathSize, "%s/nmrparam.in", WorkFolder.c_str());
    std::snprintf(Run.Job.OutputFilePath, FilePathSize, "%s/nmrparam.out", WorkFolder.c_str());
    Run.Job.RunKind = ParameterRun;
    Run.Process.ConsoleMode = 0;
    ReadParameterFiles();
    FreeRunData();
}

// Solves the wavefunction of a molecule, or the first few iterations of it, unless it is there already.
static void Load(const std::string& name, bool converged) {
    if (LoadedCase == name + (converged ? "+" : "-")) {
        return;
    }
    LoadedCase = name + (converged ? "+" : "-");
    WriteParameterInput(WorkFolder, ReadMolecule(name), 1,
                        converged ? "SemiEmpiricalMethod = 2\n"
                                  : "SemiEmpiricalMethod = 2\nSCFIterationLimit = 3\nSCFAccelerateConvergence = 1\n");
    FreeRunData();
    Run.Field.LevelShiftStartIteration = 0;
    ReadRunInput();
    BuildCappingAtoms();
    BuildSelectedAtomList();
    PrepareSystem();
    Run.Parameters.ActiveParameters = Run.Parameters.ParameterFileCoupling;
    Run.Parameters.ActiveParameterFile = "nmr_cupl.abp";
    PrepareDipoleFactors();
    PrepareOrbitalTables();
    SolveWavefunction();
    PrepareFirstOrderOrbitals();
    Save();
    Extrapolation = {};
    Extrapolation.ResetHistory = true;
}

static void Nothing() {}

// The Fock matrix with symmetric noise, as if it came from another iteration each time.
static void DisturbFock() {
    static std::mt19937 generator(1);
    const std::size_t n = static_cast<std::size_t>(Run.Basis.OrbitalCount);
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            Run.Field.FockMatrix[i * n + j] += FockNoise * (static_cast<double>(generator()) / 2147483648.0 - 1.0);
            Run.Field.FockMatrix[j * n + i] = Run.Field.FockMatrix[i * n + j];
        }
    }
}

static void StartWavefunction() {
    Run.Field.ScfPassCounter = -1;
}

// A step, with what has to be made ready before each measurement of it.
struct Step {
    const char* Name;
    bool Converged;     // starts from the converged wavefunction
    void (*Prepare)();  // not measured
    void (*Run)();
};

static const Step Steps[] = {
    {"overlap", false, Nothing, [] { BuildOverlapMatrix(::Run.Field.FirstScratch); }},
    {"gamma", false, Nothing, [] { BuildGammaMatrix(::Run.Field.FirstScratch); }},
    {"core", false, [] { BuildOverlapMatrix(::Run.Field.FirstScratch); },
     [] { BuildCoreHamiltonian(::Run.Field.FirstScratch, ::Run.Field.GammaMatrix); }},
    {"fock", false,
     [] { std::copy(::Run.Field.CoreHamiltonian, ::Run.Field.CoreHamiltonian + SquareSize(), ::Run.Field.FockMatrix); },
     [] { BuildFockMatrix(::Run.Field.FockMatrix); }},
    {"density", false, Nothing, [] { BuildDensity(::Run.Field.HalfDensity); }},
    {"exact", false, Nothing,
     [] {
         SolveEigenproblem(::Run.Field.FockMatrix, ::Run.Field.MolecularOrbitals, ::Run.Field.OrbitalEnergiesRaw,
                           ::Run.Basis.OrbitalCount);
     }},
    {"pseudo", false, Nothing, [] { PseudoDiagonalise(); }},
    {"extrapolation", false, DisturbFock, [] { ExtrapolateFock(Extrapolation); }},
    {"wavefunction", true, StartWavefunction, [] { SolveWavefunction(); }},
    {"response_orbitals", true, Nothing,
     [] { SolveFirstOrderOrbitals(::Run.Field.FockMatrix, Symmetric, ::Run.Field.SecondScratch); }},
    {"response_density", true,
     [] { SolveFirstOrderOrbitals(::Run.Field.FockMatrix, Symmetric, ::Run.Field.SecondScratch); },
     [] { BuildFirstOrderDensity(::Run.Field.SecondScratch, 1.0, Symmetric, ::Run.Field.FirstScratch); }},
    {"response", true, Nothing, [] { ComputeCouplingResponses(); }},
};

static void MeasureStep(benchmark::State& state, const Step& step, const std::string& name) {
    Load(name, step.Converged);
    for (auto _ : state) {
        Restore();
        step.Prepare();
        const auto start = std::chrono::steady_clock::now();
        step.Run();
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    state.counters["N"] = Run.Basis.OrbitalCount;
}

int main(int argc, char** argv) {
    WorkFolder = MakeParameterFolder();
    SetUpRun();
    for (const char* name : {"benzene", "naphthalene", "cholesterol", "helix"}) {
        for (const Step& step : Steps) {
            benchmark::RegisterBenchmark((std::string(step.Name) + "/" + name).c_str(), MeasureStep, step, name)
                ->UseManualTime()
                ->Unit(benchmark::kMicrosecond);
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    FreeRunData();
    return RemoveWorkFolder(WorkFolder);
}
