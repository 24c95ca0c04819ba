// SPDX-License-Identifier: MIT
// The catalogue of texts, the loading with limits, and the filling-in of arguments.
#include "ground/message_catalogue.h"
#include "ground/platform.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

static constexpr int WarningLimit = 256;  // what warnings and fatal errors load
static constexpr int LogLimit = 400;      // what the log loads

static int NumberOf(Message id) {
    return static_cast<int>(id);
}

static std::string Expanded(Message id, const std::vector<MessageArgument>& arguments, int limit = LogLimit,
                            int size = 800) {
    std::vector<char> buffer(static_cast<std::size_t>(size) + 1, '#');
    ExpandCatalogueText(id, arguments.data(), limit, buffer.data(), size);
    EXPECT_EQ(buffer[static_cast<std::size_t>(size)], '#') << "written behind the buffer";
    return buffer.data();
}

static std::string Formatted(const char* text, const std::vector<MessageArgument>& arguments, int size = 200) {
    std::vector<char> buffer(static_cast<std::size_t>(size) + 1, '#');
    FormatMessageText(text, arguments.data(), buffer.data(), size);
    EXPECT_EQ(buffer[static_cast<std::size_t>(size)], '#') << "written behind the buffer";
    return buffer.data();
}

TEST(MessageCatalogue, Has198AscendingIds) {
    EXPECT_EQ(std::size(MessageCatalogue), 198u);
    for (std::size_t i = 1; i < std::size(MessageCatalogue); ++i) {
        EXPECT_LT(NumberOf(MessageCatalogue[i - 1].Id), NumberOf(MessageCatalogue[i].Id));
    }
}

TEST(MessageCatalogue, IdsLieInTheirGroups) {
    static constexpr int Groups[][2] = {{50, 50},       {4096, 4148},   {8192, 8546},
                                        {16384, 16435}, {24576, 24848}, {65280, 65297}};
    for (const CatalogueEntry& entry : MessageCatalogue) {
        const int number = NumberOf(entry.Id);
        bool found = false;
        for (const auto& group : Groups) {
            found = found || (number >= group[0] && number <= group[1]);
        }
        EXPECT_TRUE(found) << number;
    }
}

// On purpose two messages in use have no text: the empty line of the listings and the silent stop.
TEST(MessageCatalogue, EmptyLineAndSilentStopHaveNoText) {
    EXPECT_EQ(NumberOf(Message::EmptyLine), 8552);
    EXPECT_EQ(NumberOf(Message::SilentStop), 24834);
    EXPECT_EQ(CatalogueText(Message::EmptyLine), nullptr);
    EXPECT_EQ(CatalogueText(Message::SilentStop), nullptr);
    EXPECT_EQ(Expanded(Message::EmptyLine, {}), "");
    EXPECT_EQ(Expanded(Message::SilentStop, {}, WarningLimit, 400), "");
}

TEST(MessageCatalogue, EveryTextLoadsWholeWithinTheLimitsOfItsCallers) {
    for (const CatalogueEntry& entry : MessageCatalogue) {
        const bool isLogged = NumberOf(entry.Id) < 16384;
        const int limit = entry.Id == Message::AboutVelkoran ? 30 : isLogged ? LogLimit : WarningLimit;
        char buffer[LogLimit];
        EXPECT_EQ(LoadCatalogueText(entry.Id, buffer, limit), static_cast<int>(std::strlen(entry.Text)));
        EXPECT_STREQ(buffer, entry.Text);
        EXPECT_LT(std::strlen(entry.Text), static_cast<std::size_t>(limit)) << NumberOf(entry.Id);
    }
}

TEST(MessageCatalogue, LoadingCutsAtTheLimit) {
    char buffer[7] = "######";
    LoadCatalogueText(Message::AboutVelkoran, buffer, 6);
    EXPECT_STREQ(buffer, "About");
}

// On purpose: front ends match on the texts as they are, misspelled or not.
TEST(MessageCatalogue, MisspellingsStay) {
    EXPECT_STREQ(CatalogueText(Message::SpectrumColumns),
                 "        Line        Frequncy(in Hz)      Intensity       Degeneracy\n");
    EXPECT_STREQ(CatalogueText(Message::SpectrometerFrequency), "Spectrometer frequncy = %.0f (in MHz)");
    EXPECT_STREQ(CatalogueText(Message::ParameterFileNotOpened), "Trouble has been occured when openning %s.");
    EXPECT_STREQ(CatalogueText(Message::NmrAtomCountNotPositive),
                 "The number of NMR atoms (=%d in the input file %s) cann't be less than or equal to zero.");
    EXPECT_STREQ(CatalogueText(Message::UnreadableInput),
                 "Velkoran has met troubles when reading the input from thr input file %s.");
}

TEST(MessageCatalogue, NoTextHasAConversionThatTheFormatterDoesNotKnow) {
    for (const CatalogueEntry& entry : MessageCatalogue) {
        for (std::size_t i = 0; entry.Text[i] != '\0'; ++i) {
            if (entry.Text[i] == '%') {
                EXPECT_NE(ConversionKind(entry.Text, ++i), 0) << NumberOf(entry.Id);
            }
        }
    }
}

