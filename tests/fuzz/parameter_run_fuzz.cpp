// SPDX-License-Identifier: MIT
// Fuzz target: a whole parameter run on the bytes as nmrparam.in. Behind form feeds the three parameter files may
// follow; fixed ones stand for those that are missing. Molecules of few atoms are calculated, with few iterations.
#include "ground/run_state.h"
#include "tests/fuzz/fuzz_case.h"
#include "tests/fuzz/fuzz_run.h"

#include <algorithm>

static constexpr int MostAtoms = 12;  // of the system
static constexpr int MostOrbitals = 20;
static constexpr int MostOrbitalsOfThreeCentres = 13;
static constexpr int MostNuclei = 6;
static constexpr int MostIterations = 12;

static bool IsSmall() {
    Run.Options.SCFIterationLimit = std::min(Run.Options.SCFIterationLimit, MostIterations);
    const bool threeCentres = Run.Options.CalculateShielding && Run.Options.ComputeThreeCenterTerms;
    return Run.Molecule.AtomCount <= MostAtoms && Run.Molecule.NMRAtomCount <= MostNuclei &&
           Run.Basis.OrbitalCount <= (threeCentres ? MostOrbitalsOfThreeCentres : MostOrbitals);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const int stop = StopOfBytes(data, size);
    WriteFixedParameterFiles();
    WriteCaseFile("nmrparam.in", "", 0);
    const std::uint8_t* part;
    std::size_t partSize;
    for (const char* const name : {"nmrparam.in", "nmrtype.txt", "nmr_shft.abp", "nmr_cupl.abp"}) {
        if (TakePart(data, size, part, partSize)) {
            WriteCaseFile(name, part, partSize);
        }
    }
    RunProgram({ParameterRun, IsSmall, stop, 5});
    return 0;
}
