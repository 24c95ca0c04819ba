// SPDX-License-Identifier: MIT
// Lines and numbers of input files, by the rules of fgets and scanf.
#include "files/text_scan.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

static std::FILE* Opened(std::string& text) {
    return fmemopen(text.data(), text.size(), "r");
}

static std::string Rest(std::FILE* file) {
    std::string rest;
    for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) {
        rest += static_cast<char>(c);
    }
    std::fclose(file);
    return rest;
}

// How many of three numbers of a row can be read.
static int RealsByScan(const char* text) {
    int count = 0;
    double value;
    while (count < 3 && ScanReal(text, &value)) {
        ++count;
    }
    return count;
}

TEST(TextScan, ReadsWholeLinesInPiecesOf511) {
    std::string text = std::string(511, 'a') + std::string(600, 'b') + "\nlast";
    std::FILE* file = Opened(text);
    char line[LineSize];
    ASSERT_TRUE(ReadLine(file, line));
    EXPECT_EQ(line, std::string(511, 'a'));
    ASSERT_TRUE(ReadLine(file, line));
    EXPECT_EQ(line, std::string(511, 'b'));
    ASSERT_TRUE(ReadLine(file, line));
    EXPECT_EQ(line, std::string(89, 'b') + "\n");
    ASSERT_TRUE(ReadLine(file, line));
    EXPECT_STREQ(line, "last");
    EXPECT_FALSE(ReadLine(file, line));
    std::fclose(file);
}

TEST(TextScan, ReadsLinesOfASmallerRoom) {
    std::string text = "abcdefg\nhi";
    std::FILE* file = Opened(text);
    char line[5];
    ASSERT_TRUE(ReadLine(file, line, sizeof line));
    EXPECT_STREQ(line, "abcd");
    ASSERT_TRUE(ReadLine(file, line, sizeof line));
    EXPECT_STREQ(line, "efg\n");
    EXPECT_EQ(Rest(file), "hi");
}

TEST(TextScan, ReadsWordsOfAnyLength) {
    std::string text = " \n\tabcdef  " + std::string(10000, 'x') + "\nlast";
    std::FILE* file = Opened(text);
    char word[4];
    ASSERT_TRUE(ReadWord(file, 3, word));
    EXPECT_STREQ(word, "abc");
    ASSERT_TRUE(ReadWord(file, 0, word));
    EXPECT_STREQ(word, "");
    ASSERT_TRUE(ReadWord(file, 3, word));
    EXPECT_STREQ(word, "las");
    EXPECT_FALSE(ReadWord(file, 3, word));
    EXPECT_STREQ(word, "");
    std::fclose(file);
}

// A line of exactly 511 characters leaves its newline behind, which is read as a line of its own.
TEST(TextScan, LineOf511LeavesItsNewline) {
    std::string text = std::string(511, 'a') + "\nnext\n";
    std::FILE* file = Opened(text);
    char line[LineSize];
    ASSERT_TRUE(ReadLine(file, line));
    ASSERT_TRUE(ReadLine(file, line));
    EXPECT_STREQ(line, "\n");
    EXPECT_EQ(Rest(file), "next\n");
}

TEST(TextScan, ScansIntegers) {
    const char* text = " 12\t-3 +4x";
    int value = 0;
    EXPECT_TRUE(ScanInteger(text, &value));
    EXPECT_EQ(value, 12);
    EXPECT_TRUE(ScanInteger(text, &value));
    EXPECT_EQ(value, -3);
    EXPECT_TRUE(ScanInteger(text, &value));
    EXPECT_EQ(value, 4);
    EXPECT_FALSE(ScanInteger(text, &value));
    EXPECT_STREQ(text, "x");
    EXPECT_EQ(value, 4);
}

TEST(TextScan, IntegersSaturate) {
    const char* text = "2147483648 -99999999999999999999 4294967298";
    int value = 0;
    EXPECT_TRUE(ScanInteger(text, &value));
    EXPECT_EQ(value, INT_MAX);
    EXPECT_TRUE(ScanInteger(text, &value));
    EXPECT_EQ(value, INT_MIN);
    EXPECT_TRUE(ScanInteger(text, &value));
    EXPECT_EQ(value, INT_MAX);
}