// Every text of the catalogue, filled with one value of each kind, agrees with snprintf piece by piece: the
// reference is the C library's, called with each conversion alone and the argument type that it names.
TEST(MessageFormat, FillsEveryTextAsTheCLibraryDoes) {
    for (const CatalogueEntry& entry : MessageCatalogue) {
        std::vector<MessageArgument> arguments;
        std::string expected;
        for (const char* c = entry.Text; *c != '\0'; ++c) {
            if (*c != '%') {
                expected += *c;
                continue;
            }
            std::string conversion = "%";
            bool isLong = false;
            while (std::strchr("dfegs", *++c) == nullptr) {
                isLong = isLong || *c == 'l';
                conversion += *c;
            }
            conversion += *c;
            char piece[100];
            if (*c == 's') {
                arguments.push_back(Argument("chlorine"));
                std::snprintf(piece, sizeof piece, conversion.c_str(), "chlorine");
            } else if (*c == 'd' && isLong) {
                arguments.push_back(Argument(-42L));
                std::snprintf(piece, sizeof piece, conversion.c_str(), -42L);
            } else if (*c == 'd') {
                arguments.push_back(Argument(-42));
                std::snprintf(piece, sizeof piece, conversion.c_str(), -42);
            } else {
                arguments.push_back(Argument(-12345.678912345));
                std::snprintf(piece, sizeof piece, conversion.c_str(), -12345.678912345);
            }
            expected += piece;
        }
        EXPECT_EQ(Expanded(entry.Id, arguments), expected) << NumberOf(entry.Id);
    }
}

TEST(MessageFormat, FillsEachKindOfConversion) {
    EXPECT_EQ(Formatted("[%.6s]", {Argument("123456789")}), "[123456]");
    EXPECT_EQ(Formatted("[%.3s %.2s]", {Argument("ab"), Argument("abc")}), "[ab ab]");
    EXPECT_EQ(Formatted("[%3d]", {Argument(7)}), "[  7]");
    EXPECT_EQ(Formatted("[%4d]", {Argument(123456)}), "[123456]");
    EXPECT_EQ(Formatted("[%ld]", {Argument(-2147483647 - 1)}), "[-2147483648]");
    EXPECT_EQ(Formatted("[%ld]", {Argument(9000000000LL)}), "[9000000000]");
    EXPECT_EQ(Formatted("[%15.7e]", {Argument(-1.5)}), "[ -1.5000000e+00]");
    EXPECT_EQ(Formatted("[%11.6f]", {Argument(0.1)}), "[   0.100000]");
    EXPECT_EQ(Formatted("[%.0f]", {Argument(60.0)}), "[60]");
    EXPECT_EQ(Formatted("[%g]", {Argument(1e10)}), "[1e+10]");
    EXPECT_EQ(Formatted("%s", {Argument("")}), "");
}

TEST(MessageFormat, CutsToItsBuffer) {
    EXPECT_EQ(Formatted("abcdef", {}, 4), "abc");
    EXPECT_EQ(Formatted("ab%d", {Argument(12345)}, 5), "ab12");
    EXPECT_EQ(Formatted("%s and %s", {Argument("abcdefgh"), Argument("x")}, 6), "abcde");
    EXPECT_EQ(Formatted("abc", {}, 1), "");
    EXPECT_EQ(Formatted("%f", {Argument(1e300)}, 20).size(), 19u);
}

TEST(MessageFormat, ChecksArgumentsAgainstConversions) {
    EXPECT_TRUE(ArgumentsFit("at %ld with %s", "ds"));
    EXPECT_FALSE(ArgumentsFit("at %ld with %s", "sd"));
    EXPECT_FALSE(ArgumentsFit("at %ld with %s", "d"));
    EXPECT_FALSE(ArgumentsFit("at %ld with %s", "dss"));
    EXPECT_TRUE(ArgumentsFit(nullptr, ""));
    EXPECT_FALSE(ArgumentsFit(nullptr, "d"));
}

// Property: the text of what is no finite number has no sign but that of an infinity, and the width of its conversion.
// Set-up: both signs and several payloads, quiet and signalling.
TEST(MessageFormat, NumbersThatAreNotFinite) {
    for (const std::uint64_t payload : {0x7ff8000000000000u, 0x7ff0000000000001u, 0x7fffffffffffffffu}) {
        for (const std::uint64_t sign : {0x0ull, 0x8000000000000000ull}) {
            const double nan = std::bit_cast<double>(payload | sign);
            EXPECT_EQ(Formatted("[%f %15.7e %-8.2f|%.3f %g %11.6f]", std::vector<MessageArgument>(6, Argument(nan))),
                      "[nan             nan nan     |nan nan         nan]");
        }
    }
    const double infinity = std::numeric_limits<double>::infinity();
    const std::vector<MessageArgument> above(3, Argument(infinity));
    const std::vector<MessageArgument> below(3, Argument(-infinity));
    EXPECT_EQ(Formatted("[%f %8.3f %-6e]", above), "[inf      inf inf   ]");
    EXPECT_EQ(Formatted("[%f %8.3f %-6e]", below), "[-inf     -inf -inf  ]");
    EXPECT_EQ(Formatted("%9f", {Argument(-infinity)}, 8), "     -i");
}
