// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "cli/QMCLICommand.h"

/// "qm tags": shows the tags of files, changes them, or lists those that the user has defined.
class QMCLITagsCommand final : public QMCLICommand {
public:
    static std::string_view name() { return "tags"; }
    static std::string_view summary() { return "View and manage macOS file tags."; }
    static std::string_view usage() {
        return "qm tags [--add=TAG|--remove=TAG|--set=TAGS|--clear|--list] [--json] <file>";
    }

    /// Status 10 without operands (unless "--list" is given), else 0, whatever happened to each
    /// file.
    std::int32_t runWithArguments(const QMCLIStrings& arguments,
                                  const QMCLIOptions& options) override;

    /// Prints the names of all defined tags; answers 0.
    std::int32_t listAllTags(bool json);
};
