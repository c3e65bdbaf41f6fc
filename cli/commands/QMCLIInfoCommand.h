// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "cli/QMCLICommand.h"

/// "qm info": prints the properties of files, as a block of lines, one line each, or JSON.
class QMCLIInfoCommand final : public QMCLICommand {
public:
    static std::string_view name() { return "info"; }
    static std::string_view summary() { return "Show file metadata and properties."; }
    static std::string_view usage() { return "qm info [--json] [--short] <file> [file2 ...]"; }

    /// Status 10 without operands, else 0: a missing file is reported and passed over.
    std::int32_t runWithArguments(const QMCLIStrings& arguments,
                                  const QMCLIOptions& options) override;
};
