// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/support/StandardUserDefaults.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::PropertyList;
using platform::UserDefaults;
using Dictionary = PropertyList::Dictionary;

// Each state of the file is whole: the array has as many elements as its first one says.
PropertyList stateOfFile(std::int64_t size) {
    return Dictionary{
        {"array", PropertyList::Array(static_cast<std::size_t>(size), PropertyList(size))}};
}

bool isWhole(const PropertyList::Array& array) {
    return !array.empty() && array.front() == PropertyList(static_cast<std::int64_t>(array.size()));
}

TEST(UserDefaultsAsync, AreReadWhileTheyChange) {
    const StandardUserDefaults settings;
    settings.save(stateOfFile(1));
    std::atomic<bool> isOver = false;
    std::atomic<int> broken = 0;
    const auto read = [&isOver, &broken] {
        while (!isOver) {
            const auto array = UserDefaults::standard().arrayForKey("array");
            broken += array && isWhole(*array) ? 0 : 1;
        }
    };
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i) {
        readers.emplace_back(read);
    }
    for (std::int64_t size = 1; size <= 200; ++size) {
        settings.save(stateOfFile(size));
    }
    isOver = true;
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(broken, 0);
    EXPECT_EQ(UserDefaults::standard().arrayForKey("array")->size(), 200);
}

TEST(UserDefaultsAsync, KeepAllThatThreadsRegisterAtOnce) {
    const StandardUserDefaults settings;
    const auto registerAll = [](int thread) {
        for (int i = 0; i < 50; ++i) {
            UserDefaults::standard().registerDefaults(
                {{std::to_string(thread) + "." + std::to_string(i), true}});
        }
    };
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back(registerAll, thread);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    int found = 0;
    for (int thread = 0; thread < 4; ++thread) {
        for (int i = 0; i < 50; ++i) {
            const std::string key = std::to_string(thread) + "." + std::to_string(i);
            found += UserDefaults::standard().boolForKey(key) ? 1 : 0;
        }
    }
    EXPECT_EQ(found, 200);
}

} // namespace
