// SPDX-License-Identifier: MIT
// Fuzz target: a whole spectrum run on the bytes as nmrspect.in. Systems are simulated that are small, or so large that
// they must be refused at once.
#include "ground/run_state.h"
#include "tests/fuzz/fuzz_case.h"
#include "tests/fuzz/fuzz_run.h"

static constexpr double MostStates = 2500;        // of a system that is simulated
static constexpr double ManyProductStates = 1e8;  // more than the exact simulation takes
static constexpr double ManyStates = 1e13;        // more than any memory holds

// Counts the states of all combinations of total spins, for all groups, and those of the highest total spins alone.
static bool IsSmallOrRefused() {
    double states = Run.Spins.SpinGroupCount;
    double productStates = 1.0;
    for (int g = 0; g < Run.Spins.SpinGroupCount; ++g) {
        const double n = Run.Spins.NucleiInGroup[g];
        states *= (n + 2.0) * (n + 2.0) / 4.0;
        productStates *= n + 1.0;
    }
    return states <= MostStates || states >= ManyStates ||
           (!Run.Options.UseWeakCoupling && productStates >= ManyProductStates);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    WriteCaseFile("nmrspect.in", data, size);
    RunProgram({SpectrumRun, IsSmallOrRefused, StopOfBytes(data, size), 2});
    return 0;
}
