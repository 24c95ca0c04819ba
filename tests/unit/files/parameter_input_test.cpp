// SPDX-License-Identifier: MIT
// The system that nmrparam.in describes: atom lines, selections, neighbours, types. Each refusal is also a whole run
// (cases/parameter/).
#include "tests/unit/files/parameter_input_reading.h"

TEST_F(ParameterInput, FillsTheSystem) {
    EXPECT_EQ(ReadInput("TotalCharge = -1\n" + NMRBlock + Water), "");
    EXPECT_EQ(::Run.Options.TotalCharge, -1);
    EXPECT_EQ(::Run.Molecule.AtomCount, 3);
    EXPECT_EQ(::Run.Molecule.NMRAtomCount, 1);
    EXPECT_EQ(::Run.Molecule.NMRAtomList[0], 1);
    EXPECT_EQ(::Run.Molecule.SelectedAtomCount, -1);
    const AtomRecord& oxygen = ::Run.Molecule.AtomRecords[0];
    EXPECT_EQ(oxygen.AtomIndex, 0);
    EXPECT_EQ(oxygen.AtomicNumber, 8);
    EXPECT_EQ(oxygen.AtomType, 2);
    EXPECT_EQ(oxygen.MoleculeIndex, 1);
    EXPECT_EQ(oxygen.SelectionState, 0);
    EXPECT_EQ(oxygen.BondCount, 2);
    EXPECT_EQ(oxygen.BondedAtoms[0], 1);
    EXPECT_EQ(oxygen.BondedAtoms[1], 2);
    EXPECT_EQ(oxygen.AtomCharge, -0.5f);
    EXPECT_EQ(::Run.Molecule.InputCoordinates[0].Position[0], 1.5);
    EXPECT_EQ(::Run.Molecule.InputCoordinates[0].Position[1], -2.5);
    EXPECT_EQ(::Run.Molecule.InputCoordinates[0].Position[2], 3.5);
    EXPECT_EQ(::Run.Molecule.AtomRecords[2].AtomIndex, 2);
    EXPECT_EQ(::Run.Molecule.AtomRecords[1].AtomType, 4);  // the last of the names that match
    EXPECT_EQ(::Run.Molecule.AtomRecords[1].AtomCharge, 0.25f);
    EXPECT_EQ(::Run.Job.ActiveRunKind, ParameterRun);
    EXPECT_EQ(::Run.Report.ErrorFrameTop, nullptr);
    EXPECT_EQ(LogText, "(no file)");
}

// The flags say nothing in the end: selected or not is what the quantum selection says.
TEST_F(ParameterInput, FlagsAreWithoutEffect) {
    EXPECT_EQ(ReadInput(NMRBlock + Water), "");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(::Run.Molecule.AtomRecords[i].SelectionState, 0);
    }
    EXPECT_EQ(ReadInput(NMRBlock + "QuantumSelectionBegin\n1\nmol 1 atom 3\nQuantumSelectionEnd\n" + Water), "");
    EXPECT_EQ(::Run.Molecule.AtomRecords[0].SelectionState, 1);
    EXPECT_EQ(::Run.Molecule.AtomRecords[1].SelectionState, 1);  // in spite of its "s"
    EXPECT_EQ(::Run.Molecule.AtomRecords[2].SelectionState, 0);
    EXPECT_EQ(::Run.Molecule.SelectedAtomCount, 0);
}

TEST_F(ParameterInput, BlocksStandInAnyOrder) {
    const std::string quantum = "QuantumSelectionBegin\n1\nmol 1 atom 2\nQuantumSelectionEnd\n";
    for (const std::string& text : {Water + quantum + NMRBlock, quantum + Water + NMRBlock, NMRBlock + Water + quantum,
                                    Water + NMRBlock + quantum + "TotalCharge = 4\n"}) {
        EXPECT_EQ(ReadInput(text), "");
        EXPECT_EQ(::Run.Molecule.NMRAtomList[0], 1);
        EXPECT_EQ(::Run.Molecule.AtomRecords[1].SelectionState, 0);
        EXPECT_EQ(::Run.Molecule.AtomRecords[0].SelectionState, 1);
    }
    EXPECT_EQ(::Run.Options.TotalCharge, 4);
}

TEST_F(ParameterInput, PositionsCountWithinAMolecule) {
    const std::string nmr =
        "NMRSelectionBegin\n4\nmol 2 atom 1\nx 3 y 2\nmol 1 atom 2\nmol 2 atom 1\nNMRSelectionEnd\n";
    EXPECT_EQ(ReadInput(nmr + Hydrogens(5, {2, 1, 2})), "");
    EXPECT_EQ(std::vector<int>(::Run.Molecule.NMRAtomList, ::Run.Molecule.NMRAtomList + 4),
              std::vector<int>({3, 5, 2, 3}));
    EXPECT_EQ(ReadInput(Replaced(nmr, "x 3 y 2", "mol 2 atom 2") + Hydrogens(5, {2, 1, 2})),
              "ERRMSG: NMR atom 2 in mol 2 in the input file <INPUT> isn't presented in the current systems.\n");
}

