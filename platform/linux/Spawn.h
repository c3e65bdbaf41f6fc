// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace platform {

/// A program to be run, and how its process differs from this one. Whatever is not said here it
/// inherits, but for open files and for signals, which are neither blocked nor ignored.
struct SpawnRequest {
    static constexpr int nullDevice = -1;

    std::string program;              ///< its path
    std::vector<std::string> command; ///< the words it sees: its name and its arguments
    /// Standard input, output and error: descriptors of this process above 2, or `nullDevice`.
    std::array<int, 3> streams{nullDevice, nullDevice, nullDevice};
    std::string workingDirectory; ///< empty for this process's own
    bool startsSession = false;   ///< without a terminal, not reached by this one's signals
};

/// A process that was started, which the caller has to wait for, or why none was.
struct SpawnResult {
    pid_t process = -1; ///< -1 when none was started
    int error = 0;      ///< the system's error number then
};

/// Starts the program, without a shell. Any thread.
[[nodiscard]] SpawnResult spawn(const SpawnRequest& request);

/// Starts the program as no child of this process, so that nobody has to wait for it. Any thread.
void spawnDetached(const SpawnRequest& request);

/// Runs `action` in a copy of this process that ends with it, and waits for that. Its signals are
/// blocked, so no handler of this process's own runs there, and its end is for nobody else to see:
/// it sends no signal, and those who wait for just any child do not get it. As the copy has this
/// thread alone, `action` may call only what is safe in a signal handler. Nothing happens when no
/// process can be made. Any thread.
void runInCopy(const std::function<void()>& action);

/// Waits until `process`, a child, ends. Answers its exit status or the number of the signal that
/// ended it; nullopt when the system keeps no status of it. Any thread.
std::optional<int> waitForProcess(pid_t process);

} // namespace platform
