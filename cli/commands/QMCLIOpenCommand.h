// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "cli/QMCLICommand.h"

#include <span>
#include <string>
#include <string_view>

/// "qm open": hands one or two paths or URLs to the running application, which it starts when it
/// is not running, as a script in AppleScript.
class QMCLIOpenCommand final : public QMCLICommand {
public:
    static std::string_view name() { return "open"; }
    static std::string_view summary() { return "Open path or URL in Quillmere."; }
    static std::string_view usage() {
        return "qm open [-p left|right] [-t] [-w] [-b] <path> [path2]";
    }

    /// Status 0 when the application ran the script, 1 when not, 10 without operands. Waits two
    /// seconds for an application that has to be started.
    std::int32_t runWithArguments(const QMCLIStrings& arguments,
                                  const QMCLIOptions& options) override;

    /// What an operand names: a URL with one of the prefixes "sftp://", "ftp://", "s3://",
    /// "smb://" and "webdav://" as it is, anything else as an absolute path.
    [[nodiscard]] static std::string targetForArgument(const std::string& argument);

    /// The script that shows `targets` in the application `identifier`: one in the pane that the
    /// option "p" names, two in both panes; more are ignored. The option "b" leaves the
    /// application in the background. Each line ends with a line feed.
    [[nodiscard]] std::string scriptForTargets(std::span<const std::string> targets,
                                               const QMCLIOptions& options,
                                               std::string_view identifier) const;

    /// `text` as it has to stand inside a literal string of AppleScript: backslashes and double
    /// quotes get a backslash in front, all other characters stay.
    [[nodiscard]] std::string escapeForAppleScript(std::string_view text) const;
};