// An atom before any molecule line belongs to molecule 0, which no selection can name.
TEST_F(ParameterInput, AtomsBeforeTheFirstMolecule) {
    const std::string atoms = "AtomsBegin\n2\natom 1 C C C - 0 0 0 0 0\nmol\natom 1 H H H - 0 0 0 0 0\nAtomsEnd\n";
    EXPECT_EQ(ReadInput(NMRBlock + atoms), "");
    EXPECT_EQ(::Run.Molecule.AtomRecords[0].MoleculeIndex, 0);
    EXPECT_EQ(::Run.Molecule.AtomRecords[1].MoleculeIndex, 1);
    EXPECT_EQ(::Run.Molecule.NMRAtomList[0], 2);
    EXPECT_EQ(
        ReadInput(Replaced(NMRBlock, "mol 1", "mol 0") + atoms),
        "ERRMSG: The indices of the NMR atoms (in the input file <INPUT>) cann't be less than or equal to zero.\n");
}

TEST_F(ParameterInput, NeighboursCountWithinTheirMolecule) {
    EXPECT_EQ(ReadInput(NMRBlock + "AtomsBegin\n4\nmol\n" + "atom 1 H H H - 0 0 0 0 1 2 h\natom 7 H H H - 0 0 0 0 0\n" +
                        "mol\natom 1 H H H - 0 0 0 0 2 2 t 1 a\natom 9 H H H - 0 0 0 0 1 1 s extra\nAtomsEnd\n"),
              "");
    EXPECT_EQ(::Run.Molecule.AtomRecords[0].BondedAtoms[0], 1);
    EXPECT_EQ(::Run.Molecule.AtomRecords[2].BondedAtoms[0], 3);
    EXPECT_EQ(::Run.Molecule.AtomRecords[2].BondedAtoms[1], 2);
    EXPECT_EQ(::Run.Molecule.AtomRecords[3].BondedAtoms[0], 2);
}

TEST_F(ParameterInput, NeighboursOutsideTheSystem) {
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 1 0 s"), BadRecord(1));
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 1 -1 s"), BadRecord(1));
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 1 2 s"), "");
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 1 3 s"), BadRecord(1));
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 1 2147483647 s"), BadRecord(1));
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 1 -2147483648 s"), BadRecord(1));
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 1 99999999999999999999 s"), BadRecord(1));
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 1 1 s"), "");  // itself
}

// A number counts on into the next molecule, and from 0 downwards into the molecules before, as far as the system goes.
TEST_F(ParameterInput, NeighboursInOtherMolecules) {
    const auto third = [](const std::string& number) {
        return ReadInput(NMRBlock + "AtomsBegin\n5\nmol\natom 1 H H H - 0 0 0 0 0\natom 2 H H H - 0 0 0 0 0\nmol\n" +
                         "atom 1 H H H - 0 0 0 0 1 " + number + " s\natom 2 H H H - 0 0 0 0 0\nmol\n" +
                         "atom 1 H H H - 0 0 0 0 0\nAtomsEnd\n");
    };
    for (int number = -1; number <= 3; ++number) {
        EXPECT_EQ(third(std::to_string(number)), "");
        EXPECT_EQ(::Run.Molecule.AtomRecords[2].BondedAtoms[0], 2 + number - 1);
    }
    for (const std::string number : {"-2", "4", "-2147483648", "2147483647"}) {
        EXPECT_EQ(third(number), BadRecord(3));
    }
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 1 2 s\nmol"), "");
    EXPECT_EQ(::Run.Molecule.AtomRecords[0].BondedAtoms[0], 1);
}

