// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/DetachedProcess.h"

#include "tests/unit/support/EnvironmentVariable.h"
#include "tests/unit/support/TemporaryFolder.h"
#include "tests/unit/support/Waiting.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/socket.h>

namespace {

using namespace std::chrono_literals;
using platform::DetachedProcess::canRun;
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
                    "sed -nE 's/^Sig(Blk|Ign):.*(.{7})$/\\2/p' /proc/$$/status");
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    static_cast<void>(std::signal(SIGPIPE, ignored));
    ::close(open);
    // Of the signals, the first 28: the C library keeps some of the others for itself.
    EXPECT_EQ(output, folder.path() + "\n/dev/null\nclosed\nleader\n0000000\n0000000\n");
}

TEST(DetachedProcess, LeavesNoZombie) {
    const TemporaryFolder folder;
    const std::string process = outputOf(folder, "printf $$");
    EXPECT_TRUE(eventually([&] { return !std::filesystem::exists("/proc/" + process); }));
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

TEST(DetachedProcess, KnowsWhatCanRun) {
    const TemporaryFolder folder;
    const std::string program = folder.file("program");
    EXPECT_FALSE(canRun(program));
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    EXPECT_TRUE(canRun(program));
    EXPECT_FALSE(canRun("program"));
    const EnvironmentVariable path("PATH", ("/none:" + folder.path()).c_str());
    EXPECT_TRUE(canRun("program"));
    EXPECT_FALSE(canRun("sh"));
    const EnvironmentVariable none("PATH", nullptr);
    EXPECT_TRUE(canRun("sh"));
    EXPECT_FALSE(canRun(""));
}

TEST(DetachedProcess, KeepsASocketOpenForATime) {
    int ends[2] = {};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    keepOpen(ends[0], 1500ms);
    ::close(ends[0]);
    EXPECT_TRUE(isOpen(ends[1]));
    EXPECT_TRUE(eventually([&] { return !isOpen(ends[1]); }));
    ::close(ends[1]);
}

} // namespace
