// SPDX-License-Identifier: MIT
// The three parameter files: names of types, the places of the columns, ordinary and capping records, what damaged
// files leave. Refusals of the whole program are in cases/parameter/.
#include "files/parameter_files.h"
#include "ground/memory.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <filesystem>

static const std::string TwoTypes = "Type Mass\nH 1.008\nC 12.011\n";

// A record whose column k holds first + k.
static std::string Record(const std::string& name, int first) {
    std::string text = name;
    for (int column = 1; column <= 14; ++column) {
        text += ' ';
        text += std::to_string(first + column);
    }
    return text + "\n";
}

static void FreeParameterTables() {
    FreeArray(::Run.Parameters.AtomTypeNames);
    FreeArray(::Run.Parameters.ParameterFileShielding);
    FreeArray(::Run.Parameters.ParameterFileCoupling);
    FreeArray(::Run.Parameters.CouplingConstants);
}

// Reads the files of a directory; "" when they are taken, else the line in the output file.
static std::string ReadFilesOf(const std::string& directory) {
    std::string field = directory + "\\";
    const auto read = [&] {
        UseFilesIn(directory);
        ::Run.Job.ParameterDirectory = field.data();
        ReadParameterFiles();
        ::Run.Job.ParameterDirectory = nullptr;
    };
    const int exitCode = ExitCodeOfChild(read);
    if (exitCode == 98) {
        read();
        return "";
    }
    EXPECT_EQ(exitCode, 0);
    return Replaced(ReadText(directory + "/nmrspect.out"), directory, "<PARAMETERS>");
}

static std::string ReadFiles(const std::string& types, const std::string& shielding, const std::string& coupling) {
    TemporaryDirectory directory;
    WriteText(directory.Path + "/nmrtype.txt", types);
    WriteText(directory.Path + "/nmr_shft.abp", shielding);
    WriteText(directory.Path + "/nmr_cupl.abp", coupling);
    return ReadFilesOf(directory.Path);
}

static std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (int i = 0; i < ::Run.Parameters.AtomTypeCount; ++i) {
        names.emplace_back(::Run.Parameters.AtomTypeNames[i].Text);
    }
    return names;
}

static std::vector<std::string> NamesOf(const std::string& types) {
    EXPECT_EQ(ReadFiles(types, "", ""), "");
    return Names();
}

// The fields in the order of their ordinals.
static std::vector<double> Fields(const AtomTypeParameters& record) {
    return {record.OrbitalEnergyS,  record.OrbitalEnergyP,      record.OrbitalEnergyD,      record.SlaterExponentS,
            record.SlaterExponentP, record.SlaterExponentD,     record.BondingParameter,    record.SlaterCondonG1,
            record.SlaterCondonF2,  record.IsolatedEnergyTndo1, record.IsolatedEnergyTndo2, record.AtomHeat};
}

static const std::vector<double> Zeros(12, 0.0);

// What Record(name, first) leaves: columns 8 and 9 cross.
static std::vector<double> FieldsOfRecord(double first) {
    std::vector<double> fields;
    for (const int column : {4, 5, 6, 1, 2, 3, 7, 9, 8, 12, 13, 14}) {
        fields.push_back(first + column);
    }
    return fields;
}

static std::vector<double> Shielding(int entry) {
    return Fields(::Run.Parameters.ParameterFileShielding[entry]);
}

static std::vector<double> Coupling(int entry) {
    return Fields(::Run.Parameters.ParameterFileCoupling[entry]);
}

class ParameterFiles : public testing::Test {
protected:
    void SetUp() override { ResetRun(); }
    void TearDown() override {
        FreeParameterTables();
        ResetRun();
    }
};

