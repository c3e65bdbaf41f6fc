// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "cli/QMCLICommand.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// Reads the command line, does what its global words ask for, and runs the command it names.
class QMCLIDispatcher {
public:
    /// Command words and their classes, in the order in which they are shown.
    using Commands = std::vector<std::pair<std::string, QMCLICommandClass>>;

    /// Knows the commands info, checksum, tags and open.
    QMCLIDispatcher();

    /// Runs the command line of `argc` NUL-terminated words at `argv`, the first of which is the
    /// program's name. Answers the exit status: 0 for version and help, 10 for an unknown command,
    /// else the command's own.
    std::int32_t runWithArgc(std::int32_t argc, const char* const* argv);

    /// Prints the help for the whole tool.
    void printHelp() const;

    [[nodiscard]] const Commands& commands() const { return m_commands; }
    void setCommands(Commands commands) { m_commands = std::move(commands); }

private:
    [[nodiscard]] const QMCLICommandClass* commandClass(const std::string& word) const;
    std::int32_t runCommand(QMCLIStrings words, QMCLIOptions options);

    Commands m_commands;
};
