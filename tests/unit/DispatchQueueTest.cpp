// SPDX-License-Identifier: Apache-2.0
#include "platform/DispatchQueue.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <latch>
#include <memory>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

namespace DispatchQueue = platform::DispatchQueue;

// Latches are shared with the work: a worker may still be leaving `count_down` when the thread
// that waited has gone on and left the test.
using SharedLatch = std::shared_ptr<std::latch>;

SharedLatch makeLatch(std::ptrdiff_t count) {
    return std::make_shared<std::latch>(count);
}

void async(std::function<void()> work) {
    DispatchQueue::async(DispatchQueue::QualityOfService::defaultClass, std::move(work));
}

void joinAll(std::vector<std::thread>& threads) {
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(DispatchQueue, AsyncReturnsBeforeTheWorkEnds) {
    const SharedLatch returned = makeLatch(1);
    const SharedLatch ended = makeLatch(1);
    std::thread::id worker;
    async([=, &worker] {
        returned->wait();
        worker = std::this_thread::get_id();
        ended->count_down();
    });
    EXPECT_FALSE(ended->try_wait());
    returned->count_down();
    ended->wait();
    EXPECT_NE(worker, std::this_thread::get_id());
    EXPECT_NE(worker, std::thread::id());
}

TEST(DispatchQueue, EveryQualityOfServiceRunsWork) {
    const SharedLatch ended = makeLatch(2);
    DispatchQueue::async(DispatchQueue::QualityOfService::defaultClass,
                         [=] { ended->count_down(); });
    DispatchQueue::async(DispatchQueue::QualityOfService::userInitiated,
                         [=] { ended->count_down(); });
    ended->wait();
}

TEST(DispatchQueue, BlockedWorkDoesNotHoldUpLaterWork) {
    constexpr std::ptrdiff_t blockedCount = 100;
    const SharedLatch blocked = makeLatch(blockedCount);
    const SharedLatch opened = makeLatch(1);
    const SharedLatch ended = makeLatch(blockedCount);
    for (std::ptrdiff_t index = 0; index < blockedCount; ++index) {
        async([=] {
            blocked->count_down();
            opened->wait();
            ended->count_down();
        });
    }
    blocked->wait();
    EXPECT_FALSE(ended->try_wait());
    async([=] { opened->count_down(); });
    ended->wait();
}

/// Work that waits for work that it submits, `depth` levels deep.
void nestedWork(int depth, const SharedLatch& ended) {
    if (depth > 0) {
        const SharedLatch innerEnded = makeLatch(1);
        async([=] { nestedWork(depth - 1, innerEnded); });
        innerEnded->wait();
    }
    ended->count_down();
}

TEST(DispatchQueue, WorkMayWaitForWorkThatItSubmits) {
    const SharedLatch ended = makeLatch(1);
    async([=] { nestedWork(60, ended); });
    ended->wait();
}

TEST(DispatchQueue, MoreWorkThanThreadsIsQueued) {
    constexpr std::ptrdiff_t count = 3000;
    const SharedLatch opened = makeLatch(1);
    const SharedLatch ended = makeLatch(count);
    for (std::ptrdiff_t index = 0; index < count; ++index) {
        async([=] {
            opened->wait();
            ended->count_down();
        });
    }
    opened->count_down();
    ended->wait();
}

TEST(DispatchQueue, ConcurrentWorkRunsExactlyOnce) {
    constexpr std::size_t producerCount = 8;
    constexpr std::size_t perProducer = 500;
    constexpr std::size_t count = producerCount * perProducer;
    std::vector<std::atomic<int>> runs(count);
    const SharedLatch ended = makeLatch(count);
    std::vector<std::thread> producers;
    for (std::size_t producer = 0; producer < producerCount; ++producer) {
        producers.emplace_back([&, producer] {
            for (std::size_t index = 0; index < perProducer; ++index) {
                async([ended, &run = runs[producer * perProducer + index]] {
                    ++run;
                    ended->count_down();
                });
            }
        });
    }
    joinAll(producers);
    ended->wait();
    for (const std::atomic<int>& run : runs) {
        ASSERT_EQ(run, 1);
    }
}

TEST(DispatchQueue, WorkMaySubmitMoreAsItIsDestroyed) {
    const SharedLatch ended = makeLatch(1);
    std::shared_ptr<int> owned(new int(0), [=](const int* value) {
        delete value;
        async([=] { ended->count_down(); });
    });
    async([owned = std::move(owned)] {});
    ended->wait();
}

TEST(DispatchQueue, MainWorkRunsInOrderOnTheServicingThread) {
    constexpr std::size_t count = 1000;
    std::vector<std::size_t> order;
    std::size_t elsewhere = 0;
    const std::thread::id servicing = std::this_thread::get_id();
    for (std::size_t index = 0; index < count; ++index) {
        DispatchQueue::asyncMain([&, index] {
            order.push_back(index);
            elsewhere += std::this_thread::get_id() == servicing ? 0U : 1U;
        });
    }
    EXPECT_TRUE(order.empty());
    DispatchQueue::runMainQueueUntil([&] { return order.size() == count; });
    for (std::size_t index = 0; index < count; ++index) {
        ASSERT_EQ(order[index], index);
    }
    EXPECT_EQ(elsewhere, 0U);
}

TEST(DispatchQueue, MainWorkNeverRunsInsideItsSubmission) {
    std::vector<int> order;
    DispatchQueue::asyncMain([&] {
        order.push_back(1);
        DispatchQueue::asyncMain([&] { order.push_back(4); });
        order.push_back(2);
    });
    DispatchQueue::asyncMain([&] { order.push_back(3); });
    DispatchQueue::runMainQueueUntil([&] { return order.size() == 4; });
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4}));
}

