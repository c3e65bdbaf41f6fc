// SPDX-License-Identifier: Apache-2.0
#include "cli/QMCLIArguments.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace {

using Request = QMCLIGlobalArguments::Request;

constexpr std::string_view flagValue = "true";

bool takesValue(std::string_view shortOption) {
    return shortOption == "p";
}

bool isShortOption(std::string_view word) {
    // A character counts in units of UTF-16: those that take four bytes of UTF-8 are two.
    constexpr std::size_t longestCharacter = 3;
    if (!word.starts_with('-') || word.size() < 2 || word.size() > 1 + longestCharacter) {
        return false;
    }
    // All bytes of a character but its first begin with the bits 10.
    return std::ranges::all_of(word.substr(2), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
    });
}

void setLongOption(QMCLIOptions& options, std::string_view word) {
    const std::string_view text = word.substr(2);
    const auto equals = text.find('=');
    const std::string_view value =
        equals == std::string_view::npos ? flagValue : text.substr(equals + 1);
    options.insert_or_assign(std::string(text.substr(0, equals)), std::string(value));
}

// Answers how many words the short option at the front of `words` takes up.
std::size_t setShortOption(QMCLIOptions& options, std::span<const std::string> words) {
    std::string name = words.front().substr(1);
    const bool hasValue = takesValue(name) && words.size() > 1 && !words[1].starts_with('-');
    options.insert_or_assign(std::move(name), hasValue ? words[1] : std::string(flagValue));
    return hasValue ? 2 : 1;
}

} // namespace

bool qm_isFlagSet(const QMCLIOptions& options, std::string_view name) {
    const auto option = options.find(name);
    return option != options.end() && option->second == flagValue;
}

QMCLIGlobalArguments qm_readGlobalArguments(const QMCLIStrings& words) {
    QMCLIGlobalArguments result;
    for (const std::string& word : words) {
        if (word == "--version" || word == "-v") {
            result.request = Request::version;
            return result;
        }
        if (word == "--help" || word == "-h") {
            result.request = Request::help;
            return result;
        }
        if (word == "--json" || word == "--verbose" || word == "--quiet") {
            result.options.insert_or_assign(word.substr(2), flagValue);
        } else if (word == "--no-color") {
            result.disablesColor = true;
        } else {
            result.remaining.push_back(word);
        }
    }
    return result;
}

QMCLICommandArguments qm_readCommandArguments(const QMCLIStrings& words,
                                              QMCLIOptions globalOptions) {
    QMCLICommandArguments result{{}, std::move(globalOptions)};
    std::span<const std::string> rest(words);
    while (!rest.empty()) {
        const std::string& word = rest.front();
        std::size_t used = 1;
        if (word.starts_with("--")) {
            setLongOption(result.options, word);
        } else if (isShortOption(word)) {
            used = setShortOption(result.options, rest);
        } else {
            result.positional.push_back(word);
        }
        rest = rest.subspan(used);
    }
    return result;
}
