// SPDX-License-Identifier: MIT
// Blocks, markers and lines of nmrparam.in: repeated, crooked, too long, damaged. Each refusal is also a whole run
// (cases/parameter/).
#include "tests/unit/files/parameter_input_reading.h"

TEST_F(ParameterInput, RepeatedBlocksReplaceTheEarlierOnes) {
    const std::string other = "nmrselectionbegin\n2\nmol 1 atom 3\nmol 1 atom 2\nNMRSELECTIONEND\n";
    EXPECT_EQ(ReadInput(NMRBlock + Water + other), "");
    EXPECT_EQ(::Run.Molecule.NMRAtomCount, 2);
    EXPECT_EQ(::Run.Molecule.NMRAtomList[0], 3);
    EXPECT_EQ(ReadInput(NMRBlock + Water + Hydrogens(2, {1, 1})), "");
    EXPECT_EQ(::Run.Molecule.AtomCount, 2);
    EXPECT_EQ(::Run.Molecule.AtomRecords[1].MoleculeIndex, 2);
    const std::string quantum = "QuantumSelectionBegin\n1\nmol 1 atom 1\nQuantumSelectionEnd\n";
    EXPECT_EQ(ReadInput(quantum + Replaced(quantum, "atom 1", "atom 2") + NMRBlock + Water), "");
    EXPECT_EQ(::Run.Molecule.AtomRecords[0].SelectionState, 1);
    EXPECT_EQ(::Run.Molecule.AtomRecords[1].SelectionState, 0);
}

TEST_F(ParameterInput, CountsAndEntriesStandInAnySpacing) {
    EXPECT_EQ(ReadInput("NMRSelectionBegin\n\n  2 mol 1\natom\n\n3 a 1b 1\n\nNMRSelectionEnd\n" + Water), "");
    EXPECT_EQ(::Run.Molecule.NMRAtomList[0], 3);
    EXPECT_EQ(::Run.Molecule.NMRAtomList[1], 1);
    // Behind the count all white space is swallowed, and so a first line within the block may begin with blanks.
    const std::string spaced = Replaced(Water, "\n3\nmol 1", "\n\n\t3\n\n mol\n mol\nmol 2");
    EXPECT_EQ(ReadInput(Replaced(NMRBlock, "mol 1", "mol 2") + spaced), "");
    EXPECT_EQ(::Run.Molecule.AtomRecords[0].MoleculeIndex, 2);
    const std::string longWords =
        "NMRSelectionBegin\n1\n" + std::string(900, 'm') + " 1 " + std::string(900, 'a') + " 2\nNMRSelectionEnd\n";
    EXPECT_EQ(ReadInput(longWords + Water), "");
    EXPECT_EQ(::Run.Molecule.NMRAtomList[0], 2);
}

// Trailing blanks of a marker are removed, leading ones aren't; those before an option key are skipped.
TEST_F(ParameterInput, BlanksAroundMarkersAndKeys) {
    const std::string trailing = Replaced(Replaced(NMRBlock, "Begin", "Begin \t\f"), "End", "End  \x01");
    EXPECT_EQ(ReadInput("  TotalCharge = 2  \n" + trailing + Replaced(Water, "AtomsBegin", "ATOMSBEGIN   ")), "");
    EXPECT_EQ(::Run.Options.TotalCharge, 2);
    EXPECT_EQ(ReadInput(std::string(" ") + NMRBlock + Water),
              "ERRMSG: Input file <INPUT> doesn't have NMR selection of atoms beginning with NMRSelectionBegin and "
              "ending with NMRSelectionEnd.\n");
    EXPECT_EQ(ReadInput(NMRBlock + std::string(" ") + Water),
              "ERRMSG: Input file <INPUT> doesn't have coordinates for the current system beginning with AtomBegin and "
              "ending with AtomEnd.\n");
    // Directly behind the entries white space is swallowed; elsewhere the end isn't seen, and the atoms go with it.
    EXPECT_EQ(ReadInput(Replaced(NMRBlock, "NMRSelectionEnd", " NMRSelectionEnd") + Water), "");
    EXPECT_EQ(ReadInput(Replaced(NMRBlock, "NMRSelectionEnd", ";\n NMRSelectionEnd") + Water),
              "ERRMSG: Input file <INPUT> doesn't have coordinates for the current system beginning with AtomBegin and "
              "ending with AtomEnd.\n");
    // The end of the atoms isn't seen: the block ends with the file, and the option in it isn't read.
    EXPECT_EQ(ReadInput(NMRBlock + Replaced(Water, "AtomsEnd", " AtomsEnd") + "TotalCharge = 5\n"), "");
    EXPECT_EQ(::Run.Options.TotalCharge, 0);
}

