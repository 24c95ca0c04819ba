// SPDX-License-Identifier: MIT
// Writes texts without anything that steers a terminal.
#include "ground/printable_text.h"

#include "ground/platform.h"

static constexpr int FirstPrintable = ' ';
static constexpr int DeleteCharacter = 127;

// Bytes of the character that text begins with; 0 if it can't be shown.
static int PrintableLength(const char* text) {
    const int c = static_cast<unsigned char>(*text);
    if (c > DeleteCharacter) {
        return LengthBeyondAscii(text);
    }
    return c == '\n' || c == '\t' || (c >= FirstPrintable && c < DeleteCharacter) ? 1 : 0;
}

void PutPrintable(std::FILE* file, const char* text) {
    const char* unwritten = text;
    while (*text != '\0') {
        const int length = PrintableLength(text);
        text += length;
        if (length == 0) {
            std::fwrite(unwritten, 1, static_cast<std::size_t>(text - unwritten), file);
            std::fprintf(file, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(*text)));
            unwritten = ++text;
        }
    }
    std::fwrite(unwritten, 1, static_cast<std::size_t>(text - unwritten), file);
}
