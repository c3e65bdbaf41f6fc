// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string_view>

/// The word boundaries of Unicode for ASCII and the alphabets near it, where a few rules suffice:
/// the same words as by all of the rules, several times as fast. Texts are UTF-8; what is
/// ill-formed is left to the general rules.
namespace platform {

/// The words in the first `length` bytes of a text.
struct PlainWords {
    std::size_t count = 0;
    std::size_t length = 0;
};

/// The words that `text` begins with, up to the end or to a blank or line feed before the first
/// character that needs the general rules. No word goes over that place.
[[nodiscard]] PlainWords leadingPlainWords(std::string_view text);

/// How long a part `text` begins with that is better left to the general rules: up to a blank or
/// line feed behind which plain words come for a while. 0 when all of it is plain.
[[nodiscard]] std::size_t lengthOfOtherWords(std::string_view text);

} // namespace platform
