// SPDX-License-Identifier: MIT
// Whole parameter runs of the program: processor time of the process (user and system) and the largest memory that it
// held. "field" has the coupling of one NMR atom, so that integrals and self-consistent field are nearly all of it;
// "coupling" has several atoms, and its counter ms_per_atom is what each further one adds; "shielding" has shielding
// only, terms 1 to 4, or all ten with tensors.
#include "benchmarks/molecule_input.h"

#include <benchmark/benchmark.h>

#include <climits>
#include <cstring>
#include <map>

static constexpr double ConvergenceLimit = 0.01;  // the program's own, kcal/mol

static std::string WorkFolder;
static std::map<std::string, double> FieldSeconds;  // shortest time with one NMR atom, by molecule and method

static ProgramCost RunOnce(bool withLog) {
    return withLog ? RunProgram(WorkFolder, {"parameters", ".", "1", "run.log"})
                   : RunProgram(WorkFolder, {"parameters", ".", "1"});
}

// Iterations of the field; ends the benchmark if the run has no result or hasn't converged.
static int CountIterations() {
    RunOnce(true);
    char line[1024];
    std::FILE* result = OpenOrEnd(WorkFolder + "/nmrparam.out", "r");
    if (std::fgets(line, sizeof line, result) == nullptr || std::strncmp(line, "Results", 7) != 0) {
        EndBenchmark("the program wrote no result");
    }
    std::fclose(result);
    std::FILE* log = OpenOrEnd(WorkFolder + "/run.log", "r");
    int iteration = 0;
    double difference = ConvergenceLimit;
    while (std::fgets(line, sizeof line, log) != nullptr) {
        std::sscanf(line, "Iteration = %d Difference = %lf", &iteration, &difference);
    }
    std::fclose(log);
    if (difference >= ConvergenceLimit) {
        EndBenchmark("the field didn't converge");
    }
    return iteration;
}

static void MeasureRun(benchmark::State& state, const std::string& name, int method, int nmrAtoms, bool withLog) {
    const Molecule molecule = ReadMolecule(name);
    const int count =
        WriteParameterInput(WorkFolder, molecule, nmrAtoms, "SemiEmpiricalMethod = " + std::to_string(method) + "\n");
    state.counters["field_iterations"] = CountIterations();
    ProgramCost cost = {};
    double shortest = 1e9;
    for (auto _ : state) {
        cost = RunOnce(withLog);
        state.SetIterationTime(cost.Seconds);
        shortest = std::min(shortest, cost.Seconds);
    }
    state.counters["MB"] = cost.Megabytes;
    state.counters["N"] = molecule.OrbitalCount;
    state.counters["atoms"] = count;
    double& field = FieldSeconds[name + std::to_string(method)];
    if (count == 1) {
        field = field > 0.0 ? std::min(field, shortest) : shortest;
    } else if (field > 0.0 && !withLog) {
        state.counters["ms_per_atom"] = 1e3 * (shortest - field) / (count - 1);
    }
}

static void MeasureShielding(benchmark::State& state, const std::string& name, bool allTerms) {
    const Molecule molecule = ReadMolecule(name);
    const std::string all = allTerms ? "yes\n" : "no\n";
    WriteParameterInput(WorkFolder, molecule, INT_MAX,
                        "SemiEmpiricalMethod = 2\nCalculateShielding = yes\nCalculateCoupling = no\n"
                        "ComputeThreeCenterTerms = " +
                            all + "CalculateShieldTensor = " + all);
    state.counters["field_iterations"] = CountIterations();
    ProgramCost cost = {};
    for (auto _ : state) {
        cost = RunOnce(false);
        state.SetIterationTime(cost.Seconds);
    }
    state.counters["MB"] = cost.Megabytes;
    state.counters["N"] = molecule.OrbitalCount;
}

static void RegisterShielding(const std::string& name, bool allTerms) {
    const std::string title = (allTerms ? "shielding_all_terms/" : "shielding_four_terms/") + name;
    benchmark::RegisterBenchmark(title.c_str(), MeasureShielding, name, allTerms)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

static void Register(const std::string& kind, const std::string& name, int method, int nmrAtoms, bool withLog) {
    const std::string title = kind + "/" + name + "/TNDO" + std::to_string(method);
    benchmark::RegisterBenchmark(title.c_str(), MeasureRun, name, method, nmrAtoms, withLog)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

int main(int argc, char** argv) {
    WorkFolder = MakeParameterFolder();
    for (const int method : {1, 2}) {
        for (const char* name : {"benzene", "naphthalene", "cholesterol", "helix"}) {
            Register("field", name, method, 1, false);
        }
        for (const char* name : {"benzene", "naphthalene", "cholesterol"}) {
            Register("coupling", name, method, INT_MAX, false);
        }
        Register("coupling_4_atoms", "helix", method, 4, false);
    }
    Register("coupling_with_log", "benzene", 2, INT_MAX, true);
    Register("coupling_with_log", "cholesterol", 2, INT_MAX, true);
    for (const bool allTerms : {false, true}) {
        for (const char* name : {"benzene", "naphthalene", "thioanisole", "cholesterol"}) {
            RegisterShielding(name, allTerms);
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return RemoveWorkFolder(WorkFolder);
}
