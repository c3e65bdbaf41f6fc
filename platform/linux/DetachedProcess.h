// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

/// Processes that are started and left to themselves: children of nobody here, each in a session
/// of its own. Any thread.
namespace platform::DetachedProcess {

/// The path of `program`, which is an absolute path or a name to be looked for in the folders of
/// PATH; nullopt when there is none, or none that may be run. Folders that are not absolute do not
/// count.
[[nodiscard]] std::optional<std::string> findProgram(const std::string& program);

/// Runs `command`, a program as above and its arguments, in `workingDirectory` (the root folder
/// when that is empty): without a shell, with nothing to read, nowhere to write and none of the
/// caller's open files. Nothing happens when that cannot be done or `command` is empty.
void start(const std::vector<std::string>& command, const std::string& workingDirectory);

/// Keeps the socket `descriptor` open for `duration`, or until its other end is closed, also after
/// this process has ended: a process of its own holds it and nothing else. Nothing happens for a
/// negative descriptor.
void keepOpen(int descriptor, std::chrono::milliseconds duration);

} // namespace platform::DetachedProcess
