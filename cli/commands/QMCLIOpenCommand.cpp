// SPDX-License-Identifier: Apache-2.0
#include "cli/commands/QMCLIOpenCommand.h"

#include "cli/Console.h"
#include "platform/Application.h"
#include "platform/ScriptRunner.h"
#include "platform/Workspace.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <iterator>
#include <optional>
#include <thread>

namespace {

using platform::format;
using Failure = platform::ScriptRunner::Failure;

constexpr std::int32_t failureStatus = 1;
constexpr std::int32_t usageStatus = 10;

// What an application that was just started is given before it is asked again.
constexpr std::chrono::seconds startTime{2};

constexpr std::array<std::string_view, 5> remotePrefixes{"sftp://", "ftp://", "s3://", "smb://",
                                                         "webdav://"};
// Servers that the application connects to by itself; it navigates to the others like to folders.
constexpr std::array<std::string_view, 3> connectionPrefixes{"sftp://", "ftp://", "s3://"};

bool startsWithAny(std::string_view text, const auto& prefixes) {
    return std::ranges::any_of(
        prefixes, [text](std::string_view prefix) { return text.starts_with(prefix); });
}

std::string_view paneFor(const QMCLIOptions& options) {
    const auto pane = options.find("p");
    return pane != options.end() && pane->second == "right" ? "right" : "left";
}

std::string targetLine(std::string_view verb, std::string_view target, std::string_view pane) {
    return format("    {} to \"{}\" in active tab of {} pane\n", verb, target, pane);
}

// The targets are escaped, which leaves the prefixes as they are.
std::string targetLines(const QMCLIStrings& targets, std::string_view pane) {
    if (targets.size() > 1) {
        return targetLine("navigate", targets[0], "left")
            .append(targetLine("navigate", targets[1], "right"));
    }
    const bool connects = startsWithAny(targets.front(), connectionPrefixes);
    return targetLine(connects ? "connect" : "navigate", targets.front(), pane);
}

const std::string& messageOf(const Failure& failure) {
    static const std::string unknown = "Unknown error";
    return failure.message ? *failure.message : unknown;
}

// The phrases by which systems in English and in German tell that nobody is there.
bool saysNotRunning(const Failure& failure) {
    const std::string& message = messageOf(failure);
    return message.find("not running") != std::string::npos ||
           message.find("Verbindung") != std::string::npos;
}

// Runs the script, once more when the application had to be started.
std::optional<Failure> runScript(const std::string& identifier, const std::string& script) {
    auto failure = platform::ScriptRunner::run(identifier, script);
    if (failure && saysNotRunning(*failure)) {
        platform::Workspace::openApplication(identifier);
        std::this_thread::sleep_for(startTime);
        failure = platform::ScriptRunner::run(identifier, script);
    }
    return failure;
}

} // namespace

std::int32_t QMCLIOpenCommand::runWithArguments(const QMCLIStrings& arguments,
                                                const QMCLIOptions& options) {
    if (arguments.empty()) {
        qm_error("No path specified. Usage: {}", usage());
        return usageStatus;
    }
    QMCLIStrings targets;
    std::ranges::transform(arguments, std::back_inserter(targets), targetForArgument);
    const std::string identifier(platform::applicationIdentifier());
    const auto failure = runScript(identifier, scriptForTargets(targets, options, identifier));
    if (failure) {
        qm_error("Failed: {}", messageOf(*failure));
        return failureStatus;
    }
    if (!qm_isFlagSet(options, "quiet")) {
        qm_success("Opened in Quillmere");
    }
    return 0;
}

std::string QMCLIOpenCommand::targetForArgument(const std::string& argument) {
    return startsWithAny(argument, remotePrefixes) ? argument : qm_absolutePath(argument);
}

std::string QMCLIOpenCommand::scriptForTargets(std::span<const std::string> targets,
                                               const QMCLIOptions& options,
                                               std::string_view identifier) const {
    std::string script = format("tell application id \"{}\"\n", identifier);
    if (!qm_isFlagSet(options, "b")) {
        script.append("  activate\n");
    }
    if (!targets.empty()) {
        QMCLIStrings escaped;
        for (const std::string& target : targets.first(std::min<std::size_t>(targets.size(), 2))) {
            escaped.push_back(escapeForAppleScript(target));
        }
        script.append("  tell front browser window\n")
            .append(targetLines(escaped, paneFor(options)))
            .append("  end tell\n");
    }
    return script.append("end tell\n");
}

std::string QMCLIOpenCommand::escapeForAppleScript(std::string_view text) const {
    std::string result;
    for (const char c : text) {
        if (c == '\\' || c == '"') {
            result.push_back('\\');
        }
        result.push_back(c);
    }
    return result;
}
