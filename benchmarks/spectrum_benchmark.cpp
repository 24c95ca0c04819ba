// SPDX-License-Identifier: MIT
// Whole runs of the program on seeded spin systems: processor time of the process (user and system) and the largest
// memory that it held. The systems are fully coupled: shifts of 1 to 8 ppm, couplings of 0.5 to 15 Hz, 400 MHz.
#include "benchmarks/program_run.h"

#include <benchmark/benchmark.h>

#include <random>

static std::string WorkFolder;

static double Uniform(std::mt19937& generator, double low, double high) {
    return low + (high - low) * (static_cast<double>(generator()) / 4294967296.0);
}

static void WriteInput(const std::string& folder, const std::vector<int>& nuclei, bool weak) {
    std::mt19937 generator(20260801);
    const std::size_t n = nuclei.size();
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
        std::fprintf(file, "1 ");
    }
    for (const int count : nuclei) {
        std::fprintf(file, "%d ", count);
    }
    std::fprintf(file, "\nfrequency\n400\nshifts\n");
    for (const double shift : shifts) {
        std::fprintf(file, "%.3f ", shift);
    }
    std::fprintf(file, "\ncouplings\n");
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) {
            std::fprintf(file, "%.3f ", couplings[i * n + j]);
        }
        std::fprintf(file, "\n");
    }
    std::fprintf(file, "minimal intensity\n0.001\nweak coupling\n%d\n", weak ? 1 : 0);
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

static void MeasureRun(benchmark::State& state, const std::vector<int>& nuclei, bool weak, bool withLog) {
    WriteInput(WorkFolder, nuclei, weak);
    ProgramCost cost = {};
    for (auto _ : state) {
        cost = withLog ? RunProgram(WorkFolder, {".", ".", "2", "run.log"}) : RunProgram(WorkFolder, {".", ".", "2"});
        state.SetIterationTime(cost.Seconds);
    }
    state.counters["MB"] = cost.Megabytes;
    state.counters["lines"] = LineCount();
}

static void Register(const std::string& name, const std::vector<int>& nuclei, bool weak, bool withLog) {
    benchmark::RegisterBenchmark(name.c_str(), MeasureRun, nuclei, weak, withLog)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

int main(int argc, char** argv) {
    WorkFolder = MakeWorkFolder();
    for (const int spins : {4, 6, 8, 10, 11, 12, 13}) {
        Register("exact/" + std::to_string(spins), std::vector<int>(static_cast<std::size_t>(spins), 1), false, false);
    }
    Register("exact_with_log/12", std::vector<int>(12, 1), false, true);
    Register("exact/(9,1)", {9, 1}, false, false);
    Register("exact/(3,2,3,2)", {3, 2, 3, 2}, false, false);
    Register("exact/(3,2,2,2,3)", {3, 2, 2, 2, 3}, false, false);
    Register("exact/(6,1,6,1)", {6, 1, 6, 1}, false, false);
    for (const int spins : {10, 13, 16}) {
        Register("weak/" + std::to_string(spins), std::vector<int>(static_cast<std::size_t>(spins), 1), true, false);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return RemoveWorkFolder(WorkFolder);
}
