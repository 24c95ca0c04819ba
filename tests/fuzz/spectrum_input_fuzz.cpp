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
    const int n = Run.SpinGroupCount;
    Demand(n > 0, "there are groups");
    Demand(Run.NMRFrequency != 0.0, "there is a frequency");
    Demand(Run.MinimalIntensity > 1e-8 && std::isfinite(Run.MinimalIntensity), "the minimal intensity is in its range");
    for (int i = 0; i < n; ++i) {
        Demand(Run.NucleiInGroup[i] >= 0 && Run.NucleiInGroup[i] <= LargestGroup, "a group has a size in range");
        Demand(CanBeRounded(Run.ChemicalShifts[i]), "a shift can be rounded");
        for (int j = 0; j < n; ++j) {
            Demand(CanBeRounded(Run.CouplingMatrix[i * n + j]), "a coupling can be rounded");
            Demand(Run.CouplingMatrix[i * n + j] == Run.CouplingMatrix[j * n + i], "couplings are symmetric");
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