TEST_F(ParameterFiles, ColumnsGoToTheirFields) {
    EXPECT_EQ(ReadFiles("h\nH 1\n", Record("H", 0), Record("H", 100)), "");
    const AtomTypeParameters& shielding = ::Run.Parameters.ParameterFileShielding[0];
    EXPECT_EQ(shielding.SlaterExponentS, 1);
    EXPECT_EQ(shielding.SlaterExponentP, 2);
    EXPECT_EQ(shielding.SlaterExponentD, 3);
    EXPECT_EQ(shielding.OrbitalEnergyS, 4);
    EXPECT_EQ(shielding.OrbitalEnergyP, 5);
    EXPECT_EQ(shielding.OrbitalEnergyD, 6);
    EXPECT_EQ(shielding.BondingParameter, 7);
    EXPECT_EQ(shielding.SlaterCondonF2, 8);  // 8 and 9 cross on purpose
    EXPECT_EQ(shielding.SlaterCondonG1, 9);
    EXPECT_EQ(shielding.IsolatedEnergyTndo1, 12);
    EXPECT_EQ(shielding.IsolatedEnergyTndo2, 13);
    EXPECT_EQ(shielding.AtomHeat, 14);
    EXPECT_EQ(Coupling(0), FieldsOfRecord(100));
    EXPECT_EQ(::Run.Parameters.CouplingConstants[0].GFactor, 111);
    EXPECT_EQ(::Run.Parameters.CouplingConstants[0].SDensity, 110);
}

// The capping record is independent of the ordinary one, and either may exist alone.
TEST_F(ParameterFiles, CappingRecordsFillTheSecondHalf) {
    const std::string shielding = Record("-C", 300) + Record("C", 200) + Record("H", 100);
    const std::string coupling = Record("-H", 400) + Record("C", 500);
    EXPECT_EQ(ReadFiles(TwoTypes, shielding, coupling), "");
    EXPECT_EQ(Shielding(0), FieldsOfRecord(100));
    EXPECT_EQ(Shielding(1), FieldsOfRecord(200));
    EXPECT_EQ(Shielding(2), Zeros);
    EXPECT_EQ(Shielding(3), FieldsOfRecord(300));
    EXPECT_EQ(Coupling(0), Zeros);
    EXPECT_EQ(Coupling(1), FieldsOfRecord(500));
    EXPECT_EQ(Coupling(2), FieldsOfRecord(400));
    EXPECT_EQ(Coupling(3), Zeros);
    EXPECT_EQ(::Run.Parameters.CouplingConstants[0].GFactor, 0);
    EXPECT_EQ(::Run.Parameters.CouplingConstants[0].SDensity, 0);
    EXPECT_EQ(::Run.Parameters.CouplingConstants[2].GFactor, 411);
    EXPECT_EQ(::Run.Parameters.CouplingConstants[2].SDensity, 410);
}

TEST_F(ParameterFiles, FirstRecordOfANameWins) {
    EXPECT_EQ(ReadFiles(TwoTypes, Record("C", 100) + Record("C", 200), Record("-c", 300) + Record("-C", 400)), "");
    EXPECT_EQ(Shielding(1), FieldsOfRecord(100));
    EXPECT_EQ(Coupling(3), FieldsOfRecord(300));
    EXPECT_EQ(::Run.Parameters.CouplingConstants[3].GFactor, 311);
}

TEST_F(ParameterFiles, CaseOfNamesDoesNotMatter) {
    EXPECT_EQ(ReadFiles("h\ncL 35\n", Record("Cl", 100) + Record("-cL", 200), Record("CL", 300)), "");
    EXPECT_EQ(Names(), std::vector<std::string>({"CL"}));
    EXPECT_EQ(Shielding(0), FieldsOfRecord(100));
    EXPECT_EQ(Shielding(1), FieldsOfRecord(200));
    EXPECT_EQ(Coupling(0), FieldsOfRecord(300));
}

TEST_F(ParameterFiles, UnknownNamesAreReadAndDropped) {
    EXPECT_EQ(ReadFiles(TwoTypes, Record("XX", 100) + Record("+", 200) + Record("C", 300), ""), "");
    EXPECT_EQ(Shielding(0), Zeros);
    EXPECT_EQ(Shielding(1), FieldsOfRecord(300));
}

TEST_F(ParameterFiles, LinesOfARecordHaveNoMeaning) {
    const std::string spread = Replaced(Record("C", 100), " ", "\n \t");
    const std::string joined = Replaced(Record("H", 200), "\n", " ") + Record("-H", 300);
    EXPECT_EQ(ReadFiles(TwoTypes, spread + joined, "\n\n" + joined), "");
    EXPECT_EQ(Shielding(1), FieldsOfRecord(100));
    EXPECT_EQ(Shielding(0), FieldsOfRecord(200));
    EXPECT_EQ(Shielding(2), FieldsOfRecord(300));
    EXPECT_EQ(Coupling(2), FieldsOfRecord(300));
}

