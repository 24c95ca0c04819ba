// SPDX-License-Identifier: MIT
// The keyed options: which lines a key takes, what each kind of value gives, and the defaults.
#include "files/option_keys.h"
#include "ground/run_state.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <climits>

class OptionKeys : public testing::Test {
protected:
    void SetUp() override { ResetRun(); }
    void TearDown() override { ResetRun(); }
};

// True if the line was taken; a line that was taken must be cleared, another one left alone.
static bool Offer(const std::string& text) {
    std::string line = text;
    const bool taken = ReadOption(line.data());
    EXPECT_EQ(std::string(line.c_str()), taken ? "" : text);
    return taken;
}

TEST_F(OptionKeys, PlaceOfTheValue) {
    const auto match = [](const char* line) {
        const char* value = MatchOptionKey(line, "Key");
        return value == nullptr ? "(nothing)" : std::string(value);
    };
    EXPECT_EQ(match("Key=5"), "5");
    EXPECT_EQ(match(" \t Key \t = \t 5 6"), "5 6");
    EXPECT_EQ(match("Key="), "");
    EXPECT_EQ(match("Key =  "), "");
    EXPECT_EQ(match("Key == 5"), "= 5");
    EXPECT_EQ(match("key = 5"), "(nothing)");
    EXPECT_EQ(match("KEY = 5"), "(nothing)");
    EXPECT_EQ(match("Keys = 5"), "(nothing)");
    EXPECT_EQ(match("aKey = 5"), "(nothing)");
    EXPECT_EQ(match("Key 5"), "(nothing)");
    EXPECT_EQ(match("Key : = 5"), "(nothing)");
    EXPECT_EQ(match("Key"), "(nothing)");
    EXPECT_EQ(match("Ke"), "(nothing)");
    EXPECT_EQ(match(""), "(nothing)");
}

static const struct {
    const char* Key;
    int RunOptions::*Field;
} BooleanOptions[] = {
    {"SCFAccelerateConvergence", &RunOptions::SCFAccelerateConvergence},
    {"ResponseAcceleration", &RunOptions::ResponseAcceleration},
    {"ModifySlaterExponents", &RunOptions::ModifySlaterExponents},
    {"ComputeThreeCenterTerms", &RunOptions::ComputeThreeCenterTerms},
    {"IncludeDOrbitalsForSecondRow", &RunOptions::IncludeDOrbitalsForSecondRow},
    {"CalculateShielding", &RunOptions::CalculateShielding},
    {"CalculateCoupling", &RunOptions::CalculateCoupling},
    {"CalculateSpectra", &RunOptions::CalculateSpectra},
    {"CalculateShieldTensor", &RunOptions::CalculateShieldTensor},
};

TEST_F(OptionKeys, BooleanValues) {
    for (const auto& option : BooleanOptions) {
        const std::string key = std::string(option.Key) + " = ";
        for (const char* word : {"1", "yes", "y", "true", "t", "YES", "Y", "TRUE", "T", "yEs"}) {
            ::Run.Options.*option.Field = 7;
            EXPECT_TRUE(Offer(key + word));
            EXPECT_EQ(::Run.Options.*option.Field, 1) << key << word;
        }
        for (const char* word : {"0", "no", "n", "false", "f", "NO", "N", "FALSE", "F", "fAlse"}) {
            ::Run.Options.*option.Field = 7;
            EXPECT_TRUE(Offer(key + word));
            EXPECT_EQ(::Run.Options.*option.Field, 0) << key << word;
        }
        for (const char* word : {"", "2", "01", "on", "off", "yes!", "yes no", "1 ", "y;", "-1"}) {
            ::Run.Options.*option.Field = 7;
            EXPECT_TRUE(Offer(key + word));
            EXPECT_EQ(::Run.Options.*option.Field, 7) << key << word;  // without a word
        }
    }
}

// An unknown method is taken silently, and the method stays.
TEST_F(OptionKeys, Methods) {
    for (const char* word : {"1", "c", "cndo", "tndo1", "C", "CNDO", "TNDO1"}) {
        ::Run.Options.SemiEmpiricalMethod = 7;
        EXPECT_TRUE(Offer(std::string("SemiEmpiricalMethod=") + word));
        EXPECT_EQ(::Run.Options.SemiEmpiricalMethod, 1) << word;
    }
    for (const char* word : {"2", "i", "indo", "tndo2", "I", "INDO", "TNDO2"}) {
        ::Run.Options.SemiEmpiricalMethod = 7;
        EXPECT_TRUE(Offer(std::string("SemiEmpiricalMethod=") + word));
        EXPECT_EQ(::Run.Options.SemiEmpiricalMethod, 2) << word;
    }
    for (const char* word : {"", "3", "tndo3", "tndo", "tndo/1", "12", "1.0", "cn"}) {
        ::Run.Options.SemiEmpiricalMethod = 7;
        EXPECT_TRUE(Offer(std::string("SemiEmpiricalMethod=") + word));
        EXPECT_EQ(::Run.Options.SemiEmpiricalMethod, 7) << word;
    }
}

