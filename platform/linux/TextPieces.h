// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>
#include <string_view>
#include <system_error>

namespace platform {

/// Takes what stands before the first `separator` off the front of `text`, together with that;
/// everything where there is none.
inline std::string_view takePiece(std::string_view& text, char separator) {
    const auto end = std::min(text.find(separator), text.size());
    const std::string_view piece = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return piece;
}

/// Takes the decimal number that `text` begins with, by the rules of std::from_chars, off its
/// front; nullopt where there is none or it is out of range.
template <class Number>
[[nodiscard]] std::optional<Number> takeNumber(std::string_view& text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

/// The number that all of `text` is, by the same rules.
template <class Number>
[[nodiscard]] std::optional<Number> wholeNumber(std::string_view text) {
    const auto number = takeNumber<Number>(text);
    return text.empty() ? number : std::nullopt;
}

/// The path without the slashes at its end, but for the one of "/".
[[nodiscard]] inline std::string_view withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') {
        path.remove_suffix(1);
    }
    return path;
}

} // namespace platform