// What else is wrong with an input explains more than a neighbour outside the system, and comes first.
TEST_F(ParameterInput, NeighboursAreRefusedLast) {
    const std::string far = "AtomsBegin\n2\nmol\natom 1 H H H - 0 0 0 0 1 3 s\natom 2 H H H - 0 0 0 0 0\n";
    const std::string block = far + "AtomsEnd\n";
    EXPECT_EQ(ReadInput(NMRBlock + block), BadRecord(1));
    EXPECT_EQ(ReadInput(block + NMRBlock + "x = 1\n"), BadRecord(1));
    EXPECT_EQ(LogText, Unknown("x = 1"));
    const auto refusal = [](const std::string& text) {
        const std::string output = ReadInput(text);
        return output.substr(0, output.find(" the input file"));
    };
    EXPECT_EQ(ReadInput(NMRBlock + far + "atom 3 H H H - 0 0 0 0 0\nAtomsEnd\n"),
              "ERRMSG: The number of atoms in the current system is bigger than you specified in the input file "
              "<INPUT>.\n");
    EXPECT_EQ(ReadInput(NMRBlock + far + "mol\natom 1 X H H - 0 0 0 0 0\nAtomsEnd\n").find("ERRMSG: The number"), 0u);
    EXPECT_EQ(ReadInput(NMRBlock + Replaced(block, "2 H H", "2 X X")),
              "ERRMSG: Input file <INPUT> has an undefined element X for atom 2.\n");
    EXPECT_EQ(ReadInput(NMRBlock + Replaced(block, "H - 0 0 0 0 0", "H - 0 0 0 0 1 1 x")),
              "ERRMSG: Input file <INPUT> has a bad bond order x for atom 2.\n");
    EXPECT_EQ(ReadInput(NMRBlock + Replaced(block, "H - 0 0 0 0 0", "H - 0 0 0 0")), BadRecord(2));
    EXPECT_EQ(refusal(block + "NMRSelectionBegin\nx"),
              "ERRMSG: Velkoran has met troubles when reading in the number of NMR atoms from input file <INPUT>.\n");
    EXPECT_EQ(refusal(NMRBlock + block + "QuantumSelectionBegin\nx"),
              "ERRMSG: Velkoran has met troubles when reading in the number of selected atoms from");
    EXPECT_EQ(ReadInput(block), "ERRMSG: Input file <INPUT> doesn't have NMR selection of atoms beginning with "
                                "NMRSelectionBegin and ending with NMRSelectionEnd.\n");
    EXPECT_EQ(refusal(block + Replaced(NMRBlock, "atom 1", "atom 3")), "ERRMSG: NMR atom 3 in mol 1 in");
    EXPECT_EQ(refusal(NMRBlock + block + "QuantumSelectionBegin\n1\nmol 1 atom 3\nQuantumSelectionEnd\n"),
              "ERRMSG: Selected atom 3 in mol 1 in");
    EXPECT_EQ(ReadInput("CalculateSpectra = yes\n" + NMRBlock + block).find("ERRMSG: Sorry, Velkoran"), 0u);
}

TEST_F(ParameterInput, CountsOfNeighbours) {
    std::string twelve;
    for (int k = 0; k < 12; ++k) {
        twelve += " 2 s";
    }
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 12" + twelve), "");
    EXPECT_EQ(::Run.Molecule.AtomRecords[0].BondCount, 12);
    EXPECT_EQ(::Run.Molecule.AtomRecords[0].BondedAtoms[11], 1);
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 13" + twelve + " 2 s"), BadRecord(1));
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 2147483647" + twelve), BadRecord(1));
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 0 5 z"), "");  // what is beyond the count isn't looked at
}

TEST_F(ParameterInput, MissingItemsOfAnAtomLine) {
    const std::vector<std::string> items = {"atom", "1", "H", "H", "H", "-", "0", "1",
                                            "2",    "3", "2", "2", "s", "2", "s"};
    for (std::size_t count = 1; count <= items.size(); ++count) {
        std::string line = items[0];
        for (std::size_t i = 1; i < count; ++i) {
            line += " " + items[i];
        }
        EXPECT_EQ(AtomLine(line), count < items.size() ? BadRecord(1) : "") << line;
    }
    EXPECT_EQ(AtomLine("atom x H H H - 0 0 0 0 0"), BadRecord(1));
    EXPECT_EQ(AtomLine("atom 1 H H H - x 0 0 0 0"), BadRecord(1));
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 nan 0 0 0"), BadRecord(1));
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 1e999 0"), BadRecord(1));
    EXPECT_EQ(AtomLine("ATOMIC 1 H H H - 0 0 0 0 0"), "");  // four letters make an atom line
}

// Words are cut by their widths, and the rest of a word is the next item.
TEST_F(ParameterInput, WidthsOfTheWords) {
    EXPECT_EQ(AtomLine("atom 1 HYDROGEN H H - 0 0 0 0 0"), BadRecord(1));  // HYDR, OGE, N, H, and "-" is no charge
    EXPECT_EQ(AtomLine("atom 1 HYDROGEN H 0 0 0 0 0"),
              "ERRMSG: Input file <INPUT> has an undefined element OGE for atom 1.\n");
    EXPECT_EQ(AtomLine("atom 1 HYDRO H - 0 0 0 0 0"), "");  // name HYDR, element O, type H
    EXPECT_EQ(::Run.Molecule.AtomRecords[0].AtomicNumber, 8);
    EXPECT_EQ(AtomLine("atom 1 H   008C flagsx0 0 0 0 0"), "");  // element 008, type C, flags of six letters
    EXPECT_EQ(::Run.Molecule.AtomRecords[0].AtomicNumber, 8);
    EXPECT_EQ(::Run.Molecule.AtomRecords[0].AtomType, 1);
}

