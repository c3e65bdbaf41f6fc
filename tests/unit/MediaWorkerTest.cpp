// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/MediaWorker.h"

#include "platform/linux/RegularFile.h"
#include "platform/linux/worker/Confinement.h"
#include "tests/unit/support/MediaWorkerOnDemand.h"
#include "tests/unit/support/Waiting.h"

#include <atomic>
#include <csignal>
#include <ctime>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using namespace std::chrono_literals;
using platform::worker::MediaWorker;

TEST(MediaWorker, TellsOfFiles) {
    MediaWorker worker(settingsOfMediaWorker());
    const TemporaryFolder folder;
    const std::string file = folder.file("image", "width 7");
    const auto properties = imageProperties(worker, file, false);
    ASSERT_TRUE(properties);
    EXPECT_EQ(properties->pixelWidth, 7);
    EXPECT_EQ(properties->imageCount, std::nullopt);
    EXPECT_EQ(imageProperties(worker, file, true)->imageCount, 2U);
    EXPECT_EQ(imageProperties(worker, folder.link("link", file), false), properties);
}

TEST(MediaWorker, TellsNothingOfWhatIsNoImage) {
    MediaWorker worker(settingsOfMediaWorker());
    const TemporaryFolder folder;
    EXPECT_EQ(askMediaWorker(worker, "nothing"), std::nullopt);
    EXPECT_EQ(askMediaWorker(worker, "throw"), std::nullopt);
    EXPECT_EQ(askMediaWorker(worker, ""), std::nullopt);
    EXPECT_EQ(imageProperties(worker, folder.path("none"), false), std::nullopt);
    EXPECT_EQ(imageProperties(worker, folder.path(), false), std::nullopt);
    EXPECT_EQ(imageProperties(worker, "/dev/zero", false), std::nullopt);
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
    EXPECT_EQ(imageProperties(worker, folder.path("fifo"), false), std::nullopt);
}

TEST(MediaWorker, KeepsItsProcess) {
    MediaWorker worker(settingsOfMediaWorker());
    const auto first = askMediaWorker(worker, "pid");
    ASSERT_TRUE(first);
    EXPECT_EQ(askMediaWorker(worker, "nothing"), std::nullopt);
    EXPECT_EQ(askMediaWorker(worker, "throw"), std::nullopt);
    EXPECT_EQ(askMediaWorker(worker, "pid"), first);
}

TEST(MediaWorker, ReplacesItsProcessNowAndThen) {
    auto settings = settingsOfMediaWorker();
    settings.requestsPerProcess = 2;
    MediaWorker worker(settings);
    const auto first = askMediaWorker(worker, "pid");
    EXPECT_EQ(askMediaWorker(worker, "pid"), first);
    const auto second = askMediaWorker(worker, "pid");
    EXPECT_TRUE(second && second != first);
    EXPECT_TRUE(eventually([&] { return !isRunning(*first); }));
}

/// A file whose reading goes wrong in one of many ways.
class MisbehavingMediaWorker : public ::testing::TestWithParam<const char*> {};

TEST_P(MisbehavingMediaWorker, CostsTheFileAtHandAlone) {
    MediaWorker worker(settingsOfMediaWorker());
    const auto before = openDescriptors();
    EXPECT_EQ(askMediaWorker(worker, "width 1"), 1);
    const auto process = askMediaWorker(worker, "pid");
    EXPECT_EQ(askMediaWorker(worker, GetParam()), std::nullopt);
    EXPECT_TRUE(eventually([&] { return !isRunning(process.value_or(0)); }));
    EXPECT_EQ(askMediaWorker(worker, "width 2"), 2);
    EXPECT_NE(askMediaWorker(worker, "pid"), process);
    // The first one of a process of its own, too.
    MediaWorker other(settingsOfMediaWorker());
    EXPECT_EQ(askMediaWorker(other, GetParam()), std::nullopt);
    EXPECT_EQ(askMediaWorker(other, "width 3"), 3);
    constexpr int descriptorsOfEach = 2;
    EXPECT_EQ(openDescriptors(), before + 2 * descriptorsOfEach);
}

INSTANTIATE_TEST_SUITE_P(Ways, MisbehavingMediaWorker,
                         ::testing::Values("crash", "abort", "exit", "garbage x",
                                           "garbage a message as long as its head", "half", "ready",
                                           "huge", "wrong-number", "value x", "value \xA1\x61x\x01",
                                           "value \xA1\x6ApixelWidth\x20",
                                           "value \xA1\x6AimageCount\x02"));

