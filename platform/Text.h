// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Texts as bytes in an encoding, and what is counted in them. Texts are UTF-8; ill-formed parts of
/// one are counted somehow, without harm. Any thread.
namespace platform::Text {

/// The encodings that texts are read in.
enum class Encoding { UTF8, ISOLatin1 };

/// The text that `bytes` hold in UTF-8; nullopt unless all of them are well-formed. NUL and a
/// byte-order mark are characters like others.
[[nodiscard]] std::optional<std::string> fromUTF8(DataView bytes);

/// The text that `bytes` hold in ISO 8859-1, where each byte is one of the first 256 characters of
/// Unicode.
[[nodiscard]] std::string fromISOLatin1(DataView bytes);

/// The name of an encoding for people, in their language where the application's catalogue has it
/// under the English name: "Unicode (UTF-8)", "Western (ISO Latin 1)".
[[nodiscard]] std::string localizedNameOfEncoding(Encoding encoding);

/// How many code units the text has in UTF-16.
[[nodiscard]] std::size_t lengthInUTF16(std::string_view text);

/// How many words the text has by the word boundaries of Unicode (UAX #29), whatever the user's
/// language: what lies between two boundaries is a word when it has letters, digits or ideographs,
/// or more than one underscore. Scripts without blanks between words are parted by dictionaries, so
/// that numbers for them may differ between systems and releases; so do those of texts with "@",
/// which ICU 72 and 73 take for a letter. nullopt when there is no memory for the count.
[[nodiscard]] std::optional<std::size_t> wordCount(std::string_view text);

} // namespace platform::Text
