// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/DetachedProcess.h"

#include "platform/DispatchQueue.h"
#include "platform/Format.h"
#include "platform/linux/Environment.h"
#include "platform/linux/Spawn.h"

#include <algorithm>
#include <string_view>

#include <poll.h>
#include <unistd.h>

#include <sys/stat.h>

namespace platform::DetachedProcess {
namespace {

bool isExecutable(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

// In a child, so only functions that are safe in a signal handler. The socket takes the place of
// standard input, and nothing of the caller stays behind it.
void hold(int descriptor, int milliseconds) {
    ::dup2(descriptor, STDIN_FILENO);
    ::close_range(STDIN_FILENO + 1, ~0U, 0);
    pollfd socket{STDIN_FILENO, 0, 0};
    // No folder may be kept from being unmounted.
    if (::chdir("/") == 0) {
        ::poll(&socket, 1, milliseconds);
    }
}

} // namespace

bool canRun(const std::string& program) {
    if (program.find('/') != std::string::npos) {
        return isExecutable(program);
    }
    // Where the C library looks when nothing is said; an empty name is the current folder.
    const std::string_view path = environmentVariable("PATH");
    return std::ranges::any_of(
        foldersInList(path.empty() ? "/bin:/usr/bin" : path), [&program](std::string_view folder) {
            return isExecutable(format("{}/{}", folder.empty() ? "." : folder, program));
        });
}

void start(const std::vector<std::string>& command, const std::string& workingDirectory) {
    if (command.empty()) {
        return;
    }
    SpawnRequest request;
    request.command = command;
    request.workingDirectory = workingDirectory.empty() ? "/" : workingDirectory;
    request.startsSession = true;
    if (const pid_t process = spawn(request).process; process > 0) {
        DispatchQueue::async(DispatchQueue::QualityOfService::defaultClass,
                             [process] { waitForProcess(process); });
    }
}

void keepOpen(int descriptor, std::chrono::milliseconds duration) {
    const int milliseconds = static_cast<int>(duration.count());
    const pid_t process = descriptor < 0 ? -1 : ::fork();
    if (process == 0) {
        // The grandchild belongs to no session of ours, and nobody has to wait for it.
        ::setsid();
        if (::fork() == 0) {
            hold(descriptor, milliseconds);
        }
        ::_exit(0);
    }
    if (process > 0) {
        waitForProcess(process);
    }
}

} // namespace platform::DetachedProcess
