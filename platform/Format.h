// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

/// Formatted text with format strings that are checked when the code is compiled.
///
/// The syntax is that of std::format: "{}" takes the next text or integer, "{:o}" an integer in
/// octal, "{:x}" in hexadecimal, "{:.1f}" a number with this many digits behind the point, from 0
/// to 9, "{{" and "}}" are braces. Numbers are rounded as they are stored, halves to the even
/// digit; those that are none read "inf", "-inf", "nan". Nothing depends on the locale. Any thread.
namespace platform {

/// One value to be formatted. Texts are borrowed.
using FormatArgument = std::variant<std::int64_t, std::uint64_t, double, std::string_view>;

namespace detail {

enum class ArgumentKind : std::uint8_t { text, integer, number };

template <class T>
consteval ArgumentKind argumentKind() {
    if (std::floating_point<std::remove_cvref_t<T>>) {
        return ArgumentKind::number;
    }
    return std::integral<std::remove_cvref_t<T>> ? ArgumentKind::integer : ArgumentKind::text;
}

/// Whether what stands between the braces asks for an argument of this kind.
consteval bool fieldFits(std::string_view field, ArgumentKind kind) {
    if (kind == ArgumentKind::number) {
        return field.size() == 4 && field.starts_with(":.") && field[2] >= '0' && field[2] <= '9' &&
               field[3] == 'f';
    }
    return field.empty() || (kind == ArgumentKind::integer && (field == ":o" || field == ":x"));
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
        if (!fieldFits(text.substr(i + 1, end - i - 1), arguments[used])) {
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
    } else if constexpr (std::floating_point<T>) {
        // What is no number has a sign all the same, which means nothing.
        return std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : double{value};
    } else {
        return std::string_view(value);
    }
}

} // namespace detail

/// A format string for exactly the arguments `Args`; anything else does not compile.
template <class... Args>
class BasicFormatString {
public:
    /// Checks `text`, which is borrowed, while it is compiled. Fields are "{}", for integers "{:o}"
    /// and "{:x}" too, and for floating-point numbers "{:.Nf}" alone.
    template <std::convertible_to<std::string_view> Text>
    // NOLINTNEXTLINE(google-explicit-constructor,bugprone-forwarding-reference-overload)
    consteval BasicFormatString(const Text& text)
        : m_text(text) {
        constexpr std::array<detail::ArgumentKind, sizeof...(Args)> kinds{
            detail::argumentKind<Args>()...};
        detail::checkFormat(m_text, kinds);
    }
    /// The format as it was given.
    [[nodiscard]] constexpr std::string_view text() const { return m_text; }

private:
    std::string_view m_text;
};

/// A format string whose arguments' types are told by the arguments alone.
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