TEST_F(ParameterInput, BeginningsOfLinesWithinTheAtoms) {
    EXPECT_EQ(ReadInput(NMRBlock + Replaced(Water, "AtomsEnd", "atomsENDED here\nTotalCharge = 3")), "");
    EXPECT_EQ(::Run.Options.TotalCharge, 3);
    EXPECT_EQ(ReadInput(NMRBlock + Replaced(Water, "AtomsEnd", "endmol 1\n atom x\nTotalCharge = 3\n; mol\nAtomsEnd")),
              "");
    EXPECT_EQ(::Run.Options.TotalCharge, 0);
    EXPECT_EQ(ReadInput(NMRBlock + Replaced(Water, "mol 1\n", "molecule\nMOL\nMolten\n") + ""),
              "ERRMSG: NMR atom 1 in mol 1 in the input file <INPUT> isn't presented in the current systems.\n");
    EXPECT_EQ(ReadInput(NMRBlock + Replaced(Water, "AtomsEnd", "Atoms")),
              "ERRMSG: The number of atoms in the current system is bigger than you specified in the input file "
              "<INPUT>.\n");
}

// Within a selection only its end ends it; at the end of the file what is left in the line goes on.
TEST_F(ParameterInput, SelectionsWithoutAnEnd) {
    const std::string open = "NMRSelectionBegin\n1\nmol 1 atom 1\n; comment\nTotalCharge = 3\n";
    EXPECT_EQ(ReadInput(Water + open + "NMRSelectionEnd\n"), "");
    EXPECT_EQ(::Run.Options.TotalCharge, 0);
    EXPECT_EQ(LogText, "(no file)");
    EXPECT_EQ(ReadInput(Water + open), "");
    EXPECT_EQ(::Run.Options.TotalCharge, 0);
    EXPECT_EQ(LogText, Unknown("TotalCharge = 3"));  // the last line, met as no option
    EXPECT_EQ(ReadInput(Water + open + "QuantumSelectionBegin"),
              "ERRMSG: Velkoran has met troubles when reading in the number of selected atoms from the input file "
              "<INPUT>.\n");
    EXPECT_EQ(ReadInput(Water + open + "AtomsBegin \n"),
              "ERRMSG: Velkoran has met troubles when reading in the number of atoms in the system from the input file "
              "<INPUT>.\n");
    EXPECT_EQ(ReadInput(Water + NMRBlock + "QuantumSelectionBegin\n1\nm 1 a 1\nAtomsBegin"),
              "ERRMSG: Velkoran has met troubles when reading in the number of atoms in the system from the input file "
              "<INPUT>.\n");
}

TEST_F(ParameterInput, UnknownOptions) {
    EXPECT_EQ(ReadInput("totalcharge = 1\nno sign\n; a = b\n\n = \n x=1 \t\n" + NMRBlock + Water), "");
    EXPECT_EQ(::Run.Options.TotalCharge, 0);
    EXPECT_EQ(LogText, Unknown("totalcharge = 1") + Unknown(" =") + Unknown(" x=1"));
    EXPECT_EQ(ReadInput("SemiEmpiricalMethod = tndo3\nTotalCharge = 1\nTotalCharge = 2\n" + NMRBlock + Water), "");
    EXPECT_EQ(::Run.Options.SemiEmpiricalMethod, 1);
    EXPECT_EQ(::Run.Options.TotalCharge, 2);
    EXPECT_EQ(LogText, "(no file)");
    EXPECT_EQ(ReadInput(" ; x = 1\n" + NMRBlock + Water), "");  // a comment has its sign first
    EXPECT_EQ(LogText, Unknown(" ; x = 1"));
}

// 511 characters make a piece, which is a line of its own; the message that names it is cut.
TEST_F(ParameterInput, LongLinesAreReadInPieces) {
    const std::string start = "TotalCharge = 3" + std::string(496, ' ');
    EXPECT_EQ(ReadInput(start + "TotalCharge = 4" + std::string(85, ' ') + "\n" + NMRBlock + Water), "");
    EXPECT_EQ(::Run.Options.TotalCharge, 4);
    EXPECT_EQ(ReadInput(std::string(";") + std::string(510, 'x') + "TotalCharge = 5\n" + NMRBlock + Water), "");
    EXPECT_EQ(::Run.Options.TotalCharge, 5);
    EXPECT_EQ(ReadInput(std::string(";") + std::string(509, 'x') + "\nTotalCharge = 6\n" + NMRBlock + Water), "");
    EXPECT_EQ(::Run.Options.TotalCharge, 6);
    EXPECT_EQ(ReadInput(std::string(511, ' ') + NMRBlock + std::string(511, 'x') + Water), "");
    EXPECT_EQ(ReadInput(std::string(510, 'x') + "=" + std::string(89, 'y') + "\n" + NMRBlock + Water), "");
    EXPECT_EQ(LogText, ("Unknown initialization: " + std::string(400, 'x')).substr(0, 399) + "\n");
    EXPECT_EQ(
        ReadInput(NMRBlock + "AtomsBegin\n1\nmol\natom 1 H H H - 0 0 0 0" + std::string(600, ' ') + "0\nAtomsEnd\n"),
        BadRecord(1));
}

