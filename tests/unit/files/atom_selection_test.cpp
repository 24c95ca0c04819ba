// SPDX-License-Identifier: MIT
// The lists of the atoms of a calculation: which atoms become capping atoms, the order of the list, its orbitals; and
// the tables by element that all this counts with.
#include "files/atom_selection.h"
#include "ground/memory.h"
#include "molecule/element_tables.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>

// An atom as the reader leaves it.
struct ReadAtom {
    int Element;
    int State;                // 0 selected, 1 not
    std::vector<int> Bonded;  // indices of neighbours
};

static void LoadAtoms(const std::vector<ReadAtom>& atoms) {
    ::Run.Job.ActiveRunKind = ParameterRun;
    FreeRunData();
    ::Run.Molecule.AtomCount = static_cast<int>(atoms.size());
    ::Run.Molecule.SelectedAtomCount = 0;
    AllocateZeroed(::Run.Molecule.AtomRecords, ::Run.Molecule.AtomCount);
    for (std::size_t i = 0; i < atoms.size(); ++i) {
        AtomRecord& record = ::Run.Molecule.AtomRecords[i];
        record.AtomIndex = static_cast<int>(i);
        record.AtomicNumber = atoms[i].Element;
        record.SelectionState = atoms[i].State;
        record.BondCount = static_cast<int>(atoms[i].Bonded.size());
        std::copy(atoms[i].Bonded.begin(), atoms[i].Bonded.end(), record.BondedAtoms);
        record.AtomCharge = 0.5f;
    }
}

static std::vector<int> Codes() {
    std::vector<int> codes;
    for (int i = 0; i < ::Run.Molecule.AtomCount; ++i) {
        codes.push_back(::Run.Molecule.AtomRecords[i].AtomicNumber);
    }
    return codes;
}

static std::vector<int> States() {
    std::vector<int> states;
    for (int i = 0; i < ::Run.Molecule.AtomCount; ++i) {
        states.push_back(::Run.Molecule.AtomRecords[i].SelectionState);
    }
    return states;
}

static std::vector<float> Charges() {
    std::vector<float> charges;
    for (int i = 0; i < ::Run.Molecule.AtomCount; ++i) {
        charges.push_back(::Run.Molecule.AtomRecords[i].AtomCharge);
    }
    return charges;
}

static std::vector<int> List() {
    const int* list = ::Run.Molecule.QuantumSelection.SelectedAtomList;
    return {list, list + ::Run.Molecule.SelectedAtomCount};
}

using Ints = std::vector<int>;

class AtomSelection : public testing::Test {
protected:
    void SetUp() override { ResetRun(); }
    void TearDown() override { ResetRun(); }
};

TEST_F(AtomSelection, WholeSystem) {
    LoadAtoms({{8, 0, {1, 2}}, {1, 0, {0}}, {1, 0, {0}}});
    BuildCappingAtoms();
    EXPECT_EQ(::Run.Molecule.SelectedAtomCount, 3);
    EXPECT_EQ(::Run.Molecule.CappingAtomCount, 0);
    EXPECT_EQ(Charges(), std::vector<float>({0, 0, 0}));
    BuildSelectedAtomList();
    EXPECT_EQ(List(), Ints({1, 2, 3}));
    EXPECT_EQ(::Run.Molecule.QuantumSelection.FirstAtom, 1);
    EXPECT_EQ(::Run.Molecule.QuantumSelection.LastAtom, 3);
    EXPECT_EQ(::Run.Molecule.QuantumSelection.FirstOrbital, 1);
    EXPECT_EQ(::Run.Molecule.QuantumSelection.LastOrbital, 6);
    EXPECT_EQ(::Run.Basis.OrbitalCount, 6);
    EXPECT_EQ(::Run.Field.LevelShiftStartIteration, -1);
}

// Selected atoms first, then the capping atoms, each in file order; the charge of a capping atom stays.
TEST_F(AtomSelection, CappingAtomsStandBehindTheSelectedOnes) {
    LoadAtoms({{6, 1, {1}}, {6, 0, {0, 2}}, {1, 1, {1}}, {17, 1, {}}, {2, 0, {}}});
    BuildCappingAtoms();
    EXPECT_EQ(Codes(), Ints({24, 6, 19, 17, 2}));
    EXPECT_EQ(States(), Ints({-1, 0, -1, 1, 0}));
    EXPECT_EQ(Charges(), std::vector<float>({0.5f, 0, 0.5f, 0.5f, 0}));
    EXPECT_EQ(::Run.Molecule.SelectedAtomCount, 2);
    EXPECT_EQ(::Run.Molecule.CappingAtomCount, 2);
    BuildSelectedAtomList();
    EXPECT_EQ(::Run.Molecule.SelectedAtomCount, 4);
    EXPECT_EQ(List(), Ints({2, 5, 1, 3}));
    EXPECT_EQ(::Run.Molecule.QuantumSelection.LastAtom, 4);
    EXPECT_EQ(::Run.Basis.OrbitalCount, 4 + 1 + 4 + 4);  // four orbitals also on the capping hydrogen
    EXPECT_EQ(::Run.Molecule.QuantumSelection.LastOrbital, 13);
}

