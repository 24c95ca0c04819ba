// SPDX-License-Identifier: MIT
// Parameter runs on inputs that no folder of cases/ can hold: odd files and directories, inputs that are made, results
// that are searched or compared with each other.
#include "tests/program/child_process.h"
#include "tests/program/run_folder.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

namespace fs = std::filesystem;

static const std::string Tests = VELKORAN_TESTS;

static const std::string TroubleWith = "ERRMSG: Trouble has been occured when openning ";

// An empty field vanishes from the command line, and the next one takes its place: here "1" is the work directory.
TEST(ParameterDirectory, EmptyFieldVanishes) {
    TemporaryDirectory work;
    fs::create_directory(work.Path + "/1");
    EXPECT_EQ(RunProgram({{"", work.Path, "1", work.Path + "/run.log"}, work.Path}), 0);
    EXPECT_EQ(ReadText(work.Path + "/1/nmrparam.out"), TroubleWith + work.Path + "\\nmrtype.txt.\n");
    EXPECT_EQ(ReadText(work.Path + "/nmrparam.out"), "(no file)");
    EXPECT_EQ(ReadText(work.Path + "/run.log"), "(no file)");
}

TEST(ParameterDirectory, DirectoryInPlaceOfAFile) {
    for (const std::string name : {"nmrtype.txt", "nmr_shft.abp", "nmr_cupl.abp"}) {
        RunFolder run;
        fs::remove(run.Parameters() + "/" + name);
        fs::create_directory(run.Parameters() + "/" + name);
        EXPECT_EQ(run.Start(), 0);
        EXPECT_EQ(run.Output(), TroubleWith + "<PARAMETERS>\\" + name + ".\n");
        EXPECT_EQ(run.Log(), "(no file)");
    }
}

// An atom line that is missing leaves a record of zeros, which is listed with the number of its atom all the same: with
// its charge and in the three tables of the shielding.
TEST(ParameterInputFile, MissingAtomLine) {
    RunFolder run;
    WriteText(run.Input(), "CalculateCoupling = no\nCalculateShieldTensor = yes\nNMRSelectionBegin\n1\nmol 1 atom 1\n"
                           "NMRSelectionEnd\nAtomsBegin\n3\nmol 1\natom 1 H1 H H - 0 0 0 0 0\n"
                           "atom 2 H2 H H - 0 0 0 0.74 0\nAtomsEnd\n");
    EXPECT_EQ(run.Start(), 0);
    const std::string log = run.Log();
    const auto at = [&](const std::string& line) { return log.find(line) != std::string::npos; };
    EXPECT_TRUE(at("\n                       3   0     0.000000       0.00000     0.00000     0.00000\n")) << log;
    EXPECT_TRUE(at("\n  3(  )        0.000         0.000        0.000        0.000         0.000        0.000  "
                   "       0.000\n"))
        << log;
    EXPECT_TRUE(at("\n  3(  )        0.000         0.000        0.000         0.000         0.000  "
                   "        0.000\n"))
        << log;
    EXPECT_TRUE(at("\n    3(  ):     Isotropic =          0.0000      Anisotropy =          0.0000\n")) << log;
}

// A file that can be opened but not read: the first page of a process's own memory.
TEST(ParameterInputFile, ReadError) {
    RunFolder run;
    fs::create_symlink("/proc/self/mem", run.Input());
    EXPECT_EQ(run.Start(), 0);
    EXPECT_EQ(run.Output(), "ERRMSG: Velkoran has met troubles when reading the input from thr input file <INPUT>.\n");
}

// Whether so many entries can be had hangs on the machine; they aren't there to be read in any case.
TEST(ParameterInputFile, LargestCountsOfSelections) {
    const std::string memory =
        "ERRMSG: The molecule selected for calculation is too large and has consumed all available "
        "memory.\n";
    RunFolder nmr;
    WriteText(nmr.Input(), "NMRSelectionBegin\n2147483647\nmol 1 atom 1\nNMRSelectionEnd\n");
    EXPECT_EQ(nmr.Start(), 0);
    EXPECT_TRUE(nmr.Output() == memory ||
                nmr.Output() ==
                    "ERRMSG: Velkoran has met troubles when reading in the indices of the NMR atoms from the "
                    "input file <INPUT>.\n")
        << nmr.Output();
    RunFolder quantum;
    WriteText(quantum.Input(), "QuantumSelectionBegin\n99999999999\nmol 1 atom 1\nQuantumSelectionEnd\n");
    EXPECT_EQ(quantum.Start(), 0);
    EXPECT_TRUE(quantum.Output() == memory ||
                quantum.Output() ==
                    "ERRMSG: Velkoran has met troubles when reading in the indices of the selected atoms "
                    "from input file <INPUT>.\n")
        << quantum.Output();
}