TEST(MediaWorker, GivesUpFilesThatTakeTheProcessorForTooLong) {
    auto settings = settingsOfMediaWorker();
    settings.limits.processor = 200ms;
    MediaWorker worker(settings);
    const auto process = askMediaWorker(worker, "pid");
    ASSERT_TRUE(process);
    EXPECT_EQ(askMediaWorker(worker, "loop"), std::nullopt);
    EXPECT_TRUE(eventually([&] { return !isRunning(*process); }));
    EXPECT_EQ(askMediaWorker(worker, "width 2"), 2);
}

TEST(MediaWorker, CountsProcessorTimeForEachFileAnew) {
    auto settings = settingsOfMediaWorker();
    settings.limits.processor = 500ms;
    MediaWorker worker(settings);
    const auto process = askMediaWorker(worker, "pid");
    ASSERT_TRUE(process);
    for (int file = 0; file < 4; ++file) {
        EXPECT_EQ(askMediaWorker(worker, "work 200000"), 1);
    }
    EXPECT_EQ(askMediaWorker(worker, "pid"), process);
}

TEST(MediaWorker, GivesUpFilesThatTakeTooLongAtAll) {
    auto settings = settingsOfMediaWorker();
    MediaWorker patient(settings);
    settings.limits.wall = 200ms;
    MediaWorker worker(settings);
    const TemporaryFolder folder;
    const std::string image = folder.file("image", "wait");
    EXPECT_EQ(imageProperties(worker, image, false), std::nullopt);
    EXPECT_EQ(askMediaWorker(patient, "width 2"), 2);
}

TEST(MediaWorker, ReplacesAProcessThatEndedWhileItWaited) {
    MediaWorker worker(settingsOfMediaWorker());
    const auto process = askMediaWorker(worker, "pid");
    ASSERT_TRUE(process);
    ::kill(static_cast<pid_t>(*process), SIGKILL);
    ASSERT_TRUE(eventually([&] { return !isRunning(*process); }));
    EXPECT_EQ(askMediaWorker(worker, "width 2"), 2);
}

TEST(MediaWorker, DoesNotBlameAFileForTheDamageOfAnother) {
    MediaWorker worker(settingsOfMediaWorker());
    EXPECT_EQ(askMediaWorker(worker, "poison"), 1);
    EXPECT_EQ(askMediaWorker(worker, "width 2"), 2);
}

TEST(MediaWorker, DoesNotBlameAFileForAnAnswerTooMany) {
    MediaWorker worker(settingsOfMediaWorker());
    EXPECT_EQ(askMediaWorker(worker, "twice"), 1);
    EXPECT_EQ(askMediaWorker(worker, "width 2"), 2);
}

TEST(MediaWorker, SurvivesReadersThatThrow) {
    MediaWorker worker(settingsOfMediaWorker());
    const TemporaryFolder folder;
    const auto file = platform::openRegularFile(folder.file("image", "width 1"));
    const auto read = [](platform::DataView) -> bool { throw std::runtime_error("no memory"); };
    EXPECT_THROW(static_cast<void>(worker.ask({}, file.number(), read)), std::runtime_error);
    EXPECT_EQ(askMediaWorker(worker, "width 2"), 2);
}

