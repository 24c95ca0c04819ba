// SPDX-License-Identifier: MIT
// The reader of nmrspect.in within the process: what it stores, its limits, damaged streams. Refusals in
// their own words are whole runs (cases/spectrum/).
#include "files/run_input.h"
#include "files/spectrum_input.h"
#include "numerics/factorial.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <cstring>

// The lines of a system of two groups, to be changed one by one; line[k] is that of step k + 1.
static std::vector<std::string> TwoGroups() {
    return {"title", "2", "1 19 3 2", "h4", "300", "h6", "1.5 -2.25", "h8", "0 7", "99 0", "h11", "0.5", "h13", "0"};
}

static std::string Joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

// Reads a text; "" when it is taken, else the line in the output file. What was read stays in Run.
static std::string ReadInput(const std::string& text) {
    TemporaryDirectory work;
    const std::string path = work.Path + "/nmrspect.in";
    WriteText(path, text);
    const int exitCode = ExitCodeOfChild([&] {
        UseFilesIn(work.Path);
        ReadRunInput();
    });
    if (exitCode == 98) {
        UseFilesIn(work.Path);
        ReadRunInput();
        return "";
    }
    EXPECT_EQ(exitCode, 0);
    return Replaced(ReadText(work.Path + "/nmrspect.out"), path, "<INPUT>");
}

static std::string WithLine(std::size_t step, const std::string& line) {
    std::vector<std::string> lines = TwoGroups();
    lines[step - 1] = line;
    return ReadInput(Joined(lines));
}

static std::string Troubles(int step) {
    return "ERRMSG: Velkoran has met troubles at line " + std::to_string(step) +
           " when reading the input file <INPUT>.\n";
}

class SpectrumInput : public testing::Test {
protected:
    void SetUp() override { ResetRun(); }
    void TearDown() override { ResetRun(); }
};

TEST_F(SpectrumInput, FillsTheSpinSystem) {
    EXPECT_EQ(ReadInput(Joined(TwoGroups())), "");
    EXPECT_EQ(::Run.Spins.SpinGroupCount, 2);
    EXPECT_EQ(::Run.Spins.IsotopicNumbers[0], 1);
    EXPECT_EQ(::Run.Spins.IsotopicNumbers[1], 19);
    EXPECT_EQ(::Run.Spins.NucleiInGroup[0], 3);
    EXPECT_EQ(::Run.Spins.NucleiInGroup[1], 2);
    EXPECT_EQ(::Run.Options.NMRFrequency, 300.0);
    EXPECT_EQ(::Run.Spins.ChemicalShifts[0], 1.5);
    EXPECT_EQ(::Run.Spins.ChemicalShifts[1], -2.25);
    EXPECT_EQ(::Run.Spins.CouplingMatrix[1], 7.0);
    EXPECT_EQ(::Run.Spins.CouplingMatrix[2], 7.0);  // the upper triangle's, the file has 99
    EXPECT_EQ(::Run.Options.MinimalIntensity, 0.5);
    EXPECT_EQ(::Run.Options.UseWeakCoupling, 0);
    EXPECT_EQ(::Run.Options.CalculateSpectra, 1);
    EXPECT_EQ(::Run.Options.CalculateShielding, 0);
    EXPECT_EQ(::Run.Options.CalculateCoupling, 0);
    EXPECT_EQ(::Run.Options.LogPrintLevel, 0);
    EXPECT_EQ(::Run.Report.LogEnabled, 1);
    EXPECT_EQ(::Run.Job.ActiveRunKind, SpectrumRun);
    EXPECT_EQ(::Run.Report.ErrorFrameTop, nullptr);
}

TEST_F(SpectrumInput, MissingNumbersOfNucleiAreOne) {
    EXPECT_EQ(WithLine(3, "1 1"), "");
    EXPECT_EQ(::Run.Spins.NucleiInGroup[0], 1);
    EXPECT_EQ(::Run.Spins.NucleiInGroup[1], 1);
    EXPECT_EQ(WithLine(3, "1 1 4"), "");
    EXPECT_EQ(::Run.Spins.NucleiInGroup[0], 4);
    EXPECT_EQ(::Run.Spins.NucleiInGroup[1], 1);
    EXPECT_EQ(WithLine(3, "1 1 4 x 5"), "");
    EXPECT_EQ(::Run.Spins.NucleiInGroup[1], 1);
    EXPECT_EQ(WithLine(3, "1 1 x 5"), "");  // from the first that is missing on
    EXPECT_EQ(::Run.Spins.NucleiInGroup[0], 1);
    EXPECT_EQ(::Run.Spins.NucleiInGroup[1], 1);
    EXPECT_EQ(WithLine(3, "1"), Troubles(3));
}

TEST_F(SpectrumInput, SizesOfGroups) {
    EXPECT_EQ(WithLine(3, "1 1 0 0"), "");
    EXPECT_EQ(::Run.Spins.NucleiInGroup[0], 0);
    EXPECT_EQ(WithLine(3, "1 1 25 169"), "");
    EXPECT_EQ(::Run.Spins.NucleiInGroup[1], LargestGroup);
    EXPECT_EQ(WithLine(3, "1 1 1 170"), Troubles(3));
    EXPECT_EQ(WithLine(3, "1 1 -1 1"), Troubles(3));
    EXPECT_EQ(WithLine(3, "-7 2147483647 1 1"), "");  // isotopes are compared for equality only
}

