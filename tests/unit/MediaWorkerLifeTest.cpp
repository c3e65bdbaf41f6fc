// SPDX-License-Identifier: Apache-2.0
// When the processes that read media end, and what an application notices of them.
#include "platform/linux/Descriptor.h"
#include "platform/linux/Spawn.h"
#include "platform/linux/worker/MediaWorker.h"
#include "tests/unit/support/MediaWorkerOnDemand.h"
#include "tests/unit/support/Waiting.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <functional>
#include <new>
#include <thread>
#include <utility>

#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/mman.h>
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

std::atomic<int> signalsReceived = 0;
static_assert(std::atomic<int>::is_always_lock_free);

/// Counts the signals `number` that arrive; what they interrupt is not resumed.
class SignalCount {
public:
    explicit SignalCount(int number)
        : m_number(number) {
        struct sigaction action {};
        action.sa_handler = [](int /*number*/) { ++signalsReceived; };
        EXPECT_EQ(::sigaction(m_number, &action, &m_before), 0);
    }
    SignalCount(const SignalCount&) = delete;
    SignalCount& operator=(const SignalCount&) = delete;
    SignalCount(SignalCount&&) = delete;
    SignalCount& operator=(SignalCount&&) = delete;
    ~SignalCount() { ::sigaction(m_number, &m_before, nullptr); }

private:
    int m_number;
    struct sigaction m_before {};
};

TEST(MediaWorkerLife, SendsNoSignals) {
    const SignalCount count(SIGCHLD);
    MediaWorker worker(settingsOfMediaWorker());
    EXPECT_EQ(askMediaWorker(worker, "abort"), std::nullopt);
    EXPECT_EQ(askMediaWorker(worker, "width 1"), 1);
    EXPECT_EQ(signalsReceived, 0);
}

TEST(MediaWorkerLife, IsStartedAlsoWhereNobodyWaitsForChildren) {
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    MediaWorker worker(settingsOfMediaWorker());
    EXPECT_EQ(askMediaWorker(worker, "abort"), std::nullopt);
    EXPECT_EQ(askMediaWorker(worker, "width 1"), 1);
    static_cast<void>(std::signal(SIGCHLD, before));
}

/// Memory that this process and its copies share.
struct SharedCounts {
    std::atomic<pid_t> application = 0;
    std::atomic<int> inApplication = 0;
    std::atomic<int> elsewhere = 0;
};
SharedCounts* sharedCounts = nullptr;

// Starts processes over and over in an application whose handler also counts in which process it
// runs.
bool startMany() {
    constexpr int rounds = 20;
    struct sigaction action {};
    action.sa_handler = [](int /*number*/) {
        const bool isApplication = ::getpid() == sharedCounts->application;
        ++(isApplication ? sharedCounts->inApplication : sharedCounts->elsewhere);
    };
    ::sigaction(SIGWINCH, &action, nullptr);
    ::setpgid(0, 0);
    sharedCounts->application = ::getpid();
    bool isRight = true;
    for (int round = 0; round < rounds; ++round) {
        MediaWorker worker(settingsOfMediaWorker());
        isRight = askMediaWorker(worker, "width 1") == 1 && isRight;
    }
    return isRight;
}

// As those that a terminal sends to all that run in it.
TEST(MediaWorkerLife, BeginsUndisturbedBySignalsToTheApplication) {
    void* const memory = ::mmap(nullptr, sizeof(SharedCounts), PROT_READ | PROT_WRITE,
                                MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    sharedCounts = new (memory) SharedCounts;
    const Pipe pipe;
    std::atomic<bool> isDone = false;
    Copy application([&] { pipe.write(startMany() ? 1 : 0); });
    std::thread sender([&] {
        while (!isDone) {
            if (sharedCounts->application != 0) {
                ::kill(-sharedCounts->application, SIGWINCH);
            }
            std::this_thread::sleep_for(50us);
        }
    });
    EXPECT_EQ(pipe.read(), 1);
    isDone = true;
    sender.join();
    EXPECT_GT(sharedCounts->inApplication, 0);
    EXPECT_EQ(sharedCounts->elsewhere, 0);
    ::munmap(memory, sizeof(SharedCounts));
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

std::int64_t openSockets() {
    std::int64_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        const auto target = std::filesystem::read_symlink(entry.path(), ignored);
        count += target.string().starts_with("socket:") ? 1 : 0;
    }
    return count;
}

TEST(MediaWorkerLife, IsNothingOfACopyThatWasMadeWhileItStarted) {
    const TemporaryFolder folder;
    auto settings = settingsOfMediaWorker();
    settings.program = folder.link("silent", QM_TEST_MEDIA_WORKER);
    settings.limits.starting = 2s;
    MediaWorker worker(settings);
    const std::int64_t before = openSockets();
    std::thread busy([&] { EXPECT_EQ(askMediaWorker(worker, "width 1"), std::nullopt); });
    EXPECT_TRUE(eventually([&] { return openSockets() > before; }));
    const Pipe pipe;
    Copy copy([&] { pipe.write(openSockets()); });
    EXPECT_EQ(pipe.read(), before);
    copy.wait();
    busy.join();
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