TEST(MediaWorker, LeavesAloneDescriptorsThatAreSentToIt) {
    MediaWorker worker(settingsOfMediaWorker());
    EXPECT_EQ(askMediaWorker(worker, "width 1"), 1);
    const auto before = openDescriptors();
    EXPECT_EQ(askMediaWorker(worker, "present"), 1);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(MediaWorker, ServesSeveralThreads) {
    constexpr unsigned processes = 3;
    constexpr int threadCount = 8;
    constexpr int filesOfEach = 40;
    auto settings = settingsOfMediaWorker();
    settings.processes = processes;
    settings.requestsPerProcess = 50;
    MediaWorker worker(settings);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&, thread] {
            for (int file = 0; file < filesOfEach; ++file) {
                const std::int64_t width = thread * filesOfEach + file;
                std::string words = "width ";
                if (askMediaWorker(worker, words.append(std::to_string(width))) != width) {
                    ++wrong;
                }
                if (file % 16 == 0 && askMediaWorker(worker, "exit")) {
                    ++wrong;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

TEST(MediaWorker, HasNoMoreProcessesThanItMay) {
    constexpr unsigned processes = 2;
    auto settings = settingsOfMediaWorker();
    settings.processes = processes;
    MediaWorker worker(settings);
    std::mutex mutex;
    std::set<std::int64_t> seen;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 6; ++thread) {
        threads.emplace_back([&] {
            for (int file = 0; file < 10; ++file) {
                const auto process = askMediaWorker(worker, "pid");
                const std::lock_guard lock(mutex);
                seen.insert(process.value_or(0));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_FALSE(seen.contains(0));
    EXPECT_LE(seen.size(), processes);
}

// What is found by another name than the program's own.
MediaWorker::Settings settingsOfProgram(const std::string& program) {
    auto settings = settingsOfMediaWorker();
    settings.program = program;
    settings.limits.starting = 300ms;
    return settings;
}

TEST(MediaWorker, TellsNothingWithoutAProgramThatServes) {
    const TemporaryFolder folder;
    const auto before = openDescriptors();
    for (const std::string& program :
         {folder.path("none"), folder.path(), folder.file("text", "x"), std::string(),
          std::string("/bin/true"), folder.link("silent", QM_TEST_MEDIA_WORKER),
          folder.link("wrong-greeting", QM_TEST_MEDIA_WORKER)}) {
        MediaWorker worker(settingsOfProgram(program));
        EXPECT_EQ(askMediaWorker(worker, "width 1"), std::nullopt) << program;
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(MediaWorker, WaitsBeforeItStartsAProgramThatDidNotServeAgain) {
    const TemporaryFolder folder;
    const std::string program = folder.link("program", "/bin/true");
    auto settings = settingsOfProgram(program);
    settings.limits.starting = 1min;
    settings.pause = 1h;
    MediaWorker patient(settings);
    settings.pause = 0ms;
    MediaWorker eager(settings);
    EXPECT_EQ(askMediaWorker(patient, "width 1"), std::nullopt);
    EXPECT_EQ(askMediaWorker(eager, "width 1"), std::nullopt);
    std::filesystem::remove(program);
    static_cast<void>(folder.link("program", QM_TEST_MEDIA_WORKER));
    EXPECT_EQ(askMediaWorker(patient, "width 1"), std::nullopt);
    EXPECT_EQ(askMediaWorker(eager, "width 1"), 1);
}

TEST(MediaWorker, TellsEveryoneWhoWaitsThatThereIsNoProgramAnyMore) {
    const TemporaryFolder folder;
    auto settings = settingsOfMediaWorker();
    settings.program = folder.link("program", QM_TEST_MEDIA_WORKER);
    settings.limits.wall = 1s;
    MediaWorker worker(settings);
    EXPECT_EQ(askMediaWorker(worker, "width 1"), 1);
    std::filesystem::remove(settings.program);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 5; ++thread) {
        threads.emplace_back([&] { EXPECT_EQ(askMediaWorker(worker, "wait"), std::nullopt); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

std::chrono::nanoseconds processorTimeOf(std::int64_t process) {
    clockid_t clock = -1;
    timespec used{};
    EXPECT_EQ(::clock_getcpuclockid(static_cast<pid_t>(process), &clock), 0);
    EXPECT_EQ(::clock_gettime(clock, &used), 0);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

// Has a file read while the only process is busy, and another one, `program`, is of no use.
void expectPatienceWithout(const std::string& program) {
    const TemporaryFolder folder;
    auto settings = settingsOfMediaWorker();
    settings.program = folder.link("program", QM_TEST_MEDIA_WORKER);
    settings.processes = 2;
    MediaWorker worker(settings);
    const auto process = askMediaWorker(worker, "pid");
    ASSERT_TRUE(process);
    std::filesystem::remove(settings.program);
    static_cast<void>(folder.link("program", program));
    const auto before = processorTimeOf(*process);
    std::thread busy([&] { EXPECT_EQ(askMediaWorker(worker, "work 1000000"), 1); });
    EXPECT_TRUE(eventually([&] { return processorTimeOf(*process) > before + 100ms; }));
    EXPECT_EQ(askMediaWorker(worker, "width 2"), 2);
    busy.join();
}

TEST(MediaWorker, WaitsForABusyProcessWhereNoOtherCanBeStarted) {
    expectPatienceWithout("/none");
    expectPatienceWithout("/bin/true");
}

TEST(MediaWorker, StartsAProgramAsSoonAsItIsThere) {
    const TemporaryFolder folder;
    auto settings = settingsOfProgram(folder.path("program"));
    settings.limits.starting = 1min;
    settings.pause = 1h;
    MediaWorker worker(settings);
    EXPECT_EQ(askMediaWorker(worker, "width 1"), std::nullopt);
    static_cast<void>(folder.link("program", QM_TEST_MEDIA_WORKER));
    EXPECT_EQ(askMediaWorker(worker, "width 1"), 1);
}

} // namespace
