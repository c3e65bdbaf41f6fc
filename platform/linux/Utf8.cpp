// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Utf8.h"

#include "platform/linux/Icu.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

namespace platform {
namespace {

// ICU counts in 32 bits; longer texts are no texts that anyone reads.
constexpr std::size_t longest = std::numeric_limits<std::int32_t>::max();

// How many whole words of the machine at the beginning of `text` are ASCII, in bytes.
std::size_t lengthOfASCII(std::string_view text) {
    constexpr std::uint64_t highBits = 0x8080808080808080;
    std::size_t length = 0;
    for (std::uint64_t word = 0; text.size() - length >= sizeof word; length += sizeof word) {
        std::memcpy(&word, text.data() + length, sizeof word);
        if ((word & highBits) != 0) {
            break;
        }
    }
    return length;
}

// Moves `offset` behind the character or ill-formed sequence there; answers whether it is a
// character.
bool skipSequence(std::string_view text, std::size_t& offset) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): characters as bytes
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    auto position = static_cast<std::int32_t>(offset);
    UChar32 character = 0;
    U8_NEXT(bytes, position, static_cast<std::int32_t>(text.size()), character);
    offset = static_cast<std::size_t>(position);
    return character >= 0;
}

} // namespace

bool isUTF8(std::string_view text) {
    bool result = text.size() <= longest;
    std::size_t offset = lengthOfASCII(text);
    while (result && offset < text.size()) {
        result = skipSequence(text, offset);
        offset += lengthOfASCII(text.substr(offset));
    }
    return result;
}

std::string replacingInvalidUTF8(std::string_view text) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    std::string result;
    if (text.size() > longest) {
        return result.append(replacement);
    }
    for (std::size_t offset = 0; offset < text.size();) {
        const std::size_t start = offset;
        const bool isCharacter = skipSequence(text, offset);
        result.append(isCharacter ? text.substr(start, offset - start) : replacement);
    }
    return result;
}

void appendUTF8(std::string& text, char32_t character) {
    const auto continuation = [&text, character](unsigned shift) {
        text.push_back(static_cast<char>(0x80U | ((character >> shift) & 0x3FU)));
    };
    if (character < 0x80) {
        text.push_back(static_cast<char>(character));
    } else if (character < 0x800) {
        text.push_back(static_cast<char>(0xC0U | (character >> 6U)));
        continuation(0);
    } else if (character < 0x10000) {
        text.push_back(static_cast<char>(0xE0U | (character >> 12U)));
        continuation(6);
        continuation(0);
    } else {
        text.push_back(static_cast<char>(0xF0U | (character >> 18U)));
        continuation(12);
        continuation(6);
        continuation(0);
    }
}

} // namespace platform
