// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "cli/QMCLIArguments.h"

#include <cstdint>
#include <memory>
#include <string_view>

/// A command of the tool. One object serves one run and keeps nothing afterwards. Every command
/// class also has the static members `name`, `summary` and `usage`, which QMCLICommandClass lists.
class QMCLICommand {
public:
    QMCLICommand() = default;
    QMCLICommand(const QMCLICommand&) = delete;
    QMCLICommand& operator=(const QMCLICommand&) = delete;
    QMCLICommand(QMCLICommand&&) = delete;
    QMCLICommand& operator=(QMCLICommand&&) = delete;
    virtual ~QMCLICommand() = default;

    /// Runs the command on its operands, in command-line order, and its options. Answers the exit
    /// status.
    virtual std::int32_t runWithArguments(const QMCLIStrings& arguments,
                                          const QMCLIOptions& options) = 0;
};

/// A command class as a value: what is known of it without an object, and how to make one.
struct QMCLICommandClass {
    std::string_view (*name)();    ///< the command word
    std::string_view (*summary)(); ///< one line
    std::string_view (*usage)();   ///< the usage line, beginning with "qm "
    std::unique_ptr<QMCLICommand> (*create)();
};

/// The value for the command class `Command`.
template <class Command>
constexpr QMCLICommandClass qm_commandClass() {
    return {&Command::name, &Command::summary, &Command::usage,
            []() -> std::unique_ptr<QMCLICommand> { return std::make_unique<Command>(); }};
}
