// SPDX-License-Identifier: Apache-2.0
#include "platform/PropertyListReadings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <system_error>
#include <variant>

#include <locale.h> // NOLINT(modernize-deprecated-headers): newlocale is in this one

namespace platform {
namespace {

constexpr std::string_view digits = "0123456789";

/// Calls the reader for texts or the one for numbers, which may be true or false.
template <class Result, class OfText, class OfNumber>
Result reading(const PropertyList& value, Result nothing, OfText ofText, OfNumber ofNumber) {
    if (const std::string* const text = value.string()) {
        return ofText(*text);
    }
    if (const bool* const flag = std::get_if<bool>(&value.value())) {
        return ofNumber(std::int64_t{*flag ? 1 : 0});
    }
    if (const auto* const integer = std::get_if<std::int64_t>(&value.value())) {
        return ofNumber(*integer);
    }
    if (const auto* const number = std::get_if<double>(&value.value())) {
        return ofNumber(*number);
    }
    return nothing;
}

std::string_view withoutBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
}

bool hasSign(std::string_view text) {
    return text.starts_with('-') || text.starts_with('+');
}

std::size_t countOfDigits(std::string_view text) {
    return std::min(text.find_first_not_of(digits), text.size());
}

bool boolOfText(std::string_view text) {
    text = withoutBlanks(text);
    if (hasSign(text)) {
        text.remove_prefix(1);
    } else if (!text.empty() && std::string_view("YyTt").find(text.front()) != text.npos) {
        return true;
    }
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    return countOfDigits(text) > 0;
}

std::int64_t integerOfText(std::string_view text) {
    using Limits = std::numeric_limits<std::int64_t>;
    text = withoutBlanks(text);
    const bool isNegative = text.starts_with('-');
    if (text.starts_with('+')) {
        text.remove_prefix(1);
    }
    if (countOfDigits(text.substr(isNegative ? 1 : 0)) == 0) {
        return 0;
    }
    std::int64_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        return isNegative ? Limits::min() : Limits::max();
    }
    return value;
}

std::int64_t integerOfDouble(double number) {
    using Limits = std::numeric_limits<std::int64_t>;
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (std::isnan(number)) {
        return 0;
    }
    if (number >= limit) {
        return Limits::max();
    }
    return number < -limit ? Limits::min() : static_cast<std::int64_t>(number);
}

/// The length of the decimal number at the start of `text`; 0 when there is none.
std::size_t lengthOfDecimal(std::string_view text) {
    std::size_t end = hasSign(text) ? 1 : 0;
    const std::size_t whole = countOfDigits(text.substr(end));
    end += whole;
    std::size_t fraction = 0;
    if (end < text.size() && text[end] == '.') {
        fraction = countOfDigits(text.substr(end + 1));
        end += 1 + fraction;
    }
    if (whole + fraction == 0) {
        return 0;
    }
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        const std::size_t start = end + (hasSign(text.substr(end + 1)) ? 2 : 1);
        const std::size_t exponent = countOfDigits(text.substr(start));
        end = exponent == 0 ? end : start + exponent;
    }
    return end;
}

double doubleOfText(std::string_view text) {
    static const ::locale_t plain = ::newlocale(LC_ALL_MASK, "C", nullptr);
    text = withoutBlanks(text);
    const std::string number(text.substr(0, lengthOfDecimal(text)));
    return ::strtod_l(number.c_str(), nullptr, plain);
}

std::string textOfInteger(std::int64_t number) {
    return std::to_string(number);
}

std::string textOfDouble(double number) {
    constexpr int precision = 16;
    std::array<char, 32> buffer{}; // a sign, 16 digits, a point, and an exponent of up to 5
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                            std::chars_format::general, precision);
    return {buffer.data(), end};
}

} // namespace

bool boolValue(const PropertyList& value) {
    return reading(value, false, boolOfText, [](auto number) { return number != 0; });
}

std::int64_t integerValue(const PropertyList& value) {
    struct OfNumber {
        std::int64_t operator()(std::int64_t number) const { return number; }
        std::int64_t operator()(double number) const { return integerOfDouble(number); }
    };
    return reading(value, std::int64_t{0}, integerOfText, OfNumber());
}

double doubleValue(const PropertyList& value) {
    return reading(value, 0.0, doubleOfText,
                   [](auto number) { return static_cast<double>(number); });
}

std::optional<std::string> stringValue(const PropertyList& value) {
    struct OfNumber {
        std::optional<std::string> operator()(std::int64_t number) const {
            return textOfInteger(number);
        }
        std::optional<std::string> operator()(double number) const { return textOfDouble(number); }
    };
    return reading(
        value, std::optional<std::string>(),
        [](const std::string& text) { return std::optional(text); }, OfNumber());
}

} // namespace platform
