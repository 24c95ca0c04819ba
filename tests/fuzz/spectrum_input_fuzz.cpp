// SPDX-License-Identifier: MIT
// Fuzz target: reads the bytes as nmrspect.in, and tests what the reader promises about a spin system.
#include "files/spectrum_input.h"
#include "ground/run_state.h"
#include "numerics/factorial.h"
#include "spectrum/spin_system.h"
#include "tests/fuzz/fuzz_case.h"

#include <cmath>

static const std::uint8_t* Data;
static std::size_t Size;

static void DemandWholeSystem() {
    const int n = Run.Spins.SpinGroupCount;
    Demand(n > 0, "there are groups");
    Demand(Run.Options.NMRFrequency != 0.0, "there is a frequency");
    Demand(Run.Options.MinimalIntensity > 1e-8 && std::isfinite(Run.Options.MinimalIntensity),
           "the minimal intensity is in its range");
    for (int i = 0; i < n; ++i) {
        Demand(Run.Spins.NucleiInGroup[i] >= 0 && Run.Spins.NucleiInGroup[i] <= LargestGroup,
               "a group has a size in range");
        Demand(CanBeRounded(Run.Spins.ChemicalShifts[i]), "a shift can be rounded");
        for (int j = 0; j < n; ++j) {
            Demand(CanBeRounded(Run.Spins.CouplingMatrix[i * n + j]), "a coupling can be rounded");
            Demand(Run.Spins.CouplingMatrix[i * n + j] == Run.Spins.CouplingMatrix[j * n + i],
                   "couplings are symmetric");
        }
    }
}

static void ReadAndPrepare() {
    StartRun(SpectrumRun);
    ReadSpectrumInput(OpenBytes(Data, Size));
    DemandWholeSystem();
    PrepareSpinSystem();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Data = data;
    Size = size;
    RunCase(ReadAndPrepare);
    return 0;
}
