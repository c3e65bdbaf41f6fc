// SPDX-License-Identifier: Apache-2.0
#include "platform/LocalizedStrings.h"

#include "platform/linux/TextPieces.h"
#include "platform/linux/Utf8.h"

#include <algorithm>
#include <clocale>
#include <cstddef>
#include <optional>

#include <libintl.h>

namespace platform::LocalizedStrings {
namespace {

constexpr std::string_view digits = "0123456789";

/// What a percent sign begins.
struct Conversion {
    std::size_t length = 1;
    /// Which argument it asks for, from 1 on; 0 is none, and nullopt the next one.
    std::optional<std::size_t> position = 0;
};

/// Where `text` goes on behind `start` with something else than `characters`.
std::size_t skipped(std::string_view text, std::size_t start, std::string_view characters) {
    return std::min(text.find_first_not_of(characters, start), text.size());
}

/// The conversion that `text` begins with; where it is none, the percent sign alone. There is no
/// flag " ", which in "100 % done" is a blank.
Conversion conversionIn(std::string_view text) {
    if (text.starts_with("%%")) {
        return {.length = 2};
    }
    constexpr std::string_view kinds = "@dDiuUxXoOfFeEgGaAsScC";
    std::optional<std::size_t> position;
    std::size_t at = skipped(text, 1, digits);
    if (at > 1 && at < text.size() && text[at] == '$') {
        // No argument has a number that is too large.
        position = wholeNumber<std::size_t>(text.substr(1, at - 1)).value_or(0);
        ++at;
    } else {
        at = 1;
    }
    at = skipped(text, skipped(text, at, "-+#'0"), digits);
    if (at < text.size() && text[at] == '.') {
        at = skipped(text, at + 1, digits);
    }
    at = skipped(text, at, "hlLqjzt");
    if (at == text.size() || kinds.find(text[at]) == std::string_view::npos) {
        return {};
    }
    return {.length = at + 1, .position = position};
}

} // namespace

bool bindCatalogue(const std::string& domain, const std::string& folder) {
    if (domain.empty() || domain.find('/') != std::string::npos || !folder.starts_with('/')) {
        return false;
    }
    // NOLINTBEGIN(concurrency-mt-unsafe): the contract keeps other threads away
    const char* const chosen = std::setlocale(LC_MESSAGES, nullptr);
    if (chosen != nullptr && std::string_view(chosen) == "C") {
        // A locale that this machine does not have leaves the keys to be shown.
        static_cast<void>(std::setlocale(LC_MESSAGES, ""));
    }
    // NOLINTEND(concurrency-mt-unsafe)
    return ::bindtextdomain(domain.c_str(), folder.c_str()) != nullptr &&
           ::bind_textdomain_codeset(domain.c_str(), "UTF-8") != nullptr &&
           ::textdomain(domain.c_str()) != nullptr;
}

std::string stringForKey(const std::string& key) {
    // The empty key names the catalogue's own header, and so does one that seems to be empty.
    if (key.empty() || key.find('\0') != std::string::npos) {
        return key;
    }
    const std::string_view text = ::gettext(key.c_str());
    return isUTF8(text) ? std::string(text) : key;
}

std::string format(const std::string& key, std::initializer_list<std::string_view> arguments) {
    return replacingConversions(stringForKey(key), std::span(arguments.begin(), arguments.size()));
}

std::string replacingConversions(std::string_view text,
                                 std::span<const std::string_view> arguments) {
    std::string result;
    std::size_t next = 1;
    for (auto sign = text.find('%'); sign != text.npos; sign = text.find('%')) {
        result.append(text.substr(0, sign));
        text.remove_prefix(sign);
        const Conversion conversion = conversionIn(text);
        const std::size_t position = conversion.position ? *conversion.position : next++;
        if (text.starts_with("%%")) {
            result.push_back('%');
        } else if (position >= 1 && position <= arguments.size()) {
            result.append(arguments[position - 1]);
        } else {
            result.append(text.substr(0, conversion.length));
        }
        text.remove_prefix(conversion.length);
    }
    return result.append(text);
}

} // namespace platform::LocalizedStrings