TEST(TextScan, IntegerStopsAtAFraction) {
    const char* text = "1.5";
    int value = 0;
    EXPECT_TRUE(ScanInteger(text, &value));
    EXPECT_EQ(value, 1);
    EXPECT_FALSE(ScanInteger(text, &value));
    EXPECT_STREQ(text, ".5");
}

struct RowCase {
    const char* Text;
    int Count;  // of three reals
};

// By the C standard's rule for "%lf": the longest text that is a number or the beginning of one is taken, and
// fails if it isn't whole, as "1e" and "0x". A letter that can't continue a number ends it: the "x" of "3x"
// isn't looked at. Some C libraries take "1e" for 1; the program doesn't follow them, so that a file reads
// the same everywhere.
TEST(TextScan, CountsRealsByTheStandardsRule) {
    static constexpr RowCase Cases[] = {
        {"1 2 3", 3},   {"1,2,3", 1},     {"1.5.5 2", 3}, {"-.5 +.5 5.", 3}, {"1e2 1E-2 1e+2", 3},
        {"1e", 0},      {"1e 2", 0},      {"1e+", 0},     {"2 x", 1},        {"0x10 1", 2},
        {"0x", 0},      {"1d2", 1},       {"1 2 3x", 3},  {"1 2 7x", 3},     {"1 2 0.5x", 3},
        {"1 2 00x", 3}, {"1 2 0.5X", 3},  {"1-2-3", 3},   {"-", 0},          {"+", 0},
        {".", 0},       {"", 0},          {" ", 0},       {"1 2 3f", 3},     {"--1", 0},
        {"1 . 2", 1},   {"0x1p3 1 1", 3}, {"1 2 3e", 2},  {"\t1\r\n2", 2},   {"1 2 0x", 2}};
    for (const RowCase& one : Cases) {
        EXPECT_EQ(RealsByScan(one.Text), one.Count) << "[" << one.Text << "]";
    }
}

TEST(TextScan, RealsMustBeFinite) {
    for (const char* text : {"nan", "inf", "-inf", "infinity", "1e999", "-1e999"}) {
        double value = 7.0;
        EXPECT_FALSE(ScanReal(text, &value)) << text;
        EXPECT_EQ(value, 7.0) << text;
    }
}

// "%ld\n" and "%lf\n" skip white space and empty lines on both sides, so that a blank heading behind them
// vanishes.
TEST(TextScan, NumberOnItsLineSwallowsBlankLines) {
    std::string text = "\n\n  7 \r\n \n\t\nheading\n";
    std::FILE* file = Opened(text);
    int value = 0;
    EXPECT_TRUE(ReadInteger(file, &value));
    EXPECT_EQ(value, 7);
    EXPECT_EQ(Rest(file), "heading\n");
    text = "\n 1e-3\n\nheading\n";
    file = Opened(text);
    double real = 0.0;
    EXPECT_TRUE(ReadReal(file, &real));
    EXPECT_EQ(real, 1e-3);
    EXPECT_EQ(Rest(file), "heading\n");
}

TEST(TextScan, NumberOnItsLineLeavesWhatFollows) {
    std::string text = "100.5\nheading\n";
    std::FILE* file = Opened(text);
    int value = 0;
    EXPECT_TRUE(ReadInteger(file, &value));
    EXPECT_EQ(value, 100);
    EXPECT_EQ(Rest(file), ".5\nheading\n");
}

TEST(TextScan, NumberOnItsLineSaturatesOrFails) {
    std::string text = "99999999999999999999999\n";
    std::FILE* file = Opened(text);
    int value = 0;
    EXPECT_TRUE(ReadInteger(file, &value));
    EXPECT_EQ(value, INT_MAX);
    std::fclose(file);
    for (std::string bad : {"x\n", "-\n", " \n", ".5\n"}) {
        file = Opened(bad);
        EXPECT_FALSE(ReadInteger(file, &value)) << bad;
        std::fclose(file);
    }
    // the last one is 0.000...01, longer than any number that is read
    for (std::string bad :
         {std::string("nan\n"), std::string("1e999\n"), std::string("1e\n"), std::string("inf\n"), std::string(" \n"),
          std::string("-\n"), std::string("x\n"), "0." + std::string(700, '0') + "1\n"}) {
        double real = 7.0;
        file = Opened(bad);
        EXPECT_FALSE(ReadReal(file, &real)) << bad;
        EXPECT_EQ(real, 7.0) << bad;
        std::fclose(file);
    }
}
