// SPDX-License-Identifier: MIT
// Whole runs of the program on seeded spin systems: processor time of the process (user and system) and the largest
// memory that it held. The parts of a system are fully coupled: shifts of 1 to 8 ppm, couplings of 0.5 to 15 Hz, 400
// MHz.
#include "benchmarks/program_run.h"

#include <benchmark/benchmark.h>

#include <numeric>
#include <random>

static std::string WorkFolder;

static double Uniform(std::mt19937& generator, double low, double high) {
    return low + (high - low) * (static_cast<double>(generator()) / 4294967296.0);
}

struct SpinSystem {
    std::vector<int> Nuclei;     // in each group
    std::vector<int> PartSizes;  // groups of each part, in their order
    int LastIsotope = 1;         // mass number of the last group; the others are protons
    bool Weak = false;           // weak-coupling approximation
};

static SpinSystem Coupled(const std::vector<int>& nuclei) {
    return {nuclei, {static_cast<int>(nuclei.size())}};
}

// Single nuclei.
static SpinSystem Apart(const std::vector<int>& partSizes) {
    const int groups = std::accumulate(partSizes.begin(), partSizes.end(), 0);
    return {std::vector<int>(static_cast<std::size_t>(groups), 1), partSizes};
}

// The part of each group.
static std::vector<int> PartsOf(const SpinSystem& system) {
    std::vector<int> parts;
    for (std::size_t part = 0; part < system.PartSizes.size(); ++part) {
        parts.insert(parts.end(), static_cast<std::size_t>(system.PartSizes[part]), static_cast<int>(part));
    }
    return parts;
}

static void WriteInput(const std::string& folder, const SpinSystem& system) {
    std::mt19937 generator(20260801);
    const std::size_t n = system.Nuclei.size();
    const std::vector<int> parts = PartsOf(system);
    std::vector<double> shifts(n);
    std::vector<double> couplings(n * n);
    for (double& shift : shifts) {
        shift = Uniform(generator, 1.0, 8.0);
    }
    for (double& coupling : couplings) {
        coupling = Uniform(generator, 0.5, 15.0);
    }
    std::FILE* file = OpenOrEnd(folder + "/nmrspect.in", "w");
    std::fprintf(file, "benchmark\n%zu\n", n);
    for (std::size_t i = 0; i < n; ++i) {
        std::fprintf(file, "%d ", i + 1 < n ? 1 : system.LastIsotope);
    }
    for (const int count : system.Nuclei) {
        std::fprintf(file, "%d ", count);
    }
    std::fprintf(file, "\nfrequency\n400\nshifts\n");
    for (const double shift : shifts) {
        std::fprintf(file, "%.3f ", shift);
    }
    std::fprintf(file, "\ncouplings\n");
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) {
            std::fprintf(file, "%.3f ", parts[i] == parts[j] ? couplings[i * n + j] : 0.0);
        }
        std::fprintf(file, "\n");
    }
    std::fprintf(file, "minimal intensity\n0.001\nweak coupling\n%d\n", system.Weak ? 1 : 0);
    std::fclose(file);
}

// The number of lines that the last run has written.
static double LineCount() {
    std::FILE* file = OpenOrEnd(WorkFolder + "/nmrspect.out", "r");
    char line[256];
    double count = -1;
    if (std::fgets(line, sizeof line, file) == nullptr || std::fscanf(file, "%lf", &count) != 1) {
        EndBenchmark("the program wrote no spectrum");
    }
    std::fclose(file);
    return count;
}

static void MeasureRun(benchmark::State& state, const SpinSystem& system, bool withLog) {
    WriteInput(WorkFolder, system);
    ProgramCost cost = {};
    for (auto _ : state) {
        cost = withLog ? RunProgram(WorkFolder, {".", ".", "2", "run.log"}) : RunProgram(WorkFolder, {".", ".", "2"});
        state.SetIterationTime(cost.Seconds);
    }
    state.counters["MB"] = cost.Megabytes;
    state.counters["lines"] = LineCount();
}

static void Register(const std::string& name, const SpinSystem& system, bool withLog = false) {
    benchmark::RegisterBenchmark(name.c_str(), MeasureRun, system, withLog)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

int main(int argc, char** argv) {
    WorkFolder = MakeWorkFolder();
    for (const int spins : {4, 6, 8, 10, 11, 12, 13, 14}) {
        Register("exact/" + std::to_string(spins), Apart({spins}));
    }
    Register("exact_with_log/12", Apart({12}), true);
    Register("exact/(9,1)", Coupled({9, 1}));
    Register("exact/(3,2,3,2)", Coupled({3, 2, 3, 2}));
    Register("exact/(3,2,2,2,3)", Coupled({3, 2, 2, 2, 3}));
    Register("exact/(6,1,6,1)", Coupled({6, 1, 6, 1}));
    SpinSystem phosphorus = Apart({13});
    phosphorus.LastIsotope = 31;
    Register("exact/12 and 31P", phosphorus);
    Register("exact/6 + 6", Apart({6, 6}));
    Register("exact/5 + 5 + 5 + 5", Apart({5, 5, 5, 5}));
    for (const std::vector<int>& partSizes : {std::vector<int>{10}, {13}, {16}, {16, 8}}) {
        SpinSystem weak = Apart(partSizes);
        weak.Weak = true;
        Register(partSizes.size() == 1 ? "weak/" + std::to_string(partSizes[0]) : "weak/16 + 8", weak);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return RemoveWorkFolder(WorkFolder);
}
