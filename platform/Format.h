// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

/// Formatted text with format strings that are checked when the code is compiled.
///
/// The syntax is that of std::format: "{}" takes the next argument, "{:o}" an integer in octal,
/// "{:x}" in hexadecimal, "{{" and "}}" are braces.
namespace platform {

/// One value to be formatted. Texts are borrowed.
using FormatArgument = std::variant<std::int64_t, std::uint64_t, std::string_view>;

namespace detail {

enum class ArgumentKind : bool { text, integer };

template <class T>
consteval ArgumentKind argumentKind() {
    return std::integral<std::remove_cvref_t<T>> ? ArgumentKind::integer : ArgumentKind::text;
}

// Reaching this function while compiling is the error message for a bad format string.
void formatStringDoesNotMatchItsArguments();

/// Checks that every replacement field of `text` has an argument of a fitting kind.
consteval void checkFormat(std::string_view text, std::span<const ArgumentKind> arguments) {
    std::size_t used = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '{' && text[i] != '}') {
            continue;
        }
        if (i + 1 < text.size() && text[i + 1] == text[i]) {
            ++i;
            continue;
        }
        const std::size_t end = text.find('}', i);
        if (text[i] == '}' || end == std::string_view::npos || used == arguments.size()) {
            formatStringDoesNotMatchItsArguments();
        }
        const std::string_view field = text.substr(i + 1, end - i - 1);
        const bool numeric = field == ":o" || field == ":x";
        if (!field.empty() && !(numeric && arguments[used] == ArgumentKind::integer)) {
            formatStringDoesNotMatchItsArguments();
        }
        ++used;
        i = end;
    }
    if (used != arguments.size()) {
        formatStringDoesNotMatchItsArguments();
    }
}

template <class T>
FormatArgument makeArgument(const T& value) {
    if constexpr (std::signed_integral<T>) {
        return static_cast<std::int64_t>(value);
    } else if constexpr (std::unsigned_integral<T>) {
        return static_cast<std::uint64_t>(value);
    } else {
        return std::string_view(value);
    }
}

} // namespace detail

/// A format string for exactly the arguments `Args`; anything else does not compile.
template <class... Args>
class BasicFormatString {
public:
    template <std::convertible_to<std::string_view> Text>
    // NOLINTNEXTLINE(google-explicit-constructor,bugprone-forwarding-reference-overload)
    consteval BasicFormatString(const Text& text)
        : m_text(text) {
        constexpr std::array<detail::ArgumentKind, sizeof...(Args)> kinds{
            detail::argumentKind<Args>()...};
        detail::checkFormat(m_text, kinds);
    }
    [[nodiscard]] constexpr std::string_view text() const { return m_text; }

private:
    std::string_view m_text;
};

template <class... Args>
using FormatString = BasicFormatString<std::type_identity_t<Args>...>;

/// Formats `arguments` by `format`. Bytes of texts pass through unchanged, also when they are not
/// UTF-8. Throws std::invalid_argument when a format that was not checked does not fit.
[[nodiscard]] std::string formatArguments(std::string_view format,
                                          std::span<const FormatArgument> arguments);

/// Formats `args` by `format`; the checked form.
template <class... Args>
[[nodiscard]] std::string format(FormatString<Args...> format, const Args&... args) {
    const std::array<FormatArgument, sizeof...(Args)> arguments{detail::makeArgument(args)...};
    return formatArguments(format.text(), arguments);
}

} // namespace platform
