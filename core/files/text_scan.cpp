// SPDX-License-Identifier: MIT
// Reads lines and numbers from input files.
#include "files/text_scan.h"

#include "ground/message_poll.h"

#include <algorithm>
#include <cctype>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>

static constexpr int NumberSize = 600;  // characters of a number; longer ones aren't read

bool ReadLine(std::FILE* file, char* line, int size) {
    PollReading(size);
    if (std::fgets(line, size, file) == nullptr) {
        YieldAllMessages();
        return false;
    }
    return true;
}

// Where the characters of a number come from: a text, or a file.
struct TextSource {
    const char* At;
    int Peek() { return static_cast<unsigned char>(*At); }
    void Take() { ++At; }
};

// One character is taken from the file ahead of its time; ReturnCharacter puts it back, to be called at the end.
struct FileSource {
    static constexpr int NotRead = EOF - 1;
    std::FILE* File;
    int Next = NotRead;  // the character to come, or EOF

    int Peek() {
        if (Next == NotRead) {
            Next = std::getc(File);
            if (Next == EOF) {
                YieldAllMessages();
            }
        }
        return Next;
    }
    void Take() {
        PollReading(1);
        Peek();
        Next = NotRead;
    }
    void ReturnCharacter() {
        if (Next != NotRead) {
            std::ungetc(Next, File);  // nothing at the end of the file
            Next = NotRead;
        }
    }
};

template <class Source> static void TakeWhiteSpace(Source& source) {
    while (std::isspace(source.Peek())) {
        source.Take();
    }
}

// Takes an integer after white space; beyond 32 bits it saturates.
template <class Source> static bool CollectNumber(Source& source, int* value) {
    static constexpr long long Beyond = INT_MAX + 1LL;
    TakeWhiteSpace(source);
    const bool negative = source.Peek() == '-';
    if (negative || source.Peek() == '+') {
        source.Take();
    }
    if (!std::isdigit(source.Peek())) {
        return false;
    }
    long long number = 0;
    for (; std::isdigit(source.Peek()); source.Take()) {
        number = std::min(10 * number + source.Peek() - '0', Beyond);
    }
    *value = static_cast<int>(negative ? -number : std::min<long long>(number, INT_MAX));
    return true;
}

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
template <class Source> static bool CollectNumber(Source& source, double* value) {
    TakeWhiteSpace(source);
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
    const double number = std::strtod(text, nullptr);
    if (collector.Length == NumberSize || !std::isfinite(number)) {
        return false;
    }
    *value = number;
    return true;
}

template <class Number> static bool ScanNumber(const char*& text, Number* value) {
    TextSource source = {text};
    if (!CollectNumber(source, value)) {
        return false;
    }
    text = source.At;
    return true;
}

bool ScanInteger(const char*& text, int* value) {
    return ScanNumber(text, value);
}

bool ScanReal(const char*& text, double* value) {
    return ScanNumber(text, value);
}

template <class Number> static bool ReadNumber(std::FILE* file, Number* value) {
    FileSource source = {file};
    const bool read = CollectNumber(source, value);
    if (read) {
        TakeWhiteSpace(source);
    }
    source.ReturnCharacter();
    return read;
}

bool ReadInteger(std::FILE* file, int* value) {
    return ReadNumber(file, value);
}

bool ReadReal(std::FILE* file, double* value) {
    return ReadNumber(file, value);
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

bool ReadWord(std::FILE* file, int width, char* word) {
    FileSource source = {file};
    TakeWhiteSpace(source);
    const bool there = source.Peek() != EOF;
    int length = 0;
    for (int c = source.Peek(); c != EOF && !std::isspace(c); c = source.Peek()) {
        if (length < width) {
            word[length++] = static_cast<char>(c);
        }
        source.Take();
    }
    word[length] = '\0';
    source.ReturnCharacter();
    return there;
}

char LowerCase(char c) {
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
