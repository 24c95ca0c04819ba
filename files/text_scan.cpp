// SPDX-License-Identifier: MIT
// Reads lines and numbers from input files.
#include "files/text_scan.h"

#include <algorithm>
#include <cctype>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>

static constexpr int NumberSize = 600;  // characters of a number; longer ones aren't read

bool ReadLine(std::FILE* file, char* line) {
    return std::fgets(line, LineSize, file) != nullptr;
}

static int Saturate(long long value) {
    return static_cast<int>(std::clamp<long long>(value, INT_MIN, INT_MAX));
}

bool ScanInteger(const char*& text, int* value) {
    char* end;
    const long long number = std::strtoll(text, &end, 10);
    if (end == text) {
        return false;
    }
    *value = Saturate(number);
    text = end;
    return true;
}

// Where the characters of a number come from: a text, or a file.
struct TextSource {
    const char* At;
    int Peek() const { return static_cast<unsigned char>(*At); }
    void Take() { ++At; }
};

struct FileSource {
    std::FILE* File;
    int Peek() const {
        const int c = std::fgetc(File);
        std::ungetc(c, File);
        return c;
    }
    void Take() { std::fgetc(File); }
};

// Takes characters of a number into a text of limited room.
template <class Source> struct NumberCollector {
    Source& From;
    char* Text;  // [NumberSize]
    int Length;

    bool NextIs(const char* characters) const {
        const int c = From.Peek();
        return c > 0 && std::strchr(characters, c) != nullptr;
    }
    void TakeNext() {
        if (Length < NumberSize) {
            Text[Length++] = static_cast<char>(From.Peek());
        }
        From.Take();
    }
    void TakeIf(const char* characters) {
        if (NextIs(characters)) {
            TakeNext();
        }
    }
    int TakeAll(const char* characters) {
        int count = 0;
        for (; NextIs(characters); ++count) {
            TakeNext();
        }
        return count;
    }
};

// Takes a number after white space by the rule of the C standard for "%lf": the longest run of characters that is a
// number or the beginning of one, and fails if that isn't a whole number, as "1e" and "0x". C libraries differ here.
template <class Source> static bool CollectReal(Source& source, double* value) {
    while (std::isspace(source.Peek())) {
        source.Take();
    }
    char text[NumberSize + 1];
    NumberCollector<Source> collector = {source, text, 0};
    collector.TakeIf("+-");
    const bool zero = collector.NextIs("0");
    collector.TakeIf("0");
    const bool hexadecimal = zero && collector.NextIs("xX");
    const char* digits = hexadecimal ? "0123456789abcdefABCDEF" : "0123456789";
    collector.TakeIf(hexadecimal ? "xX" : "");
    int count = collector.TakeAll(digits) + (zero && !hexadecimal ? 1 : 0);
    if (collector.NextIs(".")) {
        collector.TakeNext();
        count += collector.TakeAll(digits);
    }
    if (count == 0) {
        return false;
    }
    if (collector.NextIs(hexadecimal ? "pP" : "eE")) {
        collector.TakeNext();
        collector.TakeIf("+-");
        if (collector.TakeAll("0123456789") == 0) {
            return false;
        }
    }
    text[collector.Length] = '\0';
    *value = std::strtod(text, nullptr);
    return collector.Length < NumberSize && std::isfinite(*value);
}

bool ScanReal(const char*& text, double* value) {
    TextSource source = {text};
    if (!CollectReal(source, value)) {
        return false;
    }
    text = source.At;
    return true;
}

bool ReadInteger(std::FILE* file, int* value) {
    long long number;
    if (std::fscanf(file, "%lld", &number) != 1) {
        return false;
    }
    std::fscanf(file, " ");
    *value = Saturate(number);
    return true;
}

bool ReadReal(std::FILE* file, double* value) {
    FileSource source = {file};
    if (!CollectReal(source, value)) {
        return false;
    }
    std::fscanf(file, " ");
    return true;
}

float NarrowReal(double value) {
    return static_cast<float>(std::clamp<double>(value, -FLT_MAX, FLT_MAX));
}

const char* SkipWhiteSpace(const char* text) {
    while (std::isspace(static_cast<unsigned char>(*text))) {
        ++text;
    }
    return text;
}

bool ScanWord(const char*& text, int width, char* word) {
    const char* end = SkipWhiteSpace(text);
    int length = 0;
    while (length < width && *end != '\0' && !std::isspace(static_cast<unsigned char>(*end))) {
        word[length++] = *end++;
    }
    word[length] = '\0';
    text = end;
    return length > 0;
}

bool SkipWord(const char*& text) {
    const char* begin = SkipWhiteSpace(text);
    text = begin;
    while (*text != '\0' && !std::isspace(static_cast<unsigned char>(*text))) {
        ++text;
    }
    return text != begin;
}

bool SkipWord(std::FILE* file) {
    return std::fscanf(file, "%*s") != EOF;
}

static char LowerCase(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

bool BeginsIgnoringCase(const char* text, const char* beginning) {
    for (; *beginning != '\0'; ++text, ++beginning) {
        if (LowerCase(*text) != LowerCase(*beginning)) {
            return false;
        }
    }
    return true;
}

bool EqualIgnoringCase(const char* a, const char* b) {
    return std::strlen(a) == std::strlen(b) && BeginsIgnoringCase(a, b);
}
