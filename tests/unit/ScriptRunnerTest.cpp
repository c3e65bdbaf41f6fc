// SPDX-License-Identifier: Apache-2.0
#include "platform/ScriptRunner.h"

#include "tests/unit/support/EnvironmentVariable.h"

#include <gtest/gtest.h>

namespace {

TEST(ScriptRunner, FailsWithoutABus) {
    const EnvironmentVariable address("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus");
    const auto failure = platform::ScriptRunner::run("org.example.Files", "x");
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->message, "Cannot connect to the session bus: No such file or directory");
}

} // namespace