// An ethane whose two halves are one molecule or two. The selected half comes first or second, and the carbon atom that
// isn't selected stands at a place of its half; number is that atom for the carbon atom that is, counted within its
// molecule, and no bond is listed where number is null.
static std::string EthaneInput(bool halves, bool selectedFirst, int place, const int* number) {
    const std::string second = halves ? "mol 2\n" : "";
    std::string selected = "atom 1 C C C - 0 0 0 0 " +
                           (number == nullptr ? "0\n" : "1 " + std::to_string(*number) + " s\n") +
                           "atom 2 H H H - 0 1.02 0 -0.39 0\natom 3 H H H - 0 -0.51 0.88 -0.39 0\n"
                           "atom 4 H H H - 0 -0.51 -0.88 -0.39 0\n";
    std::string other;
    const char* const hydrogens[] = {"-1.02 0", "0.51 0.88", "0.51 -0.88"};
    for (int i = 0, h = 0; i < 4; ++i) {
        other += i == place ? "atom 1 C C C - 0.1 0 0 1.53 0\n"
                            : std::string("atom 1 H H H - 0.1 ") + hydrogens[h++] + " 1.92 0\n";
    }
    std::string entries;
    for (int i = 1; i <= 4; ++i) {
        entries += std::string("mol ") + (halves && !selectedFirst ? "2" : "1") + " atom " +
                   std::to_string(i + (halves || selectedFirst ? 0 : 4)) + "\n";
    }
    return "NMRSelectionBegin\n4\n" + entries + "NMRSelectionEnd\nQuantumSelectionBegin\n4\n" + entries +
           "QuantumSelectionEnd\nAtomsBegin\n8\nmol 1\n" +
           (selectedFirst ? selected + second + other : other + second + selected) + "AtomsEnd\n";
}

// Property: a bond into the next molecule, or by a number of 0 or less into the one before, is capped as the same bond
// within one molecule is: the same bytes, with the four orbitals of the capping atom. Without the bond there are an odd
// count of electrons and no result.
TEST(ParameterRunBonds, ReachIntoOtherMolecules) {
    const auto results = [](const std::string& input) {
        RunFolder run;
        WriteText(run.Input(), input);
        EXPECT_EQ(run.Start(), 0);
        return run.Output() + run.Log();
    };
    for (const bool selectedFirst : {true, false}) {
        for (int place = 0; place < 4; ++place) {
            const int within = selectedFirst ? 5 + place : 1 + place;
            const int across = selectedFirst ? 5 + place : place - 3;
            const std::string whole = results(EthaneInput(false, selectedFirst, place, &within));
            EXPECT_EQ(whole.find("Results "), 0u) << whole;
            EXPECT_NE(whole.find("with 11 orbitals"), std::string::npos) << whole;
            EXPECT_EQ(results(EthaneInput(true, selectedFirst, place, &across)), whole) << selectedFirst << place;
            EXPECT_EQ(results(EthaneInput(true, selectedFirst, place, nullptr)).find("ERRMSG: Singlet"), 0u);
        }
    }
}

// Bytes of a fixed sequence in the place of each file: the run ends with a message, never with a fault.
TEST(ParameterInputFile, RandomBytes) {
    const std::string known = ReadText(Tests + "/cases/parameter/unknown_key_goes_on/nmrparam.in");
    const std::string input = Replaced(known, "CalculateShielding = no\n", "");  // so that both tables are tested
    for (unsigned seed = 1; seed <= 5; ++seed) {
        for (const std::string name : {"p/nmrtype.txt", "p/nmr_shft.abp", "p/nmr_cupl.abp", "nmrparam.in"}) {
            std::string bytes;
            unsigned state = seed;
            for (int i = 0; i < 5000; ++i) {
                state = state * 1664525u + 1013904223u;
                bytes += static_cast<char>(state >> 24);
            }
            RunFolder run;
            WriteText(run.Input(), input);
            WriteText(run.Work.Path + "/" + name, bytes);
            EXPECT_EQ(run.Start(), 0) << name << seed;
            EXPECT_EQ(run.Output().substr(0, 8), "ERRMSG: ") << name << seed;
        }
    }
}

TEST(ParameterRunLog, NoLogWithoutItsField) {
    RunFolder run;
    fs::copy(Tests + "/cases/parameter/unknown_key_goes_on/nmrparam.in", run.Input());
    EXPECT_EQ(RunProgram({{run.Parameters(), run.Work.Path, "1"}, run.Work.Path}), 0);
    EXPECT_EQ(run.Output().substr(0, 8), "Results ");
    EXPECT_EQ(std::distance(fs::directory_iterator(run.Work.Path), fs::directory_iterator()), 3);
}

// An exponent whose square is more than a double holds makes a field of no numbers; a density at the nucleus of that
// kind, couplings that are infinite.
TEST(ParameterRunLog, SaysWhatIsNotFinite) {
    RunFolder run;
    fs::copy(Tests + "/cases/parameter/listing_of_two_orbitals/nmrparam.in", run.Input());
    WriteText(run.Input(), Replaced(ReadText(run.Input()), "CalculateShielding = no", "SCFIterationLimit = 30"));
    WriteText(run.Parameters() + "/nmr_shft.abp", "H 1e160 0 0 -7.2 0 0 9 0 0 0.4 5.6 -17 -17 52\n");
    WriteText(run.Parameters() + "/nmr_cupl.abp", "H 1.2 0 0 -7.2 0 0 9 0 0 1e200 5.6 -17 -17 52\n");
    EXPECT_EQ(run.Start(), 0);
    EXPECT_EQ(run.Output().substr(0, 8), "Results ");
    std::string cautions;
    std::istringstream log(run.Log());
    for (std::string line; std::getline(log, line);) {
        cautions += line.rfind("CAUTION: ", 0) == 0 ? line + "\n" : "";
    }
    const std::string end = " ended at the limit of 30 iterations: last difference not finite, limit 1e-";
    // the responses are zero: what isn't a number takes no part in them
    EXPECT_EQ(cautions, "CAUTION: field with nmr_shft.abp" + end +
                            "07 kcal/mol.\n"
                            "CAUTION: value not finite: shielding of atom 1.\n"
                            "CAUTION: value not finite: shielding of atom 2.\n"
                            "CAUTION: value not finite: couplings of atom 1.\n"
                            "CAUTION: value not finite: couplings of atom 2.\n");
}
