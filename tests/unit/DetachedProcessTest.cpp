// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/DetachedProcess.h"

#include "tests/unit/support/EnvironmentVariable.h"
#include "tests/unit/support/TemporaryFolder.h"
#include "tests/unit/support/Waiting.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>

namespace {

using namespace std::chrono_literals;
using platform::DetachedProcess::findProgram;
using platform::DetachedProcess::keepOpen;
using platform::DetachedProcess::start;

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Runs a shell script in `folder`, where it has to make the file "done".
std::string outputOf(const TemporaryFolder& folder, const std::string& script,
                     const std::vector<std::string>& arguments = {}) {
    const std::string path = folder.file("script", "{ " + script + "\n} >out 2>&1\nmv out done\n");
    std::vector<std::string> command{"sh", path};
    command.insert(command.end(), arguments.begin(), arguments.end());
    start(command, folder.path());
    EXPECT_TRUE(eventually([&] { return std::filesystem::exists(folder.path("done")); }));
    return contentsOf(folder.path("done"));
}

bool isOpen(int socket) {
    pollfd end{socket, 0, 0};
    return ::poll(&end, 1, 0) == 0;
}

TEST(DetachedProcess, GetsItsWordsAsTheyAre) {
    const TemporaryFolder folder;
    EXPECT_EQ(outputOf(folder, R"(printf '<%s>' "$@")", {"a b", "", "$HOME", "*", "\xFF", "\n"}),
              "<a b><><$HOME><*><\xFF><\n>");
}

TEST(DetachedProcess, HasNothingOfTheCallers) {
    const TemporaryFolder folder;
    const int open = ::open("/dev/null", O_RDONLY); // inherited on purpose
    const auto ignored = std::signal(SIGPIPE, SIG_IGN);
    sigset_t blocked;
    sigset_t before;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const std::string output = outputOf(
        folder, "pwd -P; readlink /proc/$$/fd/0; test -e /proc/$$/fd/" + std::to_string(open) +
                    " || echo closed; ps -o sid= -p $$ | tr -d ' ' | grep -qx $$ && echo leader; "
                    "sed -nE 's/^Sig(Blk|Ign):.*(.{7})$/\\2/p' /proc/self/status");
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    static_cast<void>(std::signal(SIGPIPE, ignored));
    ::close(open);
    // Of the signals, the first 28: the C library keeps some of the others for itself. A program
    // that the shell runs has them from the shell, which plays with its own while it waits.
    EXPECT_EQ(output, folder.path() + "\n/dev/null\nclosed\nleader\n0000000\n0000000\n");
}

TEST(DetachedProcess, IsNoChildOfTheCaller) {
    const TemporaryFolder folder;
    const std::string parent = outputOf(folder, "ps -o ppid= -p $$ | tr -d ' \\n'");
    EXPECT_NE(parent, std::to_string(::getpid()));
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST(DetachedProcess, DoesNothingWithoutAProgramOrAFolder) {
    const TemporaryFolder folder;
    start({}, folder.path());
    start({""}, folder.path());
    start({"/none"}, folder.path());
    start({folder.path()}, folder.path());
    start({"touch", folder.path("made")}, folder.path("none"));
    // One that works comes after those that do not.
    EXPECT_EQ(outputOf(folder, "echo"), "\n");
    EXPECT_FALSE(std::filesystem::exists(folder.path("made")));
}

TEST(DetachedProcess, FindsProgramsThatCanRun) {
    const TemporaryFolder folder;
    const std::string program = folder.file("program");
    EXPECT_EQ(findProgram(program), std::nullopt);
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    EXPECT_EQ(findProgram(program), program);
    EXPECT_EQ(findProgram("program"), std::nullopt);
    EXPECT_EQ(findProgram(folder.path()), std::nullopt);
    EXPECT_EQ(findProgram(""), std::nullopt);
    const EnvironmentVariable path("PATH", ("/none::" + folder.path() + ":/bin").c_str());
    EXPECT_EQ(findProgram("program"), program);
    EXPECT_EQ(findProgram("sh"), "/bin/sh");
    const EnvironmentVariable none("PATH", nullptr);
    EXPECT_EQ(findProgram("sh"), "/bin/sh");
}

TEST(DetachedProcess, FindsNothingInFoldersThatAreNotAbsolute) {
    const TemporaryFolder folder;
    const std::string program = folder.file("program");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    const EnvironmentVariable path("PATH", ":.:./");
    EXPECT_EQ(findProgram("program"), std::nullopt);
    EXPECT_EQ(findProgram("./program"), std::nullopt);
    std::filesystem::current_path(before);
}

/// A pair of connected sockets.
class SocketPair {
public:
    SocketPair() { EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0); }
    SocketPair(const SocketPair&) = delete;
    SocketPair& operator=(const SocketPair&) = delete;
    SocketPair(SocketPair&&) = delete;
    SocketPair& operator=(SocketPair&&) = delete;
    ~SocketPair() {
        closeOwn();
        closeOther();
    }

    [[nodiscard]] int own() const { return ends[0]; }
    [[nodiscard]] int other() const { return ends[1]; }
    void closeOwn() { close(ends[0]); }
    void closeOther() { close(ends[1]); }

private:
    static void close(int& end) {
        if (end >= 0) {
            ::close(std::exchange(end, -1));
        }
    }
    int ends[2] = {-1, -1};
};

// The process that has that socket open and nothing else; empty when there is none.
std::string holderOf(const std::string& socket) {
    for (const auto& process : std::filesystem::directory_iterator("/proc")) {
        std::error_code error;
        std::filesystem::directory_iterator files(process.path() / "fd", error);
        std::vector<std::string> targets;
        for (; !error && files != std::filesystem::directory_iterator(); files.increment(error)) {
            std::error_code ignored;
            targets.push_back(std::filesystem::read_symlink(files->path(), ignored));
        }
        if (targets == std::vector<std::string>{socket}) {
            return process.path().filename();
        }
    }
    return "";
}

TEST(HeldSocket, StaysOpenForATime) {
    SocketPair sockets;
    keepOpen(sockets.own(), 1500ms);
    sockets.closeOwn();
    EXPECT_TRUE(isOpen(sockets.other()));
    EXPECT_TRUE(eventually([&] { return !isOpen(sockets.other()); }));
}

TEST(HeldSocket, IsAllThatItsProcessHas) {
    SocketPair sockets;
    const std::string socket =
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(sockets.own()));
    keepOpen(sockets.own(), 60s);
    std::string holder;
    ASSERT_TRUE(eventually([&] { return !(holder = holderOf(socket)).empty(); }));
    EXPECT_EQ(std::filesystem::read_symlink("/proc/" + holder + "/cwd"), "/");
    EXPECT_EQ(std::to_string(::getsid(std::stoi(holder))), holder);
    // It ends with the connection.
    sockets.closeOther();
    EXPECT_TRUE(eventually([&] { return holderOf(socket).empty(); }));
}

TEST(HeldSocket, IsNothingForANegativeDescriptor) {
    // Above all not standard input, which a careless holder would keep.
    SocketPair sockets;
    const int input = ::dup(STDIN_FILENO);
    ::dup2(sockets.own(), STDIN_FILENO);
    keepOpen(-1, 60s);
    ::dup2(input, STDIN_FILENO);
    ::close(input);
    sockets.closeOwn();
    EXPECT_FALSE(isOpen(sockets.other()));
}

} // namespace