// The names of many types are found as one of few is: the last that matches, in any case.
TEST_F(ParameterInput, ManyTypes) {
    std::vector<std::string> names;
    for (int i = 0; i < 1000; ++i) {
        names.push_back(std::string("Q").append(std::to_string(i % 900)));
    }
    LoadTypes(names);
    EXPECT_EQ(ReadInput(NMRBlock + "AtomsBegin\n3\nmol\natom 1 H H q7 - 0 0 0 0 0\natom 1 H H Q107 - 0 0 0 0 0\n" +
                        "atom 1 H H q899 - 0 0 0 0 0\nAtomsEnd\n"),
              "");
    EXPECT_EQ(::Run.Molecule.AtomRecords[0].AtomType, 907);
    EXPECT_EQ(::Run.Molecule.AtomRecords[1].AtomType, 107);
    EXPECT_EQ(::Run.Molecule.AtomRecords[2].AtomType, 899);
}

TEST_F(ParameterInput, BondLetters) {
    for (const std::string letter : {"h", "s", "d", "t", "a"}) {
        EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 1 2 " + letter), "");
        EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 1 2" + letter + "ingle"), "");
    }
    for (const std::string letter : {"S", "x", "1", "-", "%"}) {
        EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 1 2 " + letter + "d"),
                  "ERRMSG: Input file <INPUT> has a bad bond order " + letter + " for atom 1.\n");
    }
    EXPECT_EQ(AtomLine("atom 1 H H H - 0 0 0 0 1 2"), BadRecord(1));
}

TEST_F(ParameterInput, ElementsByNameOrNumber) {
    const auto element = [](const std::string& name) {
        EXPECT_EQ(AtomLine("atom 1 H " + name + " H - 0 0 0 0 0"), "") << name;
        return ::Run.Molecule.AtomRecords[0].AtomicNumber;
    };
    EXPECT_EQ(element("cL"), 17);
    EXPECT_EQ(element("LP"), 0);
    EXPECT_EQ(element("lr"), 103);
    EXPECT_EQ(element("0"), 0);
    EXPECT_EQ(element("06"), 6);
    EXPECT_EQ(element("999"), 999);
    EXPECT_EQ(element("6x"), 6);
    for (const std::string name : {"X", "-1", "D", "Hx"}) {
        EXPECT_EQ(AtomLine("atom 1 H " + name + " H - 0 0 0 0 0"),
                  "ERRMSG: Input file <INPUT> has an undefined element " + name + " for atom 1.\n");
    }
}

TEST_F(ParameterInput, TypesByNameOrNumber) {
    const auto type = [](const std::string& name) {
        EXPECT_EQ(AtomLine("atom 1 H H " + name + " - 0 0 0 0 0"), "") << name;
        return ::Run.Molecule.AtomRecords[0].AtomType;
    };
    EXPECT_EQ(type("c"), 1);
    EXPECT_EQ(type("ct"), 3);
    EXPECT_EQ(type("h"), 4);
    EXPECT_EQ(type("0"), 0);
    EXPECT_EQ(type("9999"), 9999);  // the range is tested later
    EXPECT_EQ(type("3rd"), 3);
    EXPECT_EQ(AtomLine("atom 1 H H CTX - 0 0 0 0 0"),
              "ERRMSG: Input file <INPUT> has an undefined atom type CTX for atom 1.\n");
}

// Missing records stay cleared; they are atoms of the system as far as neighbours go.
TEST_F(ParameterInput, FewerAtomLinesThanTheCount) {
    EXPECT_EQ(ReadInput(NMRBlock + Hydrogens(4, {1})), "");
    EXPECT_EQ(::Run.Molecule.AtomCount, 4);
    EXPECT_EQ(::Run.Molecule.AtomRecords[3].AtomicNumber, 0);
    EXPECT_EQ(::Run.Molecule.AtomRecords[3].MoleculeIndex, 0);
    EXPECT_EQ(::Run.Molecule.AtomRecords[3].BondCount, 0);
    EXPECT_EQ(::Run.Molecule.InputCoordinates[3].Position[0], 0.0);
    EXPECT_EQ(ReadInput(NMRBlock + "AtomsBegin\n3\nmol\natom 1 H H H - 0 0 0 0 1 3 s\nAtomsEnd\n"), "");
    EXPECT_EQ(::Run.Molecule.AtomRecords[0].BondedAtoms[0], 2);
    EXPECT_EQ(ReadInput(NMRBlock + Hydrogens(2, {3})),
              "ERRMSG: The number of atoms in the current system is bigger than you specified in the input file "
              "<INPUT>.\n");
}