TEST_F(ParameterFiles, SurplusRecordsAreNotRead) {
    const std::string four = Record("A", 0) + Record("B", 0) + Record("C", 100) + Record("D", 0);
    EXPECT_EQ(ReadFiles(TwoTypes, four + Record("H", 200), Record("H", 300) + four), "");
    EXPECT_EQ(Shielding(0), Zeros);
    EXPECT_EQ(Shielding(1), FieldsOfRecord(100));
    EXPECT_EQ(Coupling(0), FieldsOfRecord(300));
    EXPECT_EQ(Coupling(1), FieldsOfRecord(100));
}

TEST_F(ParameterFiles, ShortRecordStopsTheReading) {
    const std::string damaged = "C 1 2 3 x 5 6 7 8 9 10 11 12 13 14\n";
    EXPECT_EQ(ReadFiles(TwoTypes, Record("H", 100) + damaged + Record("-H", 200),
                        damaged + Record("C", 200) + Record("H", 300)),
              "");
    EXPECT_EQ(Shielding(0), FieldsOfRecord(100));
    EXPECT_EQ(Shielding(1), Zeros);
    EXPECT_EQ(Shielding(2), Zeros);
    EXPECT_EQ(Coupling(0), Zeros);
    EXPECT_EQ(Coupling(1), Zeros);
}

TEST_F(ParameterFiles, FileThatEndsWithinARecord) {
    EXPECT_EQ(ReadFiles(TwoTypes, Record("H", 100) + "C 1 2 3", Record("H", 100) + "C"), "");
    EXPECT_EQ(Shielding(0), FieldsOfRecord(100));
    EXPECT_EQ(Shielding(1), Zeros);
    EXPECT_EQ(Coupling(1), Zeros);
}

// What a record that ends behind "1 2 3 4" leaves: three exponents and the energy of s.
static std::vector<double> FourNumbers() {
    std::vector<double> part = Zeros;
    part[3] = 1;
    part[4] = 2;
    part[5] = 3;
    part[0] = 4;
    return part;
}

// On purpose the last of the records that are read keeps what was there of it.
TEST_F(ParameterFiles, LastRecordKeepsItsPart) {
    EXPECT_EQ(ReadFiles("h\nH 1\n", Record("H", 100) + "-H 1 2 3 4 x 6", Record("H", 200) + "-H 7"), "");
    EXPECT_EQ(Shielding(1), FourNumbers());
    std::vector<double> part = Zeros;
    part[3] = 7;
    EXPECT_EQ(Coupling(1), part);
    EXPECT_EQ(::Run.Parameters.CouplingConstants[1].GFactor, 0);
}

TEST_F(ParameterFiles, NumbersThatAreNotFiniteStopTheReading) {
    for (const std::string number : {"1e999", "nan", "inf", "1e", "0x"}) {
        const std::string record = "H 1 2 3 4 5 6 7 8 9 10 11 12 13 " + number + "\n";
        EXPECT_EQ(ReadFiles(TwoTypes, record + Record("C", 100), ""), "");
        EXPECT_EQ(Shielding(0), Zeros) << number;
        EXPECT_EQ(Shielding(1), Zeros) << number;
    }
}

// A last record counts as far as it goes; the number that ends it doesn't.
TEST_F(ParameterFiles, LastRecordEndsBeforeANumberThatIsNotFinite) {
    EXPECT_EQ(ReadFiles("h\nH 1\n", Record("H", 100) + "-H 1 2 3 4 1e999", Record("H", 200) + "-H 1e30866.2"), "");
    EXPECT_EQ(Shielding(1), FourNumbers());
    EXPECT_EQ(Coupling(1), Zeros);
}

