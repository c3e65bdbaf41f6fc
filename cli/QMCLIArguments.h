// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// The reading of the command line, free of any effect.

using QMCLIStrings = std::vector<std::string>;

/// Options by name, without their dashes. A flag has the value "true"; the last of equals counts.
using QMCLIOptions = std::map<std::string, std::string, std::less<>>;

/// Whether the option `name` is given as a flag: its value is exactly "true".
[[nodiscard]] bool qm_isFlagSet(const QMCLIOptions& options, std::string_view name);

/// What the words say that are global wherever they stand.
struct QMCLIGlobalArguments {
    enum class Request : std::uint8_t { command, version, help };
    Request request = Request::command; ///< version and help end the reading
    bool disablesColor = false;         ///< "--no-color" was read
    QMCLIOptions options;               ///< "json", "verbose", "quiet"
    QMCLIStrings remaining;             ///< all other words, in order
};

/// Reads the global words of the whole line, which is given without the program's name.
[[nodiscard]] QMCLIGlobalArguments qm_readGlobalArguments(const QMCLIStrings& words);

/// What follows the command word: operands, and options added to the global ones.
struct QMCLICommandArguments {
    QMCLIStrings positional;
    QMCLIOptions options;
};

/// Reads the words after the command word. "--name=value" and "--name" are options; so are a dash
/// and one character, of which "-p" takes the next word for its value unless that begins with a
/// dash. All else is an operand; "--" ends nothing.
[[nodiscard]] QMCLICommandArguments qm_readCommandArguments(const QMCLIStrings& words,
                                                            QMCLIOptions globalOptions);
