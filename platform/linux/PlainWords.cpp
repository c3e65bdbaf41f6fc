// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/PlainWords.h"

#include "platform/linux/Icu.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace platform {
namespace {

// What a character is to the rules (UAX #29, table 3).
enum class Kind : std::uint8_t {
    other,      // has a boundary on both sides and is no word
    cut,        // the same, whatever stands before it
    letter,     // words are made of these
    digit,      // and these
    underscore, // joins letters and digits
    quote,      // quotes and full stops join two letters or two digits
    comma,      // commas and semicolons join two digits
    general,    // needs the general rules
};

bool isWordPart(Kind kind) {
    return kind == Kind::letter || kind == Kind::digit || kind == Kind::underscore;
}

bool joins(Kind before, Kind middle, Kind after) {
    return before == after &&
           ((before == Kind::letter && middle == Kind::quote) ||
            (before == Kind::digit && (middle == Kind::quote || middle == Kind::comma)));
}

Kind kindOfASCII(UChar32 c) {
    switch (c) {
    case ' ':
    case '\n': return Kind::cut;
    case '_': return Kind::underscore;
    case '\'':
    case '.': return Kind::quote;
    case ',':
    case ';': return Kind::comma;
    case '@': return Kind::general; // a letter in some releases of ICU
    default: break;
    }
    if (c >= '0' && c <= '9') {
        return Kind::digit;
    }
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ? Kind::letter : Kind::other;
}

Kind kindOf(UChar32 c) {
    if (c < 0x80) {
        return kindOfASCII(c);
    }
    switch (u_getIntPropertyValue(c, UCHAR_WORD_BREAK)) {
    case U_WB_ALETTER: return Kind::letter;
    case U_WB_NUMERIC: return Kind::digit;
    case U_WB_MIDNUMLET: return Kind::quote;
    case U_WB_OTHER: return Kind::other;
    default: return Kind::general;
    }
}

// The kinds of the characters of one and two bytes, among them the Latin, Greek, Cyrillic and
// Arabic letters, and of the punctuation that such texts use.
class Kinds {
public:
    struct Character {
        Kind kind = Kind::general;
        std::size_t length = 1; // in bytes
    };

    Kinds() {
        fill(m_short, 0);
        fill(m_punctuation, firstPunctuation);
    }

    // The character, or part of one that needs the general rules, at `offset`.
    [[nodiscard]] Character at(std::string_view text, std::size_t offset) const {
        const auto first = static_cast<unsigned char>(text[offset]);
        if (first < 0x80) {
            return {m_short[first], 1};
        }
        const std::size_t left = text.size() - offset;
        if (first >= 0xC2 && first < 0xE0 && left >= 2 && isContinuation(text[offset + 1])) {
            return {m_short[(first & 0x1FU) << 6U | lowBits(text[offset + 1])], 2};
        }
        if (first == 0xE2 && left >= 3 &&
            (text[offset + 1] == '\x80' || text[offset + 1] == '\x81') &&
            isContinuation(text[offset + 2])) {
            return {m_punctuation[lowBits(text[offset + 1]) << 6U | lowBits(text[offset + 2])], 3};
        }
        return {};
    }

private:
    static constexpr UChar32 firstPunctuation = 0x2000;

    template <class Table>
    static void fill(Table& table, UChar32 character) {
        for (Kind& kind : table) {
            kind = kindOf(character);
            ++character;
        }
    }
    static bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }
    static std::size_t lowBits(char c) { return static_cast<unsigned char>(c) & 0x3FU; }

    std::array<Kind, 0x800> m_short{};
    std::array<Kind, 0x80> m_punctuation{};
};

const Kinds& sharedKinds() {
    static const Kinds kinds;
    return kinds;
}

// The end of the word whose first character is at `start`.
std::size_t endOfWord(const Kinds& kinds, std::string_view text, std::size_t start) {
    Kind last = Kind::other;
    std::size_t end = start;
    while (end < text.size()) {
        auto next = kinds.at(text, end);
        if (!isWordPart(next.kind)) {
            const std::size_t behind = end + next.length;
            const auto after =
                behind < text.size() ? kinds.at(text, behind) : Kinds::Character{Kind::other, 0};
            if (!joins(last, next.kind, after.kind)) {
                break;
            }
            next = {after.kind, next.length + after.length};
        }
        last = next.kind;
        end += next.length;
    }
    return end;
}

// The offset of the first character from `start` on that needs the general rules; `limit`, which
// is at most the text's size, when there is none before.
std::size_t findGeneral(const Kinds& kinds, std::string_view text, std::size_t start,
                        std::size_t limit) {
    while (start < limit) {
        const auto character = kinds.at(text, start);
        if (character.kind == Kind::general) {
            return start;
        }
        start += character.length;
    }
    return limit;
}

} // namespace

PlainWords leadingPlainWords(std::string_view text) {
    const Kinds& kinds = sharedKinds();
    PlainWords now;
    PlainWords atLastCut;
    while (now.length < text.size()) {
        const auto character = kinds.at(text, now.length);
        if (character.kind == Kind::general) {
            return atLastCut;
        }
        if (character.kind == Kind::cut) {
            atLastCut = now;
        }
        if (!isWordPart(character.kind)) {
            now.length += character.length;
            continue;
        }
        const std::size_t end = endOfWord(kinds, text, now.length);
        // An underscore by itself is no word.
        now.count +=
            static_cast<std::size_t>(character.kind != Kind::underscore || end - now.length > 1);
        now.length = end;
    }
    return now;
}

std::size_t lengthOfOtherWords(std::string_view text) {
    // Going back and forth costs as much as that many characters by the general rules.
    constexpr std::size_t farEnough = 24;
    const Kinds& kinds = sharedKinds();
    std::size_t cut = 0;
    std::size_t limit = text.size();
    for (std::size_t next = 0; (next = findGeneral(kinds, text, next, limit)) < limit; next = cut) {
        cut = std::min(text.find_first_of(" \n", next), text.size());
        limit = std::min(text.size(), cut + farEnough);
    }
    return cut;
}

} // namespace platform