// "-" and three characters just fit; a longer name is no type's.
TEST_F(ParameterFiles, LengthOfRecordNames) {
    const std::string longer = Record("-ABCD", 100) + Record("ABCD", 200) + Record(std::string(700, 'A'), 300);
    EXPECT_EQ(ReadFiles("h\nABC 1\nAB 1\n", longer + Record("-abc", 400), Record("ABC", 500) + longer), "");
    EXPECT_EQ(Shielding(0), Zeros);
    EXPECT_EQ(Shielding(2), FieldsOfRecord(400));
    EXPECT_EQ(Coupling(0), FieldsOfRecord(500));
    EXPECT_EQ(Coupling(2), Zeros);
}

TEST_F(ParameterFiles, EmptyRecordFilesGiveZeros) {
    EXPECT_EQ(ReadFiles(TwoTypes, "", "\n \n"), "");
    for (int entry = 0; entry < 4; ++entry) {
        EXPECT_EQ(Shielding(entry), Zeros);
        EXPECT_EQ(Coupling(entry), Zeros);
    }
}

TEST_F(ParameterFiles, HeadingAndRestOfALineAreNotRead) {
    EXPECT_EQ(NamesOf("H 1\nC 12 tetrahedral\n\t o\t16\n"), std::vector<std::string>({"C", "O"}));
    EXPECT_EQ(NamesOf("\nC 12\n"), std::vector<std::string>({"C"}));
    EXPECT_EQ(NamesOf("heading\nC 12"), std::vector<std::string>({"C"}));
    EXPECT_EQ(NamesOf("heading\r\nC 12\r\nH 1\r\n"), std::vector<std::string>({"C", "H"}));
}

// On purpose a blank line counts as a type, and where it comes it ends the list of names.
TEST_F(ParameterFiles, BlankLinesAreCounted) {
    EXPECT_EQ(NamesOf("h\nH 1\n\n\n"), std::vector<std::string>({"H", "", ""}));
    EXPECT_EQ(NamesOf("h\nH 1\n\nC 12\n"), std::vector<std::string>({"H", "", ""}));
    EXPECT_EQ(NamesOf("h\n\nC 12\n"), std::vector<std::string>({"", ""}));
}

// On purpose a comment isn't counted as a type but ends the list of names.
TEST_F(ParameterFiles, CommentEndsTheNames) {
    EXPECT_EQ(NamesOf("h\nH 1\n; comment\nC 12\n"), std::vector<std::string>({"H", ""}));
    EXPECT_EQ(NamesOf("h\nH 1\nC 12\n; comment\n"), std::vector<std::string>({"H", "C"}));
    EXPECT_EQ(NamesOf("h\nH 1\n;X 5\nC 12\nO 16\n"), std::vector<std::string>({"H", ";X", "C"}));
    EXPECT_EQ(NamesOf("h\nH 1\n ; not at the beginning\nC 12\n"), std::vector<std::string>({"H", "", ""}));
    EXPECT_EQ(NamesOf("h\nH 1\n"), std::vector<std::string>({"H"}));
}

TEST_F(ParameterFiles, CommentInPlaceOfTheHeading) {
    // The comment isn't counted, but skipped as the heading: the count is one short of the types.
    EXPECT_EQ(NamesOf("; comment\nH 1\nC 12\n"), std::vector<std::string>({"H"}));
}

// A name is cut to three characters, and the number is looked for directly behind them.
TEST_F(ParameterFiles, NamesOfMoreThanThreeCharacters) {
    EXPECT_EQ(NamesOf("h\nABC12 x\nH 1\n"), std::vector<std::string>({"ABC", "H"}));
    EXPECT_EQ(NamesOf("h\nH 1\nABCD 12\nC 12\n"), std::vector<std::string>({"H", "", ""}));
    EXPECT_EQ(NamesOf("h\nABC-5\n"), std::vector<std::string>({"ABC"}));
}

TEST_F(ParameterFiles, NameWithoutANumberEndsTheNames) {
    EXPECT_EQ(NamesOf("h\nH\nC 12\n"), std::vector<std::string>({"", ""}));
    EXPECT_EQ(NamesOf("h\nH 1\nC x\nO 16\n"), std::vector<std::string>({"H", "", ""}));
}

