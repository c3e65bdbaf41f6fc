// SPDX-License-Identifier: Apache-2.0
#include "platform/NotificationCenter.h"

#include <atomic>
#include <optional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::Notification;
using platform::NotificationCenter;
using Seen = std::vector<std::string>;

class Notifications : public testing::Test {
protected:
    NotificationCenter::Token observe(std::string_view name, const void* object,
                                      const std::string& mark) {
        return center.addObserver(name, object, [this, mark](const Notification& notification) {
            seen.push_back(mark + ":" + notification.name);
        });
    }
    void post(const std::string& name, const void* object = nullptr) {
        center.post({name, object, {}});
    }

    NotificationCenter center;
    Seen seen;
    int oneObject = 0;
    int otherObject = 0;
};

TEST_F(Notifications, ReachObserversOfTheirNameInOrder) {
    static_cast<void>(observe("a", nullptr, "1"));
    static_cast<void>(observe("b", nullptr, "2"));
    static_cast<void>(observe("a", nullptr, "3"));
    post("a");
    post("b");
    post("c");
    EXPECT_EQ(seen, (Seen{"1:a", "3:a", "2:b"}));
}

TEST_F(Notifications, ReachObserversOfTheirObject) {
    static_cast<void>(observe("a", &oneObject, "one"));
    static_cast<void>(observe("a", &otherObject, "other"));
    static_cast<void>(observe("a", nullptr, "any"));
    post("a", &oneObject);
    post("a");
    EXPECT_EQ(seen, (Seen{"one:a", "any:a", "any:a"}));
}

TEST_F(Notifications, CarryTheirInformation) {
    Notification got;
    const auto url = platform::FileURL::fromPath("/mnt/disk");
    static_cast<void>(center.addObserver("a", nullptr, [&got](const Notification& n) { got = n; }));
    center.post({"a", &oneObject, {{"path", std::string("/x")}, {"url", url}}});
    EXPECT_EQ(got.object, &oneObject);
    EXPECT_EQ(std::get<std::string>(got.userInfo.at("path")), "/x");
    EXPECT_EQ(std::get<platform::FileURL>(got.userInfo.at("url")), url);
}

TEST_F(Notifications, DoNotReachRemovedObservers) {
    const auto token = observe("a", nullptr, "1");
    static_cast<void>(observe("a", nullptr, "2"));
    center.removeObserver(token);
    center.removeObserver(token);
    post("a");
    EXPECT_EQ(seen, Seen{"2:a"});
}

TEST_F(Notifications, AllowTheirObserversEverything) {
    std::optional<NotificationCenter::Token> last;
    static_cast<void>(center.addObserver("a", nullptr, [&](const Notification&) {
        center.removeObserver(*last);
        static_cast<void>(observe("a", nullptr, "new"));
        post("b");
    }));
    static_cast<void>(observe("b", nullptr, "nested"));
    last = observe("a", nullptr, "removed");
    post("a");
    EXPECT_EQ(seen, Seen{"nested:b"});
}

TEST_F(Notifications, MayBePostedAndObservedFromManyThreads) {
    std::atomic<int> count = 0;
    const auto token = center.addObserver("a", nullptr, [&count](const Notification&) { ++count; });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                const auto mine = center.addObserver("b", nullptr, [](const Notification&) {});
                center.post({"a", nullptr, {}});
                center.post({"b", nullptr, {}});
                center.removeObserver(mine);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    center.removeObserver(token);
    EXPECT_EQ(count, 800);
}

TEST(DefaultNotificationCenter, IsOne) {
    EXPECT_EQ(&NotificationCenter::defaultCenter(), &NotificationCenter::defaultCenter());
}

} // namespace