TEST(DispatchQueue, MainQueueStopsAfterThePieceThatFulfilsTheCondition) {
    int ran = 0;
    for (int index = 0; index < 5; ++index) {
        DispatchQueue::asyncMain([&] { ++ran; });
    }
    DispatchQueue::runMainQueueUntil([] { return true; });
    EXPECT_EQ(ran, 0);
    for (int expected = 1; expected <= 5; ++expected) {
        DispatchQueue::runMainQueueUntil([&] { return ran >= expected; });
        EXPECT_EQ(ran, expected);
    }
}

TEST(DispatchQueue, MainWorkMayServiceTheMainQueue) {
    std::vector<int> order;
    DispatchQueue::asyncMain([&] {
        order.push_back(1);
        DispatchQueue::runMainQueueUntil([&] { return order.size() == 3; });
        order.push_back(4);
    });
    DispatchQueue::asyncMain([&] { order.push_back(2); });
    DispatchQueue::asyncMain([&] { order.push_back(3); });
    DispatchQueue::runMainQueueUntil([&] { return order.size() == 4; });
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4}));
}

TEST(DispatchQueue, MainWorkOfManyThreadsRunsExactlyOnceInTheOrderOfEach) {
    constexpr std::size_t producerCount = 8;
    constexpr std::size_t perProducer = 250;
    // Touched by main-queue work only, so a sanitizer tells when two pieces run at once.
    std::vector<std::vector<std::size_t>> received(producerCount);
    std::size_t total = 0;
    std::vector<std::thread> producers;
    for (std::size_t producer = 0; producer < producerCount; ++producer) {
        producers.emplace_back([&, producer] {
            for (std::size_t index = 0; index < perProducer; ++index) {
                DispatchQueue::asyncMain([&, producer, index] {
                    received[producer].push_back(index);
                    ++total;
                });
            }
        });
    }
    DispatchQueue::runMainQueueUntil([&] { return total == producerCount * perProducer; });
    joinAll(producers);
    for (const std::vector<std::size_t>& indices : received) {
        ASSERT_EQ(indices.size(), perProducer);
        for (std::size_t index = 0; index < perProducer; ++index) {
            ASSERT_EQ(indices[index], index);
        }
    }
}

TEST(DispatchQueue, ResultsTravelFromConcurrentWorkToTheMainQueue) {
    constexpr std::size_t count = 300;
    std::size_t sum = 0;
    std::size_t answers = 0;
    for (std::size_t index = 0; index < count; ++index) {
        async([&, index] {
            // Plain memory on purpose: handing it over must order it.
            auto result = std::make_shared<std::vector<std::size_t>>(1, index);
            DispatchQueue::asyncMain([&, result] {
                sum += result->front();
                ++answers;
            });
        });
    }
    DispatchQueue::runMainQueueUntil([&] { return answers == count; });
    EXPECT_EQ(sum, count * (count - 1) / 2);
}

TEST(DispatchQueue, TheReplyComesAfterTheWorkOnTheMainQueue) {
    std::thread::id worker;
    std::thread::id replier;
    bool isDone = false;
    DispatchQueue::asyncWithReply(
        DispatchQueue::QualityOfService::userInitiated,
        [&] { worker = std::this_thread::get_id(); },
        [&] {
            replier = std::this_thread::get_id();
            isDone = worker != std::thread::id();
        });
    DispatchQueue::runMainQueueUntil([&] { return isDone; });
    EXPECT_NE(worker, replier);
    EXPECT_EQ(replier, std::this_thread::get_id());
}

TEST(DispatchQueue, TheReplyComesAlsoWhenTheWorkRunsOutOfMemory) {
    bool isDone = false;
    DispatchQueue::asyncWithReply(
        DispatchQueue::QualityOfService::userInitiated, [] { throw std::bad_alloc(); },
        [&isDone] { isDone = true; });
    DispatchQueue::runMainQueueUntil([&isDone] { return isDone; });
    EXPECT_TRUE(isDone);
}

TEST(DispatchQueue, WhatTheWorkHoldsIsGoneWhenTheReplyComes) {
    const auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> watcher = held;
    bool isDone = false;
    bool isGone = false;
    const auto submit = [&](std::shared_ptr<int> taken) {
        DispatchQueue::asyncWithReply(
            DispatchQueue::QualityOfService::defaultClass, [taken = std::move(taken)] {},
            [&] {
                isGone = watcher.use_count() == 1;
                isDone = true;
            });
    };
    submit(held);
    DispatchQueue::runMainQueueUntil([&isDone] { return isDone; });
    EXPECT_TRUE(isGone);
}

TEST(DispatchQueue, AnyThreadMayServiceTheMainQueue) {
    std::thread::id ranOn;
    std::thread servicing([&] {
        bool ran = false;
        async([&] {
            DispatchQueue::asyncMain([&] {
                ranOn = std::this_thread::get_id();
                ran = true;
            });
        });
        DispatchQueue::runMainQueueUntil([&] { return ran; });
    });
    const std::thread::id expected = servicing.get_id();
    servicing.join();
    EXPECT_EQ(ranOn, expected);
}

TEST(DispatchQueue, ThreadsThatServiceTheMainQueueTakeTurns) {
    constexpr int count = 40;
    std::atomic<int> ran = 0;
    std::vector<std::thread> servicing;
    for (int target = 10; target <= count; target += 10) {
        servicing.emplace_back(
            [&, target] { DispatchQueue::runMainQueueUntil([&] { return ran >= target; }); });
    }
    for (int index = 0; index < count; ++index) {
        DispatchQueue::asyncMain([&] { ++ran; });
    }
    joinAll(servicing);
    EXPECT_EQ(ran, count);
}

} // namespace