// Counting takes lines of 127 characters, the names come from lines of 255.
TEST_F(ParameterFiles, LongLinesOfTypesAreCountedInPieces) {
    const std::string line = "H 1" + std::string(297, ' ');
    EXPECT_EQ(NamesOf("h\n" + line + "\n"), std::vector<std::string>({"H", "", ""}));
    EXPECT_EQ(NamesOf("h\nH 1" + std::string(124, ' ') + ";" + std::string(20, 'x') + "\n"),
              std::vector<std::string>({"H"}));  // the second piece begins like a comment
    EXPECT_EQ(NamesOf("h\nH 1" + std::string(123, ' ') + "\n"), std::vector<std::string>({"H"}));
    EXPECT_EQ(NamesOf("h\nH 1" + std::string(124, ' ') + "\nC 12\n"),
              std::vector<std::string>({"H", "C", ""}));  // the newline is a piece of its own
    EXPECT_EQ(NamesOf("h\nH 1" + std::string(252, ' ') + "C 12\n"), std::vector<std::string>({"H", "C", ""}));
}

TEST_F(ParameterFiles, NoTypes) {
    const std::string text = "ERRMSG: The atom types are not defined in <PARAMETERS>\\nmrtype.txt.\n";
    EXPECT_EQ(ReadFiles("", "", ""), text);
    EXPECT_EQ(ReadFiles("heading\n", "", ""), text);
    EXPECT_EQ(ReadFiles("heading\n; H 1\n;\n", "", ""), text);
    EXPECT_EQ(ReadFiles("; heading\nH 1\n", "", ""), text);  // the one line that counts is taken for the heading
    EXPECT_EQ(ReadFiles("heading\n\n", "", ""), "");
}

TEST_F(ParameterFiles, FilesThatCannotBeOpened) {
    for (const std::string name : {"nmrtype.txt", "nmr_shft.abp", "nmr_cupl.abp"}) {
        TemporaryDirectory directory;
        WriteText(directory.Path + "/nmrtype.txt", TwoTypes);
        WriteText(directory.Path + "/nmr_shft.abp", "");
        WriteText(directory.Path + "/nmr_cupl.abp", "");
        const std::string text = "ERRMSG: Trouble has been occured when openning <PARAMETERS>\\" + name + ".\n";
        std::filesystem::remove(directory.Path + "/" + name);
        EXPECT_EQ(ReadFilesOf(directory.Path), text);
        std::filesystem::create_directory(directory.Path + "/" + name);
        EXPECT_EQ(ReadFilesOf(directory.Path), text);
    }
}

TEST_F(ParameterFiles, EmptyDirectory) {
    for (const std::string field : {"", "\\"}) {
        TemporaryDirectory work;
        EXPECT_EQ(ExitCodeOfChild([&] {
                      std::string directory = field;
                      UseFilesIn(work.Path);
                      ::Run.Job.ParameterDirectory = directory.data();
                      ReadParameterFiles();
                  }),
                  0);
        EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"),
                  "ERRMSG: Trouble has been occured when openning " + field + "nmrtype.txt.\n");
    }
}

// The types are tested before the other files are looked for.
TEST_F(ParameterFiles, OrderOfRefusals) {
    TemporaryDirectory directory;
    WriteText(directory.Path + "/nmrtype.txt", "heading\n");
    EXPECT_EQ(ReadFilesOf(directory.Path), "ERRMSG: The atom types are not defined in <PARAMETERS>\\nmrtype.txt.\n");
    WriteText(directory.Path + "/nmrtype.txt", TwoTypes);
    EXPECT_EQ(ReadFilesOf(directory.Path),
              "ERRMSG: Trouble has been occured when openning <PARAMETERS>\\nmr_shft.abp.\n");
}

TEST_F(ParameterFiles, SecondReadingReplacesTheFirst) {
    EXPECT_EQ(ReadFiles(TwoTypes, Record("C", 100), Record("C", 200)), "");
    EXPECT_EQ(ReadFiles("h\nO 16\n", Record("-O", 300), ""), "");
    EXPECT_EQ(Names(), std::vector<std::string>({"O"}));
    EXPECT_EQ(Shielding(0), Zeros);
    EXPECT_EQ(Shielding(1), FieldsOfRecord(300));
    EXPECT_EQ(Coupling(1), Zeros);
}
