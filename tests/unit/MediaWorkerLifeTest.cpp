// SPDX-License-Identifier: Apache-2.0
// When the processes that read media end, and what an application notices of them.
#include "platform/linux/Descriptor.h"
#include "platform/linux/Spawn.h"
#include "platform/linux/worker/MediaWorker.h"
#include "tests/unit/support/MediaWorkerOnDemand.h"
#include "tests/unit/support/Waiting.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <functional>
#include <thread>
#include <utility>

#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/wait.h>

namespace {

using namespace std::chrono_literals;
using platform::Descriptor;
using platform::worker::MediaWorker;

struct Pipe {
    Pipe() {
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(::pipe(ends.data()), 0);
        reading = Descriptor(ends[0]);
        writing = Descriptor(ends[1]);
    }
    void write(std::int64_t number) const {
        EXPECT_EQ(::write(writing.number(), &number, sizeof number),
                  static_cast<ssize_t>(sizeof number));
    }
    [[nodiscard]] std::int64_t read() const {
        std::int64_t number = -1;
        EXPECT_EQ(::read(reading.number(), &number, sizeof number),
                  static_cast<ssize_t>(sizeof number));
        return number;
    }
    Descriptor reading;
    Descriptor writing;
};

/// A copy of this process that does something of its own.
class Copy {
public:
    explicit Copy(const std::function<void()>& action)
        : m_process(::fork()) {
        if (m_process == 0) {
            action();
            ::_exit(0);
        }
    }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;
    Copy(Copy&&) = delete;
    Copy& operator=(Copy&&) = delete;
    ~Copy() { kill(); }

    void kill() {
        if (m_process > 0) {
            ::kill(m_process, SIGKILL);
            wait();
        }
    }
    void wait() { platform::waitForProcess(std::exchange(m_process, -1)); }

private:
    pid_t m_process;
};

TEST(MediaWorkerLife, EndsWithItsOwner) {
    std::optional<std::int64_t> process;
    {
        MediaWorker worker(settingsOfMediaWorker());
        process = askMediaWorker(worker, "pid");
        ASSERT_TRUE(process);
        EXPECT_TRUE(isRunning(*process));
    }
    EXPECT_TRUE(eventually([&] { return !isRunning(*process); }));
}

TEST(MediaWorkerLife, EndsWithAnApplicationThatIsKilled) {
    const Pipe pipe;
    Copy application([&] {
        MediaWorker worker(settingsOfMediaWorker());
        pipe.write(askMediaWorker(worker, "pid").value_or(-1));
        ::pause();
    });
    const std::int64_t process = pipe.read();
    EXPECT_TRUE(isRunning(process));
    application.kill();
    EXPECT_TRUE(eventually([&] { return !isRunning(process); }));
}

TEST(MediaWorkerLife, EndsWithTheApplicationWhateverItIsDoing) {
    for (const char* const words : {"loop", "wait"}) {
        const Pipe pipe;
        Copy application([&] {
            MediaWorker worker(settingsOfMediaWorker());
            pipe.write(askMediaWorker(worker, "pid").value_or(-1));
            static_cast<void>(askMediaWorker(worker, words));
        });
        const std::int64_t process = pipe.read();
        // Wait until it reads the file: only then has it a fourth one open for long.
        EXPECT_TRUE(eventually(
            [&] { return std::filesystem::exists("/proc/" + std::to_string(process) + "/fd/3"); }));
        application.kill();
        EXPECT_TRUE(eventually([&] { return !isRunning(process); })) << words;
    }
}

TEST(MediaWorkerLife, EndsWithTheApplicationAlsoWhenACopyOfThatGoesOn) {
    const Pipe worked;
    const Pipe never;
    Copy application([&] {
        MediaWorker worker(settingsOfMediaWorker());
        const auto process = askMediaWorker(worker, "pid");
        const pid_t copy = ::fork();
        if (copy == 0) {
            static_cast<void>(never.read());
            ::_exit(0);
        }
        worked.write(process.value_or(-1));
        worked.write(copy);
        ::pause();
    });
    const std::int64_t process = worked.read();
    const std::int64_t copy = worked.read();
    application.kill();
    EXPECT_TRUE(eventually([&] { return !isRunning(process); }));
    EXPECT_TRUE(isRunning(copy));
    ::kill(static_cast<pid_t>(copy), SIGKILL);
}

TEST(MediaWorkerLife, IsNothingToWaitFor) {
    MediaWorker worker(settingsOfMediaWorker());
    ASSERT_TRUE(askMediaWorker(worker, "pid"));
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(askMediaWorker(worker, "abort"), std::nullopt);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST(MediaWorkerLife, IsTheSameAfterACopyWasMade) {
    MediaWorker worker(settingsOfMediaWorker());
    const auto process = askMediaWorker(worker, "pid");
    const Pipe pipe;
    Copy copy([&] {
        pipe.write(askMediaWorker(worker, "pid").value_or(-1));
        pipe.write(askMediaWorker(worker, "width 3").value_or(-1));
    });
    const std::int64_t processOfCopy = pipe.read();
    EXPECT_GT(processOfCopy, 0);
    EXPECT_NE(processOfCopy, process);
    EXPECT_EQ(pipe.read(), 3);
    copy.wait();
    EXPECT_TRUE(eventually([&] { return !isRunning(processOfCopy); }));
    EXPECT_EQ(askMediaWorker(worker, "pid"), process);
}

TEST(MediaWorkerLife, IsFreeInACopyThatWasMadeWhileItWasBusy) {
    auto settings = settingsOfMediaWorker();
    settings.limits.wall = 5s;
    MediaWorker worker(settings);
    const std::int64_t process = askMediaWorker(worker, "pid").value_or(-1);
    std::thread busy([&] { EXPECT_EQ(askMediaWorker(worker, "wait"), std::nullopt); });
    const std::string file = "/proc/" + std::to_string(process) + "/fd/3";
    EXPECT_TRUE(eventually([&] { return std::filesystem::exists(file); }));
    const Pipe pipe;
    Copy copy([&] { pipe.write(askMediaWorker(worker, "width 3").value_or(-1)); });
    EXPECT_EQ(pipe.read(), 3);
    copy.wait();
    busy.join();
    EXPECT_EQ(askMediaWorker(worker, "width 2"), 2);
}

TEST(MediaWorkerLife, OutlivesNoDescriptors) {
    const auto before = openDescriptors();
    for (int round = 0; round < 3; ++round) {
        MediaWorker worker(settingsOfMediaWorker());
        EXPECT_EQ(askMediaWorker(worker, "width 1"), 1);
        EXPECT_EQ(askMediaWorker(worker, "exit"), std::nullopt);
    }
    EXPECT_EQ(openDescriptors(), before);
}

} // namespace
