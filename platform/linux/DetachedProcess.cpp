// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/DetachedProcess.h"

#include "platform/DispatchQueue.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <unistd.h>

#include <sys/stat.h>
#include <sys/wait.h>

namespace platform::DetachedProcess {
namespace {

bool isExecutable(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

std::string_view searchPath() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in the process changes its environment
    const char* path = std::getenv("PATH");
    return path == nullptr ? "/usr/local/bin:/usr/bin:/bin" : path;
}

/// How the new process differs from this one.
class Setting {
public:
    explicit Setting(const std::string& workingDirectory) {
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawnattr_init(&attributes);
        closeFiles();
        ::posix_spawn_file_actions_addchdir_np(
            &actions, workingDirectory.empty() ? "/" : workingDirectory.c_str());
        resetSignals();
    }
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;
    Setting(Setting&&) = delete;
    Setting& operator=(Setting&&) = delete;
    ~Setting() {
        ::posix_spawnattr_destroy(&attributes);
        ::posix_spawn_file_actions_destroy(&actions);
    }

    pid_t spawn(std::vector<char*>& words) const {
        pid_t process = -1;
        const int failure =
            ::posix_spawnp(&process, words.front(), &actions, &attributes, words.data(), ::environ);
        return failure == 0 ? process : -1;
    }

private:
    void closeFiles() {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            ::posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_RDWR, 0);
        }
        ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    }

    // What this process ignores or blocks is its own affair.
    void resetSignals() {
        sigset_t all;
        sigset_t none;
        ::sigfillset(&all);
        ::sigemptyset(&none);
        ::posix_spawnattr_setsigdefault(&attributes, &all);
        ::posix_spawnattr_setsigmask(&attributes, &none);
        constexpr int flags = POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
        ::posix_spawnattr_setflags(&attributes, flags);
    }

    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};
};

void waitFor(pid_t process) {
    while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
    }
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
    std::string_view rest = searchPath();
    while (!rest.empty()) {
        const auto end = rest.find(':');
        std::string path(rest.substr(0, end));
        path.append("/").append(program);
        if (isExecutable(path)) {
            return true;
        }
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    return false;
}

void start(const std::vector<std::string>& command, const std::string& workingDirectory) {
    if (command.empty()) {
        return;
    }
    std::vector<std::string> owned = command;
    std::vector<char*> words;
    words.reserve(owned.size() + 1);
    for (std::string& word : owned) {
        words.push_back(word.data());
    }
    words.push_back(nullptr);
    if (const pid_t process = Setting(workingDirectory).spawn(words); process > 0) {
        DispatchQueue::async(DispatchQueue::QualityOfService::defaultClass,
                             [process] { waitFor(process); });
    }
}

void keepOpen(int descriptor, std::chrono::milliseconds duration) {
    const int milliseconds = static_cast<int>(duration.count());
    const pid_t process = ::fork();
    if (process == 0) {
        // The grandchild belongs to no session of ours, and nobody has to wait for it.
        ::setsid();
        if (::fork() == 0) {
            hold(descriptor, milliseconds);
        }
        ::_exit(0);
    }
    if (process > 0) {
        waitFor(process);
    }
}

} // namespace platform::DetachedProcess
