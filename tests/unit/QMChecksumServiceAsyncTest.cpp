// SPDX-License-Identifier: Apache-2.0
#include "platform/DispatchQueue.h"
#include "services/QMChecksumService.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <array>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

namespace DispatchQueue = platform::DispatchQueue;
using Result = std::optional<std::string>;

TEST(QMChecksumServiceAsync, DeliversOnceOnTheMainThread) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f", "abc");
    std::vector<Result> results;
    std::thread::id deliveredOn;
    QMChecksumService::checksumForFileAtPath(path, QMChecksumAlgorithmMD5, [&](Result result) {
        results.push_back(std::move(result));
        deliveredOn = std::this_thread::get_id();
    });
    EXPECT_TRUE(results.empty());
    DispatchQueue::runMainQueueUntil([&] { return !results.empty(); });
    EXPECT_EQ(deliveredOn, std::this_thread::get_id());

    // A second delivery would come before what is submitted now.
    bool passed = false;
    DispatchQueue::asyncMain([&] { passed = true; });
    DispatchQueue::runMainQueueUntil([&] { return passed; });
    EXPECT_EQ(results, std::vector<Result>{"900150983cd24fb0d6963f7d28e17f72"});
}

TEST(QMChecksumServiceAsync, FailureIsDeliveredToo) {
    bool delivered = false;
    Result result = "not called";
    QMChecksumService::checksumForFileAtPath("/nonexistent/f", QMChecksumAlgorithmSHA256,
                                             [&](Result answer) {
                                                 result = std::move(answer);
                                                 delivered = true;
                                             });
    DispatchQueue::runMainQueueUntil([&] { return delivered; });
    EXPECT_EQ(result, std::nullopt);
}

TEST(QMChecksumServiceAsync, WorkIsDoneWithoutACompletion) {
    const TemporaryFolder folder;
    const std::string fifo = folder.path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    QMChecksumService::checksumForFileAtPath(fifo, QMChecksumAlgorithmSHA256, {});
    // Opening for writing waits for the reader: the request is at work.
    const int writer = ::open(fifo.c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_GE(writer, 0);
    EXPECT_EQ(::write(writer, "x", 1), 1);
    ::close(writer);
    bool passed = false;
    QMChecksumService::checksumForFileAtPath("/nonexistent/f", QMChecksumAlgorithmSHA256,
                                             [&](const Result&) { passed = true; });
    DispatchQueue::runMainQueueUntil([&] { return passed; });
}

TEST(QMChecksumServiceAsync, RequestsRunInParallelAndArriveAsTheyFinish) {
    const TemporaryFolder folder;
    const std::string fifo = folder.path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    std::vector<std::string> finished;
    const auto note = [&finished](std::string name) {
        return [&finished, name = std::move(name)](const Result&) { finished.push_back(name); };
    };
    // The first request cannot end before the second has.
    QMChecksumService::checksumForFileAtPath(fifo, QMChecksumAlgorithmSHA256, note("slow"));
    QMChecksumService::checksumForFileAtPath(folder.file("f"), QMChecksumAlgorithmSHA256,
                                             note("fast"));
    DispatchQueue::runMainQueueUntil([&] { return finished.size() == 1; });
    ::close(::open(fifo.c_str(), O_WRONLY | O_CLOEXEC));
    DispatchQueue::runMainQueueUntil([&] { return finished.size() == 2; });
    EXPECT_EQ(finished, (std::vector<std::string>{"fast", "slow"}));
}

TEST(QMChecksumServiceAsync, ManyRequestsAllArrive) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f", std::string(100'000, 'a'));
    const Result expected =
        QMChecksumService::checksumForFileAtPath(path, QMChecksumAlgorithmSHA256);
    constexpr std::size_t count = 100;
    std::vector<Result> results;
    for (std::size_t i = 0; i < count; ++i) {
        QMChecksumService::checksumForFileAtPath(
            path, QMChecksumAlgorithmSHA256,
            [&results](Result result) { results.push_back(std::move(result)); });
    }
    DispatchQueue::runMainQueueUntil([&] { return results.size() == count; });
    EXPECT_EQ(results, std::vector<Result>(count, expected));
}

} // namespace
