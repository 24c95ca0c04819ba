// SPDX-License-Identifier: MIT
// Fills catalogue texts with their arguments, independent of the widths that "long" has on a platform.
#include "ground/message_catalogue.h"

#include "ground/platform.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

// Longest text of the catalogue that any caller loads, and one conversion of it.
static constexpr int LongestText = 400;
static constexpr int LongestConversion = 16;

// C libraries print what isn't a number with a sign or without one, and processors set that sign as they like. Here
// there is none.
static int PrintReal(const char* conversion, double value, char* buffer, std::size_t room) {
    if (std::isfinite(value)) {
        return std::snprintf(buffer, room, conversion, value);
    }
    const char* word = std::isnan(value) ? "nan" : value > 0.0 ? "inf" : "-inf";
    return std::snprintf(buffer, room, "%*s", std::atoi(conversion + 1), word);  // the width of the conversion
}

// Prints one argument by its conversion "%...letter", without the length letters of the text.
static int PrintArgument(const char* begin, const char* end, const MessageArgument& argument, char* buffer, int size) {
    char conversion[LongestConversion + 4];
    int length = 0;
    for (const char* c = begin; c != end && length < LongestConversion; ++c) {
        if (*c != 'l') {
            conversion[length++] = *c;
        }
    }
    const std::size_t room = static_cast<std::size_t>(size);
    if (argument.Kind == 'd') {
        conversion[length++] = 'l';
        conversion[length++] = 'l';
    }
    conversion[length++] = *end;
    conversion[length] = '\0';
    switch (argument.Kind) {
    case 'd':
        return std::snprintf(buffer, room, conversion, argument.Integer);
    case 'f':
        return PrintReal(conversion, argument.Real, buffer, room);
    default:
        return std::snprintf(buffer, room, conversion, argument.Text);
    }
}

void FormatMessageText(const char* text, const MessageArgument* arguments, char* buffer, int size) {
    int filled = 0;
    for (std::size_t i = 0; text[i] != '\0' && filled < size - 1; ++i) {
        if (text[i] != '%') {
            buffer[filled++] = text[i];
            continue;
        }
        const char* begin = text + i;
        if (ConversionKind(text, ++i) == 0) {
            break;
        }
        filled += PrintArgument(begin, text + i, *arguments++, buffer + filled, size - filled);
        filled = std::min(filled, size - 1);
    }
    buffer[filled] = '\0';
}

void ExpandCatalogueText(Message id, const MessageArgument* arguments, int limit, char* buffer, int size) {
    char text[LongestText];
    text[0] = '\0';
    LoadCatalogueText(id, text, std::min(limit, LongestText));
    FormatMessageText(text, arguments, buffer, size);
}
