// SPDX-License-Identifier: MIT
// The result file and the listing of a spectrum.
#include "files/result_writer.h"
#include "spectrum/compute_spectrum.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <random>

static constexpr char Head[] = "This is a comment line.\n";
static constexpr char Labels[] = "FREQUNCY INTENSITY DEGENERACY LINEWIDTH\n";  // on purpose as it is spelled

static std::string Written(const std::vector<SpectrumLine>& lines) {
    TemporaryDirectory work;
    UseFilesIn(work.Path);
    ::Run.Options.CalculateSpectra = 1;
    LoadLines(lines);
    ::Run.Lines.SpectrumLineCount = static_cast<int>(lines.size());
    WriteResults();
    EXPECT_EQ(::Run.Lines.SpectrumLines, nullptr);
    const std::string text = ReadText(work.Path + "/nmrspect.out");
    ResetRun();
    return text;
}

TEST(ResultWriter, WritesTheSpectrumSectionAlone) {
    EXPECT_EQ(Written({{60.1874f, 5.0125f, 2}, {-3.5f, 1e7f, 1234567}}),
              std::string(Head) + "2\n" + Labels + "60.187 5.012 2 0\n-3.500 10000000.000 1234567 0\n");
}

TEST(ResultWriter, EmptyListHasItsLabels) {
    EXPECT_EQ(Written({}), std::string(Head) + "0\n" + Labels);
}

// Property: every value prints as "%.3f" of the widened value. Set-up: random bit patterns of all magnitudes,
// ties, the ends of the range. The reference is the C library. Exact.
TEST(ResultWriter, PrintsAsTheCLibraryDoes) {
    std::vector<float> values = {0.0f,     -0.0f,      -0.0001f,  0.0005f, 0.0625f,  0.1875f, -0.3125f,
                                 0.4375f,  0.9996f,    999.9996f, 1e12f,   8.9e12f,  9.1e12f, 3.4e38f,
                                 -3.4e38f, 16777216.f, 1e-45f,    0.5f,    -0.0005f, 2.0625f, 123456.789f};
    values.push_back(std::numeric_limits<float>::infinity());
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i) {
        const std::uint32_t bits = static_cast<std::uint32_t>(random());
        float value;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isnan(value)) {
            values.push_back(value);
            values.push_back(static_cast<float>(static_cast<int>(bits % 2000001) - 1000000) * 0.0625f);
        }
    }
    std::vector<SpectrumLine> lines;
    std::string expected = Head + std::to_string(values.size()) + "\n" + Labels;
    for (const float value : values) {
        lines.push_back({value, -value, 3});
        char text[128];
        std::snprintf(text, sizeof text, "%.3f %.3f 3 0\n", static_cast<double>(value), static_cast<double>(-value));
        expected += text;
    }
    EXPECT_EQ(Written(lines), expected);
}

// What isn't a number has no sign in the result either.
TEST(ResultWriter, LinesThatAreNotFinite) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(Written({{nan, -nan, 1}, {-infinity, infinity, 2}}),
              std::string(Head) + "2\n" + Labels + "nan nan 1 0\n-inf inf 2 0\n");
}

TEST(ResultWriter, OutputThatCannotBeCreatedEndsTheRunSilently) {
    TemporaryDirectory work;
    std::filesystem::create_directory(work.Path + "/nmrspect.out");
    EXPECT_EQ(ExitCodeOfChild([&] {
                  UseFilesIn(work.Path);
                  WriteResults();
              }),
              0);
    EXPECT_TRUE(std::filesystem::is_empty(work.Path + "/nmrspect.out"));
}

static std::string Listed(int rows, int columns) {
    TemporaryDirectory work;
    UseFilesIn(work.Path);
    std::vector<double> values;
    for (int i = 0; i < rows * columns; ++i) {
        values.push_back(i);
    }
    ListTable(values.data(), rows, columns);
    const std::string text = ReadText(work.Path + "/run.log");
    ResetRun();
    return text;
}

static std::string Row(const std::vector<int>& values) {
    std::string row;
    for (const int value : values) {
        char text[40];
        std::snprintf(text, sizeof text, "  %11.6f", static_cast<double>(value));
        row += text;
    }
    return row + "\n";
}

TEST(ListTable, UpToFiveColumnsStandInOneBlock) {
    EXPECT_EQ(Listed(1, 1), "     0.000000\n");
    EXPECT_EQ(Listed(2, 2), Row({0, 1}) + Row({2, 3}));
    EXPECT_EQ(Listed(1, 3), Row({0, 1, 2}));
    EXPECT_EQ(Listed(1, 4), Row({0, 1, 2, 3}));
    EXPECT_EQ(Listed(1, 5), Row({0, 1, 2, 3, 4}));
}

// On purpose an empty line follows each full block of six, and only those.
TEST(ListTable, BlocksOfSixEndInAnEmptyLine) {
    EXPECT_EQ(Listed(1, 6), Row({0, 1, 2, 3, 4, 5}) + "\n");
    EXPECT_EQ(Listed(2, 8), Row({0, 1, 2, 3, 4, 5}) + Row({8, 9, 10, 11, 12, 13}) + "\n" + Row({6, 7}) + Row({14, 15}));
    EXPECT_EQ(Listed(1, 12), Row({0, 1, 2, 3, 4, 5}) + "\n" + Row({6, 7, 8, 9, 10, 11}) + "\n");
}

TEST(Listing, NothingIsListedWithoutALog) {
    TemporaryDirectory work;
    UseFilesIn(work.Path);
    ::Run.Report.LogEnabled = 0;
    Simulate(LikeSpins({1.0, 2.0}, {3.0}));
    EXPECT_TRUE(std::filesystem::is_empty(work.Path));
    ResetRun();
}
