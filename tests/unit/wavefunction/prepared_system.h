// SPDX-License-Identifier: MIT
// Small systems that are prepared within the process, for the tests of the preparation and of its checks.
#pragma once

#include "files/atom_selection.h"
#include "ground/memory.h"
#include "ground/platform.h"
#include "molecule/element_tables.h"
#include "tests/support/test_support.h"
#include "wavefunction/orbital_tables.h"
#include "wavefunction/prepare_system.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

// The types of every system here; each has sound parameters in both tables, as an ordinary and as a capping atom.
inline constexpr int H = 0;
inline constexpr int C = 1;
inline constexpr int S = 2;
inline constexpr int TypeCount = 3;

// An atom as the reader leaves it.
struct TypedAtom {
    int Element;
    int Type;
    int State;                // 0 selected, 1 not
    std::vector<int> Bonded;  // indices of neighbours
};

inline AtomTypeParameters SoundParameters(int entry) {
    AtomTypeParameters p = {-7, -5, -1, 1.25, 1.5, 0.75, 9, 0.1, 0.2, -10, -20, 50};
    p.SlaterExponentS += entry;
    p.IsolatedEnergyTndo1 -= entry;
    p.AtomHeat += entry;
    return p;
}

inline void LoadTypes() {
    ::Run.Parameters.AtomTypeCount = TypeCount;
    ::Run.Parameters.AtomTypeNames = AllocateForProcess<AtomTypeName>(TypeCount);
    ::Run.Parameters.ParameterFileShielding = AllocateForProcess<AtomTypeParameters>(2 * TypeCount);
    ::Run.Parameters.ParameterFileCoupling = AllocateForProcess<AtomTypeParameters>(2 * TypeCount);
    static const char* const names[TypeCount] = {"H", "C", "S"};
    for (int i = 0; i < 2 * TypeCount; ++i) {
        std::strcpy(::Run.Parameters.AtomTypeNames[i % TypeCount].Text, names[i % TypeCount]);
        ::Run.Parameters.ParameterFileShielding[i] = ::Run.Parameters.ParameterFileCoupling[i] = SoundParameters(i);
    }
}

// A system with the default options, up to its list of atoms; the first atom is the NMR selection.
inline void LoadAtoms(const std::vector<TypedAtom>& atoms) {
    ::Run.Job.ActiveRunKind = ParameterRun;
    FreeRunData();
    ::Run.Options.SemiEmpiricalMethod = ::Run.Options.SpinMultiplicity = ::Run.Options.CalculateShielding =
        ::Run.Options.CalculateCoupling = 1;
    ::Run.Options.TotalCharge = 0;
    ::Run.Options.SCFConvergenceLimit = 0.01f;
    ::Run.Options.SCFIterationLimit = 50;
    ::Run.Molecule.AtomCount = static_cast<int>(atoms.size());
    AllocateZeroed(::Run.Molecule.AtomRecords, ::Run.Molecule.AtomCount);
    AllocateZeroed(::Run.Molecule.InputCoordinates, ::Run.Molecule.AtomCount);
    for (std::size_t i = 0; i < atoms.size(); ++i) {
        AtomRecord& record = ::Run.Molecule.AtomRecords[i];
        record.AtomIndex = static_cast<int>(i);
        record.AtomicNumber = atoms[i].Element;
        record.AtomType = atoms[i].Type;
        record.SelectionState = atoms[i].State;
        record.BondCount = static_cast<int>(atoms[i].Bonded.size());
        std::copy(atoms[i].Bonded.begin(), atoms[i].Bonded.end(), record.BondedAtoms);
    }
    ::Run.Molecule.NMRAtomCount = 1;
    AllocateArray(::Run.Molecule.NMRAtomList, 1);
    ::Run.Molecule.NMRAtomList[0] = 1;
    BuildCappingAtoms();
    BuildSelectedAtomList();
}

// The outcome of the last preparation.
inline std::string LogText;

// Prepares in a child and, where that is accepted, here; "" or the refusal.
inline std::string Outcome(void (*step)() = PrepareSystem) {
    TemporaryDirectory work;
    UseFilesIn(work.Path);
    const int exitCode = ExitCodeOfChild(step);
    LogText = ReadText(work.Path + "/run.log");
    if (exitCode == 98) {
        ::Run.Report.LogEnabled = 0;
        step();
        return "";
    }
    EXPECT_EQ(exitCode, 0);
    const std::string text = ReadText(work.Path + "/nmrspect.out");
    return text.substr(0, text.size() - 1);
}

inline const std::vector<TypedAtom> Hydrogen = {{1, H, 0, {1}}, {1, H, 0, {0}}};

// Two selected atoms, a capping atom and one outside: 4 + 7 and 3 electrons in 4 + 1 + 4 orbitals.
inline const std::vector<TypedAtom> CutSystem = {{6, C, 0, {2}}, {1, H, 0, {}}, {6, C, 1, {0}}, {1, H, 1, {}}};

inline const std::string Options = "Convergence limit = 0.0100000  Iteration limit = 50\n"
                                   "Applying the SCF accelerate convergence?  No\n"
                                   "Including d-orbitals on the second long row elements if any?  No.\n"
                                   "Modifying the Slater exponents for the shielding constant calculations?  No.\n"
                                   "Computing the three center integrals for the shielding constants?  No.\n";

// Warnings among the lines of the log.
inline std::string Warnings() {
    EXPECT_EQ(LogText.substr(0, Options.size()), Options);
    const std::size_t end = LogText.find("\nSinglet");
    return LogText.substr(Options.size(), end - Options.size());
}

class PrepareSystemTest : public testing::Test {
protected:
    void SetUp() override {
        ResetRun();
        LoadTypes();
    }
    void TearDown() override {
        FreeArray(::Run.Parameters.AtomTypeNames);
        FreeArray(::Run.Parameters.ParameterFileShielding);
        FreeArray(::Run.Parameters.ParameterFileCoupling);
        ResetRun();
        std::fill(OrbitalCountTable + 10, OrbitalCountTable + 18, 4);
    }
};
