// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Spawn.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <sys/syscall.h>
#include <sys/wait.h>

namespace platform {
namespace {

/// Owns what the C library keeps about a process to be started.
class Setting {
public:
    explicit Setting(const SpawnRequest& request) {
        ::posix_spawn_file_actions_init(&m_actions);
        ::posix_spawnattr_init(&m_attributes);
        for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
            note(connect(stream, request.streams.at(static_cast<std::size_t>(stream))));
        }
        note(::posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1));
        if (!request.workingDirectory.empty()) {
            note(::posix_spawn_file_actions_addchdir_np(&m_actions,
                                                        request.workingDirectory.c_str()));
        }
        setAttributes(request.startsSession);
    }
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;
    Setting(Setting&&) = delete;
    Setting& operator=(Setting&&) = delete;
    ~Setting() {
        ::posix_spawnattr_destroy(&m_attributes);
        ::posix_spawn_file_actions_destroy(&m_actions);
    }

    // Safe in a child of a process with several threads: it allocates nothing.
    SpawnResult spawn(const char* program, std::vector<char*>& words) const {
        SpawnResult result;
        result.error = m_error != 0 ? m_error
                                    : ::posix_spawn(&result.process, program, &m_actions,
                                                    &m_attributes, words.data(), ::environ);
        if (result.error != 0) {
            result.process = -1;
        }
        return result;
    }

private:
    // A program that got other files than it should must not run at all.
    void note(int failure) { m_error = m_error != 0 ? m_error : failure; }

    int connect(int stream, int descriptor) {
        return descriptor == SpawnRequest::nullDevice
                   ? ::posix_spawn_file_actions_addopen(&m_actions, stream, "/dev/null", O_RDWR, 0)
                   : ::posix_spawn_file_actions_adddup2(&m_actions, descriptor, stream);
    }

    // What this process ignores or blocks is its own affair.
    void setAttributes(bool startsSession) {
        sigset_t all;
        sigset_t none;
        ::sigfillset(&all);
        ::sigemptyset(&none);
        ::posix_spawnattr_setsigdefault(&m_attributes, &all);
        ::posix_spawnattr_setsigmask(&m_attributes, &none);
        int flags = POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
        if (startsSession) {
            flags |= POSIX_SPAWN_SETSID;
        }
        ::posix_spawnattr_setflags(&m_attributes, static_cast<short>(flags));
    }

    posix_spawn_file_actions_t m_actions{};
    posix_spawnattr_t m_attributes{};
    int m_error = 0; // why the actions are not complete
};

/// A request in the form in which the C library takes it.
class Launch {
public:
    explicit Launch(const SpawnRequest& request)
        : m_program(request.program)
        , m_command(request.command)
        , m_setting(request) {
        m_words.reserve(m_command.size() + 1);
        for (std::string& word : m_command) {
            m_words.push_back(word.data());
        }
        m_words.push_back(nullptr);
    }

    SpawnResult start() { return m_setting.spawn(m_program.c_str(), m_words); }

private:
    std::string m_program;
    std::vector<std::string> m_command;
    std::vector<char*> m_words;
    Setting m_setting;
};

/// A copy of this process without a signal for its end: 0 there, -1 when there is none. The C
/// library has no function for it.
pid_t silentCopy() {
    return static_cast<pid_t>(::syscall(SYS_clone, 0, nullptr, nullptr, nullptr, nullptr));
}

// A checker that stands before the C library's way out would wait there for threads that the copy
// does not have.
[[noreturn]] void endCopy() {
    while (true) {
        ::syscall(SYS_exit_group, 0);
    }
}

} // namespace

SpawnResult spawn(const SpawnRequest& request) {
    return Launch(request).start();
}

void spawnDetached(const SpawnRequest& request) {
    Launch launch(request);
    runInCopy([&] { launch.start(); });
}

void runInCopy(const std::function<void()>& action) {
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t copy = silentCopy();
    if (copy == 0) {
        action();
        endCopy();
    }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (copy > 0) {
        waitForProcess(copy);
    }
}

std::optional<int> waitForProcess(pid_t process) {
    int status = 0;
    // Also for one that sends no signal at its end.
    while (::waitpid(process, &status, __WALL) < 0) {
        if (errno != EINTR) {
            return std::nullopt;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
}

} // namespace platform