// On purpose the warning-like text ends the run.
TEST_F(SpectrumInput, SmallMinimalIntensities) {
    const std::string text = " you have set may be too small\n";
    EXPECT_EQ(WithLine(12, "1e-08"), "ERRMSG: The minimal inetensity (1.000000e-08)" + text);
    EXPECT_EQ(WithLine(12, "1.1e-08"), "");
    EXPECT_EQ(WithLine(12, "1.0000001e-08"), "");
    EXPECT_EQ(WithLine(12, "-1"), "ERRMSG: The minimal inetensity (-1.000000e+00)" + text);
    EXPECT_EQ(WithLine(12, "0"), "ERRMSG: The minimal inetensity (0.000000e+00)" + text);
    EXPECT_EQ(WithLine(12, "1e999"), Troubles(12));
    EXPECT_EQ(WithLine(12, "nan"), Troubles(12));
}

// It is refused at the moment of reading: what follows in the file doesn't matter any more.
TEST_F(SpectrumInput, ValuesAreTestedAsTheyAreRead) {
    std::vector<std::string> lines = TwoGroups();
    lines.resize(12);
    lines[11] = "0";
    EXPECT_NE(ReadInput(Joined(lines)).find("inetensity"), std::string::npos);
    lines = TwoGroups();
    lines.resize(5);
    lines[4] = "0";
    EXPECT_EQ(ReadInput(Joined(lines)),
              "ERRMSG: The spectrometer frequency in the input file <INPUT> cann't be equal to zero.\n");
    lines.resize(2);
    lines[1] = "-4";
    EXPECT_EQ(ReadInput(Joined(lines)),
              "ERRMSG: The number of NMR atoms (=-4 in the input file <INPUT>) cann't be less "
              "than or equal to zero.\n");
}

TEST_F(SpectrumInput, RowsNeedAllTheirNumbers) {
    EXPECT_EQ(WithLine(7, "1.5"), Troubles(7));
    EXPECT_EQ(WithLine(9, "0"), Troubles(9));
    EXPECT_EQ(WithLine(10, "0"), Troubles(10));  // although nothing of this row counts
    EXPECT_EQ(WithLine(10, ""), Troubles(10));
    EXPECT_EQ(WithLine(10, "0 0 and more"), "");
    EXPECT_EQ(WithLine(7, "1e16 0"), Troubles(7));
    EXPECT_EQ(WithLine(7, "8.9e15 0"), "");
    EXPECT_EQ(WithLine(9, "0 nan"), Troubles(9));
    EXPECT_EQ(WithLine(7, "1.5 2.5x"), "");  // the row's numbers are there, and the rest isn't looked at
}

// A line of 511 characters leaves its newline, a line of 512 its last character and newline, to the next
// step.
TEST_F(SpectrumInput, LongLinesAreReadInPieces) {
    const std::string padded = "1 1 1 1" + std::string(503, ' ');  // 510 characters
    EXPECT_EQ(WithLine(3, padded), "");
    EXPECT_EQ(WithLine(3, padded + " "), Troubles(5));  // step 4 gets the newline, step 5 the heading
    EXPECT_EQ(WithLine(1, std::string(510, 't')), "");
    EXPECT_EQ(WithLine(1, std::string(511, 't')), "");  // "%ld" skips the newline that is left
    EXPECT_EQ(WithLine(1, std::string(512, 't')), Troubles(2));
}

TEST_F(SpectrumInput, WhitespaceBehindNumbersSwallowsABlankHeading) {
    EXPECT_EQ(WithLine(5, "300\n\n\n"), "");
    EXPECT_EQ(WithLine(6, ""),
              Troubles(7));          // the blank heading vanishes, step 6 gets the shifts, step 7 the heading
    EXPECT_EQ(WithLine(4, ""), "");  // behind a whole line a blank heading stays
    EXPECT_EQ(WithLine(1, ""), "");
}

TEST_F(SpectrumInput, WholeNumbersStopAtTheirFraction) {
    EXPECT_EQ(WithLine(5, "300.7"),
              Troubles(7));  // ".7" is taken for the heading, and the heading for the shifts
    EXPECT_EQ(WithLine(14, "1.7"), "");
    EXPECT_EQ(::Run.Options.UseWeakCoupling, 1);
    EXPECT_EQ(WithLine(14, "-3"), "");
    EXPECT_EQ(::Run.Options.UseWeakCoupling, -3);
    EXPECT_EQ(WithLine(5, "-300"), "");
    EXPECT_EQ(::Run.Options.NMRFrequency, -300.0);
    EXPECT_EQ(WithLine(5, "99999999999"), "");
    EXPECT_EQ(::Run.Options.NMRFrequency, 2147483647.0);
}

static std::string ReadDamagedInput(const std::string& text) {
    TemporaryDirectory work;
    ExitCodeOfChild([&] {
        UseFilesIn(work.Path);
        DamagedStream stream = {text};
        ReadSpectrumInput(stream.Open());
    });
    return Replaced(ReadText(work.Path + "/nmrspect.out"), work.Path + "/nmrspect.in", "<INPUT>");
}

TEST_F(SpectrumInput, ReadErrorBehindTheLastStepIsFatal) {
    EXPECT_EQ(ReadDamagedInput(Joined(TwoGroups())),
              "ERRMSG: Velkoran has met troubles when reading the input from thr input file <INPUT>.\n");
}

TEST_F(SpectrumInput, ReadErrorWithinAStepFailsTheStep) {
    EXPECT_EQ(ReadDamagedInput("title\n2\n1 1\n"), Troubles(4));
}

TEST_F(SpectrumInput, SecondReadingReplacesTheFirst) {
    EXPECT_EQ(ReadInput(Joined(TwoGroups())), "");
    EXPECT_EQ(ReadInput("title\n1\n13\nh\n75\nh\n9\nh\n0\nh\n1\nh\n1\n"), "");
    EXPECT_EQ(::Run.Spins.SpinGroupCount, 1);
    EXPECT_EQ(::Run.Spins.IsotopicNumbers[0], 13);
    EXPECT_EQ(::Run.Options.UseWeakCoupling, 1);
}
