// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/FileHandle.h"

#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace platform {

/// A child process. It reads nothing and gets none of this process's open files. When the last
/// pointer to it goes before it has ended, it runs on and is cleared away when it ends.
class Task {
public:
    /// Where an output of the process goes.
    enum class Output : bool { nullDevice, pipe };

    /// What is run: a program's path, which is not looked for elsewhere, and its arguments, which
    /// reach it as they are, through no shell.
    struct Command {
        std::string executable;                     ///< bytes, without NUL
        std::vector<std::string> arguments;         ///< without the program's own name
        Output standardOutput = Output::nullDevice; ///< a pipe for `standardOutput()`
        Output standardError = Output::nullDevice;  ///< a pipe for `standardError()`
    };

    /// Why a process was not started, in the system's words.
    struct LaunchError {
        std::string localizedDescription; ///< for people; UTF-8
    };

    /// Starts the process. Any thread.
    [[nodiscard]] static std::variant<std::shared_ptr<Task>, LaunchError>
    launch(const Command& command);

    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;
    Task(Task&&) = delete;
    Task& operator=(Task&&) = delete;
    ~Task();

    /// The reading end of the pipe; without a pipe, a closed handle. It ends when every process has
    /// closed the writing end, also those that the process has started. Somebody must read both
    /// pipes at the same time, or a process that writes much to one of them waits for ever.
    [[nodiscard]] FileHandle& standardOutput() { return m_standardOutput; }
    /// The same for standard error.
    [[nodiscard]] FileHandle& standardError() { return m_standardError; }

    /// Asks the process to end (SIGTERM); nothing once it has. Any thread, at any time.
    void terminate() const;

    /// Waits until the process has ended, though what it has started may go on. Answers its exit
    /// status, or the number of the signal that ended it; both are 0 only for success. -1 when the
    /// application lets the system forget its children's statuses. Any thread.
    int waitUntilExit();

private:
    class Process;
    Task(std::unique_ptr<Process> process, FileHandle standardOutput, FileHandle standardError);

    std::unique_ptr<Process> m_process;
    FileHandle m_standardOutput;
    FileHandle m_standardError;
};

} // namespace platform
