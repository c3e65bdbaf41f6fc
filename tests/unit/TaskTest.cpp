// SPDX-License-Identifier: Apache-2.0
#include "platform/Task.h"

#include "foundation/QMFileHandle.h"
#include "tests/unit/support/TemporaryFolder.h"
#include "tests/unit/support/Waiting.h"

#include <atomic>
#include <csignal>
#include <filesystem>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using platform::Task;
using Output = Task::Output;

std::string textOf(platform::FileHandle& file) {
    const platform::Data data = qm_readDataToEndOfFile(file).value_or(platform::Data());
    return {reinterpret_cast<const char*>(data.data()), data.size()};
}

std::shared_ptr<Task> launched(const Task::Command& command) {
    auto result = Task::launch(command);
    const auto* task = std::get_if<std::shared_ptr<Task>>(&result);
    return task == nullptr ? nullptr : *task;
}

// A shell script with both outputs on pipes, unless others are given.
std::shared_ptr<Task> shell(const std::string& script, Output output = Output::pipe,
                            Output error = Output::pipe) {
    return launched({"/bin/sh", {"-c", script}, output, error});
}

std::size_t openDescriptors() {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

// Whether a process of that number is there, also one that nobody has waited for.
bool exists(const std::string& process) {
    return std::filesystem::exists("/proc/" + process);
}

TEST(Task, GetsItsArgumentsAsTheyAre) {
    const auto task = launched({"/usr/bin/printf",
                                {"<%s>", "a b", "", "$HOME", "*", "\"'\\", "\xFF", "\n"},
                                Output::pipe,
                                Output::nullDevice});
    ASSERT_TRUE(task);
    EXPECT_EQ(textOf(task->standardOutput()), "<a b><><$HOME><*><\"'\\><\xFF><\n>");
    EXPECT_EQ(task->waitUntilExit(), 0);
}

TEST(Task, AnswersStatusesAndSignals) {
    EXPECT_EQ(shell("exit 0")->waitUntilExit(), 0);
    EXPECT_EQ(shell("exit 7")->waitUntilExit(), 7);
    EXPECT_EQ(shell("kill -KILL $$")->waitUntilExit(), 9);
    const auto task = shell("exit 3");
    EXPECT_EQ(task->waitUntilExit(), 3);
    EXPECT_EQ(task->waitUntilExit(), 3);
}

TEST(Task, TellsWhyItWasNotLaunched) {
    const TemporaryFolder folder;
    const std::string notExecutable = folder.file("file");
    const std::vector<std::pair<std::string, std::string>> reasons{
        {"/nowhere/tool", "No such file or directory"},
        {"sh", "No such file or directory"},
        {"", "No such file or directory"},
        {folder.path(), "Permission denied"},
        {notExecutable, "Permission denied"},
    };
    const std::size_t before = openDescriptors();
    for (const auto& [path, reason] : reasons) {
        const auto result = Task::launch({path, {}, Output::pipe, Output::pipe});
        const auto* error = std::get_if<Task::LaunchError>(&result);
        ASSERT_NE(error, nullptr) << path;
        EXPECT_EQ(error->localizedDescription, reason);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(Task, WritesManyMegabytesToBothPipes) {
    const auto task = shell("head -c 20000000 /dev/zero & head -c 30000000 /dev/zero >&2; wait");
    std::size_t errorSize = 0;
    std::thread reader([&] { errorSize = textOf(task->standardError()).size(); });
    EXPECT_EQ(textOf(task->standardOutput()).size(), 20000000U);
    reader.join();
    EXPECT_EQ(errorSize, 30000000U);
    EXPECT_EQ(task->waitUntilExit(), 0);
}

TEST(Task, ReadsNothingAndHasNoTerminalInput) {
    const auto task = shell("cat; readlink /proc/self/fd/0");
    EXPECT_EQ(textOf(task->standardOutput()), "/dev/null\n");
}

TEST(Task, SendsOutputsWithoutAPipeNowhere) {
    const auto task =
        shell("readlink /proc/self/fd/2; echo lost >&2", Output::pipe, Output::nullDevice);
    EXPECT_EQ(textOf(task->standardOutput()), "/dev/null\n");
    EXPECT_EQ(textOf(task->standardError()), "");
    EXPECT_EQ(shell("echo lost", Output::nullDevice)->waitUntilExit(), 0);
}

TEST(Task, InheritsNoOtherFiles) {
    const int open = ::open("/dev/null", O_RDONLY); // inherited on purpose, were it not for us
    const auto other = shell("cat");
    // Without a pipe, whose ends the shell may still have. With "true", it does not become ls.
    const auto task = shell("ls /proc/$$/fd; true");
    EXPECT_EQ(textOf(task->standardOutput()), "0\n1\n2\n");
    ::close(open);
}

TEST(Task, MayCloseItsPipesAndLiveOn) {
    const auto task = shell("exec >&- 2>&-; sleep 0.3; exit 5");
    EXPECT_EQ(textOf(task->standardOutput()), "");
    EXPECT_EQ(textOf(task->standardError()), "");
    EXPECT_EQ(task->waitUntilExit(), 5);
}

TEST(Task, EndsBeforeAProcessOfItsOwnThatKeepsThePipe) {
    const auto task = shell("{ sleep 1; echo late; } & exit 4");
    EXPECT_EQ(task->waitUntilExit(), 4);
    EXPECT_EQ(textOf(task->standardOutput()), "late\n");
}

TEST(Task, EndsWhenItIsAskedTo) {
    const auto task = shell("exec sleep 1000");
    std::thread other([&] { task->terminate(); });
    EXPECT_EQ(task->waitUntilExit(), 15);
    other.join();
    task->terminate();
    EXPECT_EQ(task->waitUntilExit(), 15);
}

TEST(Task, LeavesNoZombieAndNoDescriptor) {
    const std::size_t before = openDescriptors();
    std::string process;
    {
        const auto task = shell("echo $$");
        process = textOf(task->standardOutput());
        process.pop_back();
        EXPECT_EQ(task->waitUntilExit(), 0);
        EXPECT_FALSE(exists(process));
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(Task, IsClearedAwayWhenNobodyWaits) {
    std::string process;
    {
        const auto task = shell("echo $$; exec >&-; sleep 0.2");
        process = textOf(task->standardOutput());
        process.pop_back();
    }
    EXPECT_TRUE(exists(process));
    EXPECT_TRUE(eventually([&] { return !exists(process); }));
}

TEST(Task, HasNoSignalsBlockedOrIgnored) {
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    const auto task = shell("yes | head -1 >/dev/null; kill -PIPE $$; exit 1");
    EXPECT_EQ(task->waitUntilExit(), SIGPIPE);
    static_cast<void>(std::signal(SIGPIPE, before));
}

TEST(Task, RunsBesideManyOthers) {
    std::vector<std::thread> threads;
    std::atomic<int> right = 0;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([i, &right] {
            for (int round = 0; round < 10; ++round) {
                const std::string text = std::to_string(i * 100 + round);
                const auto task = launched({"/bin/echo", {text}, Output::pipe, Output::pipe});
                right +=
                    textOf(task->standardOutput()) == text + "\n" && task->waitUntilExit() == 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(right, 80);
}

} // namespace