// The negation is a toggle on purpose: one bond and three bonds make a capping atom, two and four don't.
TEST_F(AtomSelection, BondsToTheSelectionToggle) {
    for (int bonds = 0; bonds <= 4; ++bonds) {
        std::vector<ReadAtom> atoms = {{7, 1, {}}};
        for (int i = 0; i < 4; ++i) {
            atoms.push_back({1, 0, i < bonds ? Ints({0}) : Ints()});
        }
        LoadAtoms(atoms);
        BuildCappingAtoms();
        EXPECT_EQ(::Run.Molecule.AtomRecords[0].AtomicNumber, bonds % 2 == 1 ? 25 : 7) << bonds;
        EXPECT_EQ(::Run.Molecule.AtomRecords[0].SelectionState, bonds % 2 == 1 ? -1 : 1) << bonds;
        EXPECT_EQ(::Run.Molecule.CappingAtomCount, bonds % 2) << bonds;
    }
}

// Neighbours of selected atoms count, whatever the atoms outside say of theirs.
TEST_F(AtomSelection, BondsAreTakenFromTheSelectedAtoms) {
    LoadAtoms({{6, 0, {}}, {6, 1, {0}}, {6, 1, {0, 1}}});
    BuildCappingAtoms();
    EXPECT_EQ(::Run.Molecule.CappingAtomCount, 0);
    LoadAtoms({{6, 0, {1, 1}}, {6, 1, {}}});  // listed twice by one atom
    BuildCappingAtoms();
    EXPECT_EQ(::Run.Molecule.CappingAtomCount, 0);
    EXPECT_EQ(Codes(), Ints({6, 6}));
}

// A lone pair has no negative code to take: it never caps, and it has no orbitals.
TEST_F(AtomSelection, LonePairs) {
    LoadAtoms({{8, 0, {1}}, {0, 1, {0}}, {0, 0, {0}}});
    BuildCappingAtoms();
    EXPECT_EQ(States(), Ints({0, 1, 0}));
    EXPECT_EQ(::Run.Molecule.CappingAtomCount, 0);
    BuildSelectedAtomList();
    EXPECT_EQ(List(), Ints({1, 3}));
    EXPECT_EQ(::Run.Basis.OrbitalCount, 4);
}

// Elements aren't tested against their limit here: 18 is added to any.
TEST_F(AtomSelection, CappingAtomsOfAnyElement) {
    LoadAtoms({{6, 0, {1}}, {35, 1, {0}}, {6, 0, {3}}, {999, 1, {2}}});
    BuildCappingAtoms();
    EXPECT_EQ(Codes(), Ints({6, 53, 6, 1017}));
}

TEST_F(AtomSelection, OrbitalsByElement) {
    for (int code = 0; code <= 20; ++code) {
        LoadAtoms({{code, 0, {}}});
        BuildCappingAtoms();
        BuildSelectedAtomList();
        EXPECT_EQ(::Run.Basis.OrbitalCount, code == 0 ? 0 : code <= 2 ? 1 : 4) << code;
    }
}

TEST_F(AtomSelection, EachListLowersTheLevelShift) {
    LoadAtoms({{1, 0, {}}});
    ::Run.Field.LevelShiftStartIteration = 0;
    BuildCappingAtoms();
    BuildSelectedAtomList();
    EXPECT_EQ(::Run.Field.LevelShiftStartIteration, -1);
}

// The tables, by row: period and group of each element, seven electrons on each capping atom.
TEST(ElementTables, RowsByElement) {
    for (int z = 1; z <= 18; ++z) {
        const int shell = z <= 2 ? 1 : z <= 10 ? 2 : 3;
        const int charge = z <= 2 ? z : z <= 10 ? z - 2 : z - 10;
        EXPECT_EQ(OrbitalCountTable[z - 1], z <= 2 ? 1 : 4) << z;
        EXPECT_EQ(OrbitalCountTable[z + 17], 4) << z;
        EXPECT_EQ(ValenceShellTable[z - 1], shell) << z;
        EXPECT_EQ(ValenceShellTable[z + 17], z <= 10 ? 2 : 3) << z;
        EXPECT_EQ(CoreChargeTable[z - 1], charge) << z;
        EXPECT_EQ(CoreChargeTable[z + 17], 7.0) << z;
        EXPECT_EQ(AtomicMassTable[z - 1], AtomicMassTable[z + 17]) << z;
        EXPECT_STREQ(ElementLabel[z - 1], ElementLabel[z + 17]) << z;
        const std::string name = ElementNames[z];
        EXPECT_EQ(ElementLabel[z - 1], name.size() == 1 ? std::string(" ") + name : name) << z;
    }
}

TEST(ElementTables, Masses) {
    EXPECT_EQ(AtomicMassTable[0], 1.0079);
    EXPECT_EQ(AtomicMassTable[5], 12.011);
    EXPECT_EQ(AtomicMassTable[17], 39.948);
    EXPECT_TRUE(std::is_sorted(AtomicMassTable, AtomicMassTable + 18));
}

TEST(ElementTables, Names) {
    EXPECT_STREQ(ElementNames[0], "Lp");
    EXPECT_STREQ(ElementNames[26], "Fe");
    EXPECT_STREQ(ElementNames[53], "I");
    EXPECT_STREQ(ElementNames[79], "Au");
    EXPECT_STREQ(ElementNames[103], "Lr");
    EXPECT_STREQ(ElementNames[104], "  ");
    EXPECT_STREQ(ElementNames[106], "  ");
    EXPECT_STREQ(ElementNames[107], "");
}
