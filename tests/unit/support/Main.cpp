// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>

#include <gtest/gtest.h>

/// Runs the tests in the same surroundings everywhere.
int main(int argc, char** argv) {
    ::setenv("LC_ALL", "C.UTF-8", 1);
    ::setenv("TZ", "UTC", 1);
    ::setenv("HOME", "/nonexistent", 1);
    for (const char* variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME",
                                 "XDG_STATE_HOME", "XDG_RUNTIME_DIR"}) {
        ::setenv(variable, "/nonexistent", 1);
    }
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