TEST_F(OptionKeys, IntegerValues) {
    static const struct {
        const char* Key;
        int RunOptions::*Field;
    } options[] = {
        {"TotalCharge", &RunOptions::TotalCharge},
        {"SpinMultiplicity", &RunOptions::SpinMultiplicity},
        {"SCFIterationLimit", &RunOptions::SCFIterationLimit},
        {"LogPrintLevel", &RunOptions::LogPrintLevel},
    };
    static const struct {
        const char* Value;
        int Number;
    } values[] = {{"5", 5},
                  {"-3", -3},
                  {"+4", 4},
                  {"40x", 40},
                  {"1.9", 1},
                  {"007", 7},
                  {"0x10", 0},
                  {"abc", 0},
                  {"", 0},
                  {"- 3", 0},
                  {"2147483647", INT_MAX},
                  {"2147483648", INT_MAX},
                  {"-99999999999999999999", INT_MIN}};
    for (const auto& option : options) {
        for (const auto& value : values) {
            ::Run.Options.*option.Field = 77;
            EXPECT_TRUE(Offer(std::string(option.Key) + " = " + value.Value));
            EXPECT_EQ(::Run.Options.*option.Field, value.Number) << option.Key << value.Value;
        }
    }
}

// Each value is the decimal number nearest to its leading characters, as the compiler reads it: no tolerance.
TEST_F(OptionKeys, RealValues) {
    static const struct {
        const char* Value;
        double Number;
    } values[] = {{"0.1", 0.1},   {"-2.5", -2.5}, {"+.5", 0.5}, {"1e-3", 1e-3}, {"1E2", 100.0}, {"300", 300.0},
                  {"5 MHz", 5.0}, {"1e", 1.0},    {"1d5", 1.0}, {"", 0.0},      {"x1", 0.0},    {"inf", 0.0},
                  {"nan", 0.0},   {"0x10", 0.0},  {".", 0.0},   {"-", 0.0},     {"1e999", 0.0}, {"-0X1p4", 0.0}};
    for (const auto& value : values) {
        ::Run.Options.FinitePerturbation = ::Run.Options.NMRFrequency = 77.0;
        EXPECT_TRUE(Offer(std::string("FinitePerturbation = ") + value.Value));
        EXPECT_TRUE(Offer(std::string("NMRFrequency = ") + value.Value));
        EXPECT_EQ(::Run.Options.FinitePerturbation, value.Number) << value.Value;
        EXPECT_EQ(::Run.Options.NMRFrequency, value.Number) << value.Value;
    }
}

TEST_F(OptionKeys, ConvergenceLimitIsKeptIn32Bits) {
    EXPECT_TRUE(Offer("SCFConvergenceLimit = 0.1"));
    EXPECT_EQ(::Run.Options.SCFConvergenceLimit, 0.1f);
    EXPECT_TRUE(Offer("SCFConvergenceLimit = 0.02 kcal"));
    EXPECT_EQ(::Run.Options.SCFConvergenceLimit, 0.02f);
    EXPECT_TRUE(Offer("SCFConvergenceLimit = -1"));  // no bound is tested
    EXPECT_EQ(::Run.Options.SCFConvergenceLimit, -1.0f);
    EXPECT_TRUE(Offer("SCFConvergenceLimit = abc"));
    EXPECT_EQ(::Run.Options.SCFConvergenceLimit, 0.0f);
}

TEST_F(OptionKeys, LaterKeyWins) {
    EXPECT_TRUE(Offer("TotalCharge = 1"));
    EXPECT_TRUE(Offer("TotalCharge = 2"));
    EXPECT_EQ(::Run.Options.TotalCharge, 2);
    EXPECT_TRUE(Offer("SemiEmpiricalMethod = 2"));
    EXPECT_TRUE(Offer("SemiEmpiricalMethod = tndo3"));
    EXPECT_EQ(::Run.Options.SemiEmpiricalMethod, 2);
}

