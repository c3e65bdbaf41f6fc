// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "cli/QMCLICommand.h"

/// "qm tags": not part of this build yet; says so.
class QMCLITagsCommand final : public QMCLICommand {
public:
    static std::string_view name() { return "tags"; }
    static std::string_view summary() { return "View and manage macOS file tags."; }
    static std::string_view usage() {
        return "qm tags [--add=TAG|--remove=TAG|--set=TAGS|--clear|--list] [--json] <file>";
    }

    /// Status 10 without operands, else 1.
    std::int32_t runWithArguments(const QMCLIStrings& arguments,
                                  const QMCLIOptions& options) override;
};
