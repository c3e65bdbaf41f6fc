// SPDX-License-Identifier: Apache-2.0
#include "platform/SystemLog.h"

#include "tests/unit/support/LogRecorder.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

namespace SystemLog = platform::SystemLog;

using Messages = std::vector<std::string>;

TEST(SystemLog, SinkReceivesMessagesInOrder) {
    const LogRecorder log;
    SystemLog::error("first");
    SystemLog::error("");
    SystemLog::error("third: %s %n, grün, 日本");
    EXPECT_EQ(log.messages, (Messages{"first", "", "third: %s %n, grün, 日本"}));
}

TEST(SystemLog, ControlCharactersBecomeBlanks) {
    using namespace std::string_view_literals;
    const LogRecorder log;
    SystemLog::error("a\nb\r\nc\td"sv);
    SystemLog::error("nul\0hidden"sv);
    SystemLog::error("\x1B[31mred\x7F"sv);
    EXPECT_EQ(log.messages, (Messages{"a b  c d", "nul hidden", " [31mred "}));
}

TEST(SystemLog, LineBreaksBeyondAsciiBecomeBlanks) {
    const LogRecorder log;
    SystemLog::error("a\u0085b\u2028c\u2029d");
    SystemLog::error("csi\u009Bend");
    EXPECT_EQ(log.messages, (Messages{"a b c d", "csi end"}));
}

TEST(SystemLog, NeighboursOfControlCharactersStay) {
    const LogRecorder log;
    // The last one is put together here: spelled out, it turns the direction of text around.
    const std::string text = " ~\u00A0\u00BF\u2027\U0001F600\xE2\x80" + std::string("\xAA");
    SystemLog::error(text);
    EXPECT_EQ(log.messages, Messages{text});
}

TEST(SystemLog, SequencesThatEndEarlyStay) {
    const LogRecorder log;
    SystemLog::error("\xC2");
    SystemLog::error("\xE2\x80");
    SystemLog::error(std::string_view("\xE2\x80\xA8", 2));
    EXPECT_EQ(log.messages, (Messages{"\xC2", "\xE2\x80", "\xE2\x80"}));
}

TEST(SystemLog, NothingReachesTheTerminal) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    SystemLog::error("test message of the unit tests: 100 %s %d %n");
    {
        const LogRecorder log;
        SystemLog::error("to the sink");
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(SystemLog, EmptySinkEndsDelivery) {
    Messages messages;
    SystemLog::setSink([&messages](std::string_view message) { messages.emplace_back(message); });
    SystemLog::error("seen");
    SystemLog::setSink({});
    SystemLog::error("test message of the unit tests");
    EXPECT_EQ(messages, Messages{"seen"});
}

TEST(SystemLog, SinkMayLogWithoutRecursion) {
    Messages messages;
    SystemLog::setSink([&messages](std::string_view message) {
        messages.emplace_back(message);
        SystemLog::error("test message of the unit tests, logged by a sink");
    });
    SystemLog::error("first");
    SystemLog::error("second");
    SystemLog::setSink({});
    EXPECT_EQ(messages, (Messages{"first", "second"}));
}

TEST(SystemLog, SinkMayReplaceItself) {
    Messages first;
    Messages second;
    SystemLog::setSink([&first, &second](std::string_view message) {
        SystemLog::setSink([&second](std::string_view later) { second.emplace_back(later); });
        first.emplace_back(message);
    });
    SystemLog::error("one");
    SystemLog::error("two");
    SystemLog::setSink({});
    EXPECT_EQ(first, Messages{"one"});
    EXPECT_EQ(second, Messages{"two"});
}

TEST(SystemLog, DepartingSinkMayLog) {
    Messages messages;
    std::shared_ptr<int> farewell(new int(0), [](const int* value) {
        delete value;
        SystemLog::error("gone");
    });
    SystemLog::setSink([owned = std::move(farewell)](std::string_view) {});
    SystemLog::setSink([&messages](std::string_view message) { messages.emplace_back(message); });
    SystemLog::setSink({});
    EXPECT_EQ(messages, Messages{"gone"});
}

TEST(SystemLog, ThreadsReachTheSinkOneAtATime) {
    constexpr std::size_t threadCount = 8;
    constexpr std::size_t perThread = 200;
    const LogRecorder log;
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([thread] {
            for (std::size_t index = 0; index < perThread; ++index) {
                SystemLog::error(std::to_string(thread * perThread + index));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    Messages expected;
    for (std::size_t number = 0; number < threadCount * perThread; ++number) {
        expected.push_back(std::to_string(number));
    }
    Messages received = log.messages;
    std::sort(received.begin(), received.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(received, expected);
}

} // namespace