TEST_F(OptionKeys, OtherLinesAreLeftAlone) {
    for (const char* line :
         {"totalcharge = 1", "TOTALCHARGE = 1", "Total Charge = 1", "TotalCharge 1", "TotalCharges = 1",
          "CalculateShieldings = no", "UnrestrictedWavefunction = 1", "= 1", "", "; TotalCharge = 1"}) {
        EXPECT_FALSE(Offer(line)) << line;
    }
    EXPECT_EQ(::Run.Options.TotalCharge, 0);
    EXPECT_TRUE(Offer(" \t TotalCharge = 1"));
    EXPECT_EQ(::Run.Options.TotalCharge, 1);
}

// CalculateShield... and SCF... share beginnings: each key sets its own field only.
TEST_F(OptionKeys, KeysWithTheSameBeginning) {
    EXPECT_TRUE(Offer("CalculateShieldTensor = yes"));
    EXPECT_EQ(::Run.Options.CalculateShieldTensor, 1);
    EXPECT_EQ(::Run.Options.CalculateShielding, 0);
    EXPECT_TRUE(Offer("CalculateShielding = yes"));
    EXPECT_TRUE(Offer("CalculateShieldTensor = no"));
    EXPECT_EQ(::Run.Options.CalculateShieldTensor, 0);
    EXPECT_EQ(::Run.Options.CalculateShielding, 1);
}

TEST_F(OptionKeys, Defaults) {
    ::Run.Options.TotalCharge = ::Run.Options.SCFAccelerateConvergence = ::Run.Options.LogPrintLevel =
        ::Run.Options.ModifySlaterExponents = ::Run.Options.ResponseAcceleration = 5;
    ::Run.Options.ComputeThreeCenterTerms = ::Run.Options.IncludeDOrbitalsForSecondRow =
        ::Run.Options.CalculateSpectra = 5;
    ::Run.Options.UnrestrictedWavefunction = ::Run.Options.NextLowestState = ::Run.Options.GeometryRun = 5;
    SetDefaultOptions();
    EXPECT_EQ(::Run.Options.SemiEmpiricalMethod, 1);
    EXPECT_EQ(::Run.Options.TotalCharge, 0);
    EXPECT_EQ(::Run.Options.SpinMultiplicity, 1);
    EXPECT_EQ(::Run.Options.SCFConvergenceLimit, 0.01f);
    EXPECT_EQ(::Run.Options.SCFIterationLimit, 50);
    EXPECT_EQ(::Run.Options.SCFAccelerateConvergence, 0);
    EXPECT_EQ(::Run.Options.ResponseAcceleration, 0);
    EXPECT_EQ(::Run.Options.LogPrintLevel, 0);
    EXPECT_EQ(::Run.Options.ModifySlaterExponents, 0);
    EXPECT_EQ(::Run.Options.ComputeThreeCenterTerms, 0);
    EXPECT_EQ(::Run.Options.IncludeDOrbitalsForSecondRow, 0);
    EXPECT_EQ(::Run.Options.FinitePerturbation, 0.001);
    EXPECT_EQ(::Run.Options.CalculateShielding, 1);
    EXPECT_EQ(::Run.Options.CalculateCoupling, 1);
    EXPECT_EQ(::Run.Options.CalculateSpectra, 0);
    EXPECT_EQ(::Run.Options.UnrestrictedWavefunction, 0);
    EXPECT_EQ(::Run.Options.NextLowestState, 0);
    EXPECT_EQ(::Run.Options.GeometryRun, 0);
}

// On purpose these have no default: they are what they were, 0 at process start.
TEST_F(OptionKeys, OptionsWithoutADefault) {
    SetDefaultOptions();
    EXPECT_EQ(::Run.Options.NMRFrequency, 0.0);
    EXPECT_EQ(::Run.Options.CalculateShieldTensor, 0);
    ::Run.Options.NMRFrequency = 5.0;
    ::Run.Options.CalculateShieldTensor = ::Run.Options.ConfigurationInteraction = ::Run.Options.RestraintsPresent = 1;
    SetDefaultOptions();
    EXPECT_EQ(::Run.Options.NMRFrequency, 5.0);
    EXPECT_EQ(::Run.Options.CalculateShieldTensor, 1);
    EXPECT_EQ(::Run.Options.ConfigurationInteraction, 1);
    EXPECT_EQ(::Run.Options.RestraintsPresent, 1);
}
