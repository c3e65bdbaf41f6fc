// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <compare>
#include <string>
#include <string_view>

/// Letters and their order as the user's language has them. Texts are UTF-8. Any thread.
namespace platform::Collation {

/// The order of two texts in the user's locale, without regard to case. Bytes that are not UTF-8
/// sort as U+FFFD.
[[nodiscard]] std::weak_ordering localizedCaseInsensitiveCompare(std::string_view first,
                                                                 std::string_view second);

/// `text` in lower case, independent of the locale. In a text that is not UTF-8 only ASCII letters
/// change, so that no byte is lost.
[[nodiscard]] std::string lowercase(std::string_view text);

} // namespace platform::Collation
