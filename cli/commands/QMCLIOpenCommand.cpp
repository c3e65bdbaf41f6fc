// SPDX-License-Identifier: Apache-2.0
#include "cli/commands/QMCLIOpenCommand.h"

#include "cli/Console.h"

std::int32_t QMCLIOpenCommand::runWithArguments(const QMCLIStrings& arguments,
                                                const QMCLIOptions& /*options*/) {
    if (arguments.empty()) {
        qm_error("No path specified. Usage: {}", usage());
        return 10;
    }
    qm_error("The command \"{}\" is not available in this build.", name());
    return 1;
}
