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
#include "nmr/first_order_orbitals.h"
#include "numerics/eigensolver.h"
#include "wavefunction/core_hamiltonian.h"
#include "wavefunction/density_matrix.h"
#include "wavefunction/dipole.h"
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
    return static_cast<std::size_t>(Run.OrbitalCount) * static_cast<std::size_t>(Run.OrbitalCount);
}

static std::vector<double> CopyOf(const double* array, std::size_t length) {
    return std::vector<double>(array, array + length);
}

static void Save() {
    std::copy(Run.CoreHamiltonian, Run.CoreHamiltonian + SquareSize(), Run.FockMatrix);
    BuildFockMatrix(Run.FockMatrix);
    Saved.Fock = CopyOf(Run.FockMatrix, SquareSize());
    Saved.HalfDensity = CopyOf(Run.HalfDensity, SquareSize());
    Saved.TotalDensity = CopyOf(Run.TotalDensity, SquareSize());
    Saved.PreviousDensity = CopyOf(Run.PreviousDensity, SquareSize());
    Saved.Orbitals = CopyOf(Run.MolecularOrbitals, SquareSize());
    Saved.Energies = CopyOf(Run.OrbitalEnergiesRaw, static_cast<std::size_t>(Run.OrbitalCount));
}

static void Restore() {
    std::copy(Saved.Fock.begin(), Saved.Fock.end(), Run.FockMatrix);
    std::copy(Saved.HalfDensity.begin(), Saved.HalfDensity.end(), Run.HalfDensity);
    std::copy(Saved.TotalDensity.begin(), Saved.TotalDensity.end(), Run.TotalDensity);
    std::copy(Saved.PreviousDensity.begin(), Saved.PreviousDensity.end(), Run.PreviousDensity);
    std::copy(Saved.Orbitals.begin(), Saved.Orbitals.end(), Run.MolecularOrbitals);
    std::copy(Saved.Energies.begin(), Saved.Energies.end(), Run.OrbitalEnergiesRaw);
}

static char* Keep(const std::string& text) {
    static std::vector<std::string> texts;
    texts.reserve(8);
    texts.push_back(text);
    return texts.back().data();
}

static void SetUpRun() {
    Run.ParameterDirectory = Keep(WorkFolder + "/parameters/");
    Run.LogFilePath = Keep("");
    std::snprintf(Run.InputFilePath, FilePathSize, "%s/nmrparam.in", WorkFolder.c_str());
    std::snprintf(Run.OutputFilePath, FilePathSize, "%s/nmrparam.out", WorkFolder.c_str());
    Run.RunKind = ParameterRun;
    Run.ConsoleMode = 0;
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
    Run.LevelShiftStartIteration = 0;
    ReadRunInput();
    BuildCappingAtoms();
    BuildSelectedAtomList();
    PrepareSystem();
    Run.ActiveParameters = Run.ParameterFileCoupling;
    Run.ActiveParameterFile = "nmr_cupl.abp";
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
    const std::size_t n = static_cast<std::size_t>(Run.OrbitalCount);
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            Run.FockMatrix[i * n + j] += FockNoise * (static_cast<double>(generator()) / 2147483648.0 - 1.0);
            Run.FockMatrix[j * n + i] = Run.FockMatrix[i * n + j];
        }
    }
}

static void StartWavefunction() {
    Run.ScfPassCounter = -1;
}

// A step, with what has to be made ready before each measurement of it.
struct Step {
    const char* Name;
    bool Converged;     // starts from the converged wavefunction
    void (*Prepare)();  // not measured
    void (*Run)();
};

static const Step Steps[] = {
    {"overlap", false, Nothing, [] { BuildOverlapMatrix(::Run.FirstScratch); }},
    {"gamma", false, Nothing, [] { BuildGammaMatrix(::Run.FirstScratch); }},
    {"core", false, [] { BuildOverlapMatrix(::Run.FirstScratch); },
     [] { BuildCoreHamiltonian(::Run.FirstScratch, ::Run.GammaMatrix); }},
    {"fock", false, [] { std::copy(::Run.CoreHamiltonian, ::Run.CoreHamiltonian + SquareSize(), ::Run.FockMatrix); },
     [] { BuildFockMatrix(::Run.FockMatrix); }},
    {"density", false, Nothing, [] { BuildDensity(::Run.HalfDensity); }},
    {"exact", false, Nothing,
     [] {
         SolveEigenproblem(::Run.FockMatrix, ::Run.MolecularOrbitals, ::Run.OrbitalEnergiesRaw, ::Run.OrbitalCount);
     }},
    {"pseudo", false, Nothing, [] { PseudoDiagonalise(); }},
    {"extrapolation", false, DisturbFock, [] { ExtrapolateFock(Extrapolation); }},
    {"wavefunction", true, StartWavefunction, [] { SolveWavefunction(); }},
    {"response_orbitals", true, Nothing,
     [] { SolveFirstOrderOrbitals(::Run.FockMatrix, Symmetric, ::Run.SecondScratch); }},
    {"response_density", true, [] { SolveFirstOrderOrbitals(::Run.FockMatrix, Symmetric, ::Run.SecondScratch); },
     [] { BuildFirstOrderDensity(::Run.SecondScratch, 1.0, Symmetric, ::Run.FirstScratch); }},
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
    state.counters["N"] = Run.OrbitalCount;
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
