// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "cli/QMCLICommand.h"

/// "qm open": not part of this build yet; says so.
class QMCLIOpenCommand final : public QMCLICommand {
public:
    static std::string_view name() { return "open"; }
    static std::string_view summary() { return "Open path or URL in Quillmere."; }
    static std::string_view usage() {
        return "qm open [-p left|right] [-t] [-w] [-b] <path> [path2]";
    }

    /// Status 10 without operands, else 1.
    std::int32_t runWithArguments(const QMCLIStrings& arguments,
                                  const QMCLIOptions& options) override;
};
