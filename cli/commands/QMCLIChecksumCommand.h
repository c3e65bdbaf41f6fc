// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "cli/QMCLICommand.h"

/// "qm checksum": prints the digests of files, one line each or as JSON.
class QMCLIChecksumCommand final : public QMCLICommand {
public:
    static std::string_view name() { return "checksum"; }
    static std::string_view summary() { return "Calculate file checksums (SHA-256, SHA-1, MD5)."; }
    static std::string_view usage() {
        return "qm checksum [--sha256|--sha1|--md5] [--json] [--verify=file] <file> [file2 ...]";
    }

    /// Status 10 without operands, 4 when the last failing file was not found, 1 when it could not
    /// be read, else 0. "--verify" is accepted and compares nothing.
    std::int32_t runWithArguments(const QMCLIStrings& arguments,
                                  const QMCLIOptions& options) override;
};
