// SPDX-License-Identifier: Apache-2.0
#include "platform/Text.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <thread>
#include <utility>
#include <vector>

#include <unistd.h>

#include <gtest/gtest.h>

namespace {

using platform::Text::wordCount;

TEST(TextAsync, ThreadsCountWordsSideBySide) {
    using Case = std::pair<const char*, std::size_t>;
    constexpr std::array<Case, 2> cases{{{"日本語を勉強する", 4}, {"привет, ко\u0301т", 2}}};
    std::array<std::size_t, 4> agreed{};
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < agreed.size(); ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 200; ++round) {
                const auto& [text, count] = cases[i % cases.size()];
                agreed[i] += wordCount(text) == count ? 1U : 0U;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(agreed, (std::array<std::size_t, 4>{200, 200, 200, 200}));
}

// Ends the process, and counts in a thread of its own once objects of the process are destroyed.
void countAfterExit() {
    static_cast<void>(std::atexit([] {
        bool isRight = false;
        std::jthread([&isRight] { isRight = wordCount("one two") == 2; }).join();
        ::_exit(isRight ? 0 : 1);
    }));
    static_cast<void>(wordCount("one"));
    std::exit(2); // NOLINT(concurrency-mt-unsafe): the only thread
}

TEST(TextAsyncDeathTest, ThreadsCountWhileTheProcessEnds) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(countAfterExit(), testing::ExitedWithCode(0), "");
}

} // namespace
