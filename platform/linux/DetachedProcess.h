// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <string>
#include <vector>

/// Programs that are started and left to themselves. Any thread.
namespace platform::DetachedProcess {

/// Whether `program`, an absolute path or a name to be looked for in PATH, may be run.
[[nodiscard]] bool canRun(const std::string& program);

/// Runs `command`, a program as above and its arguments, in `workingDirectory` (the root folder
/// when that is empty): without a shell, in a session of its own, with nothing to read, nowhere to
/// write and none of the caller's open files. Nothing happens when that cannot be done or
/// `command` is empty. The process is waited for in the background.
void start(const std::vector<std::string>& command, const std::string& workingDirectory);

/// Keeps the socket `descriptor` open for `duration`, or until its other end is closed, also after
/// this process has ended: a process of its own holds it and nothing else.
void keepOpen(int descriptor, std::chrono::milliseconds duration);

} // namespace platform::DetachedProcess
