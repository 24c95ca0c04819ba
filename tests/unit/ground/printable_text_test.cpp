// SPDX-License-Identifier: MIT
// Texts that are shown: what steers a terminal becomes visible, all else stays as it is.
#include "ground/printable_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

static std::string Shown(const std::string& text) {
    char* buffer = nullptr;
    std::size_t size = 0;
    std::FILE* file = open_memstream(&buffer, &size);
    PutPrintable(file, text.c_str());
    std::fclose(file);
    const std::string shown(buffer, size);
    std::free(buffer);
    return shown;
}

// A code in UTF-8, in a form of so many bytes, whether that is the shortest or not.
static std::string Encoded(unsigned code, int bytes) {
    static constexpr unsigned Leads[] = {0x00, 0xc0, 0xe0, 0xf0};
    std::string text(1, static_cast<char>(Leads[bytes - 1] | code >> 6 * (bytes - 1)));
    for (int i = bytes - 2; i >= 0; --i) {
        text += static_cast<char>(0x80 | (code >> 6 * i & 0x3f));
    }
    return text;
}

static std::string Encoded(unsigned code) {
    return Encoded(code, code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4);
}

// Each byte as "\x" and two digits.
static std::string Hexadecimal(const std::string& text) {
    static constexpr char Digits[] = "0123456789abcdef";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        result += {'\\', 'x', Digits[byte / 16], Digits[byte % 16]};
    }
    return result;
}

TEST(PrintableText, ControlCharactersAreSpeltOut) {
    EXPECT_EQ(Shown("a\x1b[2Jb"), "a\\x1b[2Jb");
    EXPECT_EQ(Shown("over\rwritten\b\x7f"), "over\\x0dwritten\\x08\\x7f");
    for (char c = 1; c < ' '; ++c) {
        const std::string text(1, c);
        EXPECT_EQ(Shown(text), c == '\n' || c == '\t' ? text : Hexadecimal(text)) << int(c);
    }
}

TEST(PrintableText, AsciiStays) {
    std::string text;
    for (char c = ' '; c < '\x7f'; ++c) {
        text += c;
    }
    EXPECT_EQ(Shown(text), text);
    EXPECT_EQ(Shown("\nheading\n   -------\n"), "\nheading\n   -------\n");
    EXPECT_EQ(Shown("a\tb"), "a\tb");
    EXPECT_EQ(Shown(""), "");
}

TEST(PrintableText, PathsKeepTheirBackslashes) {
    EXPECT_EQ(Shown("C:\\x1b\\nmrspect.in"), "C:\\x1b\\nmrspect.in");
}

// All codes from 160 on but the surrogates, which are no characters.
TEST(PrintableText, EveryCharacterOfUtf8Stays) {
    for (unsigned code = 0xa0; code <= 0x10ffff; ++code) {
        const bool surrogate = code >= 0xd800 && code <= 0xdfff;
        const std::string text = Encoded(code);
        ASSERT_EQ(Shown(text), surrogate ? Hexadecimal(text) : text) << std::hex << code;
    }
}

TEST(PrintableText, ControlCharactersBeyondAsciiAreSpeltOut) {
    for (unsigned code = 0x80; code < 0xa0; ++code) {
        const std::string text = Encoded(code);
        EXPECT_EQ(Shown(text), Hexadecimal(text)) << std::hex << code;
    }
}

// An escape character in two, three or four bytes is none to UTF-8, but it is one to a careless reader.
TEST(PrintableText, LongerFormsThanNeededAreSpeltOut) {
    for (const unsigned code : {0x00u, 0x1bu, 0x7fu, 0x80u, 0xffu, 0x7ffu, 0x800u, 0xffffu}) {
        for (int bytes = static_cast<int>(Encoded(code).size()) + 1; bytes <= 4; ++bytes) {
            const std::string text = Encoded(code, bytes);
            EXPECT_EQ(Shown(text), Hexadecimal(text)) << std::hex << code << " in " << bytes;
        }
    }
}

TEST(PrintableText, BytesOutsideOfCharactersAreSpeltOut) {
    for (unsigned byte = 0x80; byte <= 0xff; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        EXPECT_EQ(Shown(text), Hexadecimal(text));
        EXPECT_EQ(Shown(text + "b"), Hexadecimal(text) + "b");
    }
    EXPECT_EQ(Shown(Encoded(0x110000)), Hexadecimal(Encoded(0x110000)));
}

// The cut of a text to its buffer can go through a character.
TEST(PrintableText, PartsOfCharactersAreSpeltOut) {
    for (const unsigned code : {0xe9u, 0x20acu, 0x1f600u}) {
        const std::string whole = Encoded(code);
        for (std::size_t length = 1; length < whole.size(); ++length) {
            const std::string part = whole.substr(0, length);
            EXPECT_EQ(Shown(part), Hexadecimal(part));
            EXPECT_EQ(Shown(part + whole), Hexadecimal(part) + whole);
        }
    }
}
