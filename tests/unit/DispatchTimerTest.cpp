// SPDX-License-Identifier: Apache-2.0
#include "platform/DispatchTimer.h"

#include "tests/unit/support/Waiting.h"

#include <atomic>
#include <optional>
#include <semaphore>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using platform::DispatchTimer;
using Clock = std::chrono::steady_clock;

constexpr auto quality = platform::DispatchQueue::QualityOfService::defaultClass;

TEST(DispatchTimer, RunsItsWorkOnceAndNotBeforeItsTime) {
    std::atomic<int> runs = 0;
    std::binary_semaphore ran{0};
    const auto start = Clock::now();
    const auto timer = DispatchTimer::after(50ms, quality, [&] {
        ++runs;
        ran.release();
    });
    ran.acquire();
    EXPECT_GE(Clock::now() - start, 50ms);
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(runs, 1);
}

TEST(DispatchTimer, RunsNothingOnceCancelled) {
    const auto held = std::make_shared<int>(0);
    std::atomic<bool> ran = false;
    const auto timer = DispatchTimer::after(1h, quality, [&ran, held] { ran = true; });
    timer.cancel();
    timer.cancel();
    EXPECT_TRUE(eventually([&] { return held.use_count() == 1; }));
    EXPECT_FALSE(ran);
}

TEST(DispatchTimer, RunsWithoutAnybodyWhoKeepsIt) {
    std::binary_semaphore ran{0};
    static_cast<void>(DispatchTimer::after(1ms, quality, [&ran] { ran.release(); }));
    EXPECT_TRUE(ran.try_acquire_for(10s));
}

TEST(DispatchTimer, MayBeCancelledFromInside) {
    std::binary_semaphore ran{0};
    std::binary_semaphore known{0};
    std::optional<DispatchTimer> timer;
    timer = DispatchTimer::after(1ms, quality, [&] {
        known.acquire();
        timer->cancel();
        ran.release();
    });
    known.release();
    EXPECT_TRUE(ran.try_acquire_for(10s));
}

TEST(DispatchTimer, CancelsAfterTheWorkForNothing) {
    std::binary_semaphore ran{0};
    const auto timer = DispatchTimer::after(0ms, quality, [&ran] { ran.release(); });
    EXPECT_TRUE(ran.try_acquire_for(10s));
    timer.cancel();
}

} // namespace
