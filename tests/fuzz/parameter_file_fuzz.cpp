// SPDX-License-Identifier: MIT
// Fuzz target, built once for each of the three parameter files: FUZZED_FILE has the bytes, the other two are fixed.
// Tests what the reader promises, and checks the parameters of a molecule with a capping atom and with sulfur.
#include "files/atom_selection.h"
#include "files/parameter_files.h"
#include "files/parameter_input.h"
#include "ground/run_state.h"
#include "tests/fuzz/fuzz_case.h"
#include "wavefunction/prepare_system.h"

#include <cctype>
#include <cmath>
#include <cstring>

static constexpr char Molecule[] = "IncludeDOrbitalsForSecondRow = yes\n"
                                   "NMRSelectionBegin\n1\nmol 1 atom 3\nNMRSelectionEnd\n"
                                   "QuantumSelectionBegin\n3\nmol 1 atom 1\nmol 1 atom 3\nmol 1 atom 4\n"
                                   "QuantumSelectionEnd\nAtomsBegin\n5\nmol 1\natom 1 O O O - 0 0 0 0 2 2 s 3 s\n"
                                   "atom 2 H H H - .4 0 0 1 1 1 s\natom 3 H H H - .4 0 1 0 1 1 s\n"
                                   "atom 4 S S S - 0 0 3 0 0\natom 5 C C C - .1 0 5 0 0\nAtomsEnd\n";

static void DemandFinite(const double* values, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        Demand(std::isfinite(values[i]), "a parameter is finite");
    }
}

static void DemandWholeTables() {
    Demand(Run.Parameters.AtomTypeCount > 0, "there are types");
    for (int i = 0; i < Run.Parameters.AtomTypeCount; ++i) {
        const char* const name = Run.Parameters.AtomTypeNames[i].Text;
        Demand(strnlen(name, sizeof(AtomTypeName)) <= 3, "a type has a short name");
        for (const char* c = name; *c != '\0'; ++c) {
            Demand(std::islower(static_cast<unsigned char>(*c)) == 0, "a name is in upper case");
        }
    }
    const std::size_t entries = 2 * static_cast<std::size_t>(Run.Parameters.AtomTypeCount);
    const std::size_t numbers = sizeof(AtomTypeParameters) / sizeof(double);
    DemandFinite(&Run.Parameters.ParameterFileShielding->OrbitalEnergyS, entries * numbers);
    DemandFinite(&Run.Parameters.ParameterFileCoupling->OrbitalEnergyS, entries * numbers);
    DemandFinite(&Run.Parameters.CouplingConstants->GFactor, entries * sizeof(NuclearConstants) / sizeof(double));
}

static void ReadAndPrepare() {
    StartRun(ParameterRun);
    ReadParameterFiles();
    DemandWholeTables();
    ReadParameterInput(OpenBytes(reinterpret_cast<const std::uint8_t*>(Molecule), sizeof Molecule - 1));
    BuildCappingAtoms();
    BuildSelectedAtomList();
    PrepareSystem();
    Run.Options.SemiEmpiricalMethod = 2;  // which has parameters of its own
    CheckParameters(Run.Parameters.ParameterFileShielding, "nmr_shft.abp");
    CheckParameters(Run.Parameters.ParameterFileCoupling, "nmr_cupl.abp");
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool written = (WriteFixedParameterFiles(), true);
    Demand(written, "the parameter files are there");
    WriteCaseFile(FUZZED_FILE, data, size);
    RunCase(ReadAndPrepare);
    return 0;
}
