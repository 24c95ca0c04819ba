// SPDX-License-Identifier: MIT
// The messages by name, their texts and the filling-in of arguments. A call that names a message is checked by the
// compiler against the conversions in its text: a wrong list of arguments doesn't compile.
#pragma once

#include <concepts>
#include <cstddef>
#include <type_traits>

// Every message by its name; its value is the 16-bit number that front ends know.
enum class Message : int {
#define CATALOGUE_TEXT(name, id, text) name = id,
#define CATALOGUE_SILENCE(name, id) name = id,
#include "resources/message_catalogue.inc"
#undef CATALOGUE_TEXT
#undef CATALOGUE_SILENCE
};

struct CatalogueEntry {
    Message Id;
    const char* Text;  // plain, or with conversions of printf
};

inline constexpr CatalogueEntry MessageCatalogue[] = {
#define CATALOGUE_TEXT(name, id, text) {Message::name, text},
#define CATALOGUE_SILENCE(name, id)
#include "resources/message_catalogue.inc"
#undef CATALOGUE_TEXT
#undef CATALOGUE_SILENCE
};

// The text of a message, or null.
constexpr const char* CatalogueText(Message id) {
    for (const CatalogueEntry& entry : MessageCatalogue) {
        if (entry.Id == id) {
            return entry.Text;
        }
    }
    return nullptr;
}

// One argument of a text, by what it holds.
struct MessageArgument {
    char Kind;          // 'd' integer, 'f' real, 's' text
    long long Integer;  // the value of kind 'd'
    double Real;        // the value of kind 'f'
    const char* Text;   // the value of kind 's'
};

template <std::integral Value> constexpr MessageArgument Argument(Value value) {
    return {'d', static_cast<long long>(value), 0.0, nullptr};
}
constexpr MessageArgument Argument(double value) {
    return {'f', 0, value, nullptr};
}
constexpr MessageArgument Argument(const char* value) {
    return {'s', 0, 0.0, value};
}

// The kind of argument that the conversion at text[position], just behind a '%', takes; 0 for "%%". Moves position to
// the letter of the conversion.
constexpr char ConversionKind(const char* text, std::size_t& position) {
    while (text[position] == '.' || text[position] == '-' || text[position] == 'l' ||
           (text[position] >= '0' && text[position] <= '9')) {
        ++position;
    }
    switch (text[position]) {
    case 'd':
        return 'd';
    case 'f':
    case 'e':
    case 'g':
        return 'f';
    case 's':
        return 's';
    default:
        return 0;
    }
}

// True if the conversions of a text take exactly these kinds of arguments; a missing text takes none.
constexpr bool ArgumentsFit(const char* text, const char* kinds) {
    for (std::size_t i = 0; text != nullptr && text[i] != '\0'; ++i) {
        if (text[i] == '%') {
            const char kind = ConversionKind(text, ++i);
            if (kind != 0 && *kinds++ != kind) {
                return false;
            }
        }
    }
    return *kinds == '\0';
}

// A message, checked at compile time against the arguments that the call gives.
template <class... Values> struct MessageId {
    Message Id;
    consteval MessageId(Message id) : Id(id) {
        const char kinds[] = {Argument(Values{}).Kind..., '\0'};
        if (!ArgumentsFit(CatalogueText(id), kinds)) {
            throw "the arguments don't fit the conversions of the catalogue text";
        }
    }
};

// A MessageId that follows the arguments of its call and never decides their types.
template <class... Values> using MessageIdFor = MessageId<std::type_identity_t<Values>...>;

// Fills a text with its arguments into buffer, cut to size - 1 characters. The arguments must fit.
void FormatMessageText(const char* text, const MessageArgument* arguments, char* buffer, int size);

// The same with the arguments themselves.
template <std::size_t Size, class... Values> void FormatText(char (&buffer)[Size], const char* text, Values... values) {
    const MessageArgument arguments[] = {Argument(values)...};
    FormatMessageText(text, arguments, buffer, static_cast<int>(Size));
}

// Loads a text with a limit of limit - 1 characters and fills it into buffer; a message without text gives "".
void ExpandCatalogueText(Message id, const MessageArgument* arguments, int limit, char* buffer, int size);
