// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/DetachedProcess.h"

#include "platform/linux/Environment.h"
#include "platform/linux/Spawn.h"

#include <csignal>
#include <string_view>

#include <poll.h>
#include <unistd.h>

#include <sys/stat.h>

namespace platform::DetachedProcess {
namespace {

bool isExecutable(const std::string& path) {
    struct stat status {};
    return path.starts_with('/') && ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

// A signal must not run the caller's handlers in a process that is not the caller.
void resetSignals() {
    constexpr int lastStandardSignal = 31;
    for (int number = 1; number <= lastStandardSignal; ++number) {
        ::signal(number, SIG_DFL); // NOLINT(cert-err33-c): two of them cannot be changed
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::pthread_sigmask(SIG_SETMASK, &none, nullptr);
}

// Runs in a child of what may have several threads, so only functions that are safe in a signal
// handler. The socket takes the place of standard input, and nothing else of the caller stays.
void hold(int descriptor, int milliseconds) {
    resetSignals();
    if (::setsid() < 0 || ::dup2(descriptor, STDIN_FILENO) < 0 ||
        ::close_range(STDIN_FILENO + 1, ~0U, 0) != 0 || ::chdir("/") != 0) {
        return;
    }
    pollfd socket{STDIN_FILENO, 0, 0};
    ::poll(&socket, 1, milliseconds);
}

} // namespace

std::optional<std::string> findProgram(const std::string& program) {
    if (program.find('/') != std::string::npos) {
        return isExecutable(program) ? std::optional(program) : std::nullopt;
    }
    // Where the C library looks when nothing is said.
    const std::string_view folders = environmentVariable("PATH");
    for (const auto folder : foldersInList(folders.empty() ? "/bin:/usr/bin" : folders)) {
        std::string path(folder);
        path.append("/").append(program);
        if (!folder.empty() && isExecutable(path)) {
            return path;
        }
    }
    return std::nullopt;
}

void start(const std::vector<std::string>& command, const std::string& workingDirectory) {
    const auto program = command.empty() ? std::nullopt : findProgram(command.front());
    if (program) {
        SpawnRequest request;
        request.program = *program;
        request.command = command;
        request.workingDirectory = workingDirectory.empty() ? "/" : workingDirectory;
        request.startsSession = true;
        spawnDetached(request);
    }
}

void keepOpen(int descriptor, std::chrono::milliseconds duration) {
    const int milliseconds = static_cast<int>(duration.count());
    if (descriptor >= 0) {
        runInCopy([=] {
            if (::_Fork() == 0) {
                hold(descriptor, milliseconds);
            }
        });
    }
}

} // namespace platform::DetachedProcess