TEST_F(ParameterInput, CarriageReturns) {
    EXPECT_EQ(ReadInput(Replaced("TotalCharge = 2\nCalculateCoupling = no\n" + NMRBlock + Water, "\n", "\r\n")), "");
    EXPECT_EQ(::Run.Options.TotalCharge, 2);
    EXPECT_EQ(::Run.Options.CalculateCoupling, 0);
    EXPECT_EQ(::Run.Molecule.AtomRecords[2].AtomicNumber, 1);
    EXPECT_EQ(LogText, "(no file)");
}

// A null byte ends its line; at the beginning the line is skipped.
TEST_F(ParameterInput, NullBytes) {
    using namespace std::string_literals;
    EXPECT_EQ(ReadInput("\0x = 1\nTotalCharge = 2\0 3\ny\0 = 1\n"s + NMRBlock + Water), "");
    EXPECT_EQ(::Run.Options.TotalCharge, 2);
    EXPECT_EQ(LogText, "(no file)");
}

// The test for atoms comes before that for an NMR selection.
TEST_F(ParameterInput, OrderOfTheTestsAtTheEnd) {
    const std::string noAtoms = "ERRMSG: Input file <INPUT> doesn't have coordinates for the current system beginning "
                                "with AtomBegin and ending with AtomEnd.\n";
    EXPECT_EQ(ReadInput(""), noAtoms);
    EXPECT_EQ(ReadInput(NMRBlock), noAtoms);
    EXPECT_EQ(ReadInput(Water),
              "ERRMSG: Input file <INPUT> doesn't have NMR selection of atoms beginning with NMRSelectionBegin and "
              "ending with NMRSelectionEnd.\n");
    const std::string nowhere = "NMRSelectionBegin\n1\nmol 1 atom 4\nNMRSelectionEnd\n"
                                "QuantumSelectionBegin\n1\nmol 1 atom 5\nQuantumSelectionEnd\n";
    EXPECT_EQ(ReadInput("CalculateSpectra = yes\n" + nowhere + Water),
              "ERRMSG: NMR atom 4 in mol 1 in the input file <INPUT> isn't presented in the current systems.\n");
    EXPECT_EQ(ReadInput("CalculateSpectra = yes\n" + Replaced(nowhere, "atom 4", "atom 3") + Water),
              "ERRMSG: Selected atom 5 in mol 1 in the input file <INPUT> isn't presented in the current systems.\n");
}

TEST_F(ParameterInput, SpectraNeedTheOtherTwoOff) {
    const std::string both = "ERRMSG: Sorry, Velkoran doesn't accept both NMR parameter calculation and NMR spectrum "
                             "calculation at the same time.\n";
    const std::string rest = NMRBlock + Water;
    EXPECT_EQ(ReadInput("CalculateSpectra = yes\n" + rest), both);
    EXPECT_EQ(ReadInput("CalculateSpectra = yes\nCalculateShielding = no\n" + rest), both);
    EXPECT_EQ(ReadInput("CalculateSpectra = yes\nCalculateCoupling = no\n" + rest), both);
    EXPECT_EQ(ReadInput("CalculateSpectra = yes\nCalculateCoupling = no\nCalculateShielding = no\n" + rest), "");
}

TEST_F(ParameterInput, LogPrintLevelOfTenSwitchesTheLogOff) {
    EXPECT_EQ(ReadInput("LogPrintLevel = 9\n" + NMRBlock + Water), "");
    EXPECT_EQ(::Run.Report.LogEnabled, 1);
    EXPECT_EQ(ReadInput("LogPrintLevel = 10\nx = 1\n" + NMRBlock + Water), "");
    EXPECT_EQ(::Run.Report.LogEnabled, 0);
    EXPECT_EQ(LogText, Unknown("x = 1"));  // what came while reading stays
}

// A read error comes before what is missing in the file.
TEST_F(ParameterInput, ReadErrors) {
    for (const std::string& text : {NMRBlock + Water, NMRBlock, std::string()}) {
        TemporaryDirectory work;
        EXPECT_EQ(ExitCodeOfChild([&] {
                      PrepareReading(work.Path);
                      DamagedStream stream = {text};
                      ReadParameterInput(stream.Open());
                  }),
                  0);
        EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"),
                  "ERRMSG: Velkoran has met troubles when reading the input from thr input file " + work.Path +
                      "/nmrspect.in.\n");
    }
}
