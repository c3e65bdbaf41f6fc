// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/MessageBus.h"

#include "tests/unit/support/EnvironmentVariable.h"

#include <variant>

#include <gtest/gtest.h>

namespace {

using platform::activationOptions;
using platform::MessageBus;

TEST(MessageBus, PutsNamesIntoObjectPaths) {
    EXPECT_EQ(platform::objectPathForName("org.example.Files"), "/org/example/Files");
    EXPECT_EQ(platform::objectPathForName("a.b_c.D1"), "/a/b_c/D1");
}

TEST(MessageBus, HandsOnOneActivationToken) {
    const EnvironmentVariable wayland("XDG_ACTIVATION_TOKEN", nullptr);
    const EnvironmentVariable x11("DESKTOP_STARTUP_ID", nullptr);
    EXPECT_TRUE(activationOptions().empty());
    const EnvironmentVariable second("DESKTOP_STARTUP_ID", "two");
    ASSERT_EQ(activationOptions().size(), 1U);
    EXPECT_EQ(std::get<std::string>(activationOptions()[0].value), "two");
    const EnvironmentVariable first("XDG_ACTIVATION_TOKEN", "one");
    ASSERT_EQ(activationOptions().size(), 1U);
    EXPECT_EQ(activationOptions()[0].name, "activation-token");
    EXPECT_EQ(std::get<std::string>(activationOptions()[0].value), "one");
    const EnvironmentVariable empty("XDG_ACTIVATION_TOKEN", "");
    EXPECT_EQ(std::get<std::string>(activationOptions()[0].value), "two");
    const EnvironmentVariable damaged("XDG_ACTIVATION_TOKEN", "\xFF");
    EXPECT_EQ(std::get<std::string>(activationOptions()[0].value), "two");
}

TEST(MessageBus, TellsWhyItCannotBeReached) {
    const EnvironmentVariable address("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus");
    const auto bus =
        MessageBus::connectToSession(std::chrono::steady_clock::now() + std::chrono::seconds(10));
    ASSERT_TRUE(std::holds_alternative<MessageBus::Unreachable>(bus));
    EXPECT_EQ(std::get<MessageBus::Unreachable>(bus).reason, "No such file or directory");
}

} // namespace
