// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/XdgFolders.h"

#include "tests/unit/support/EnvironmentVariable.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::XdgFolders::configurationFolder;
using platform::XdgFolders::dataFolders;
using Paths = std::vector<std::string>;

TEST(XdgFolders, HaveDefaults) {
    const EnvironmentVariable home("HOME", "/home/x");
    const EnvironmentVariable own("XDG_DATA_HOME", nullptr);
    const EnvironmentVariable system("XDG_DATA_DIRS", nullptr);
    const Paths expected{"/home/x/.local/share", "/usr/local/share", "/usr/share"};
    EXPECT_EQ(dataFolders(), expected);
    const EnvironmentVariable emptyOwn("XDG_DATA_HOME", "");
    const EnvironmentVariable emptySystem("XDG_DATA_DIRS", "");
    EXPECT_EQ(dataFolders(), expected);
}

TEST(XdgFolders, AreReadInOrder) {
    const EnvironmentVariable own("XDG_DATA_HOME", "/own");
    const EnvironmentVariable system("XDG_DATA_DIRS", "/b:/a b::/c/");
    EXPECT_EQ(dataFolders(), (Paths{"/own", "/b", "/a b", "/c/"}));
}

TEST(XdgFolders, AreAbsolute) {
    const EnvironmentVariable home("HOME", "/home/x");
    const EnvironmentVariable own("XDG_DATA_HOME", "own");
    const EnvironmentVariable system("XDG_DATA_DIRS", "b:/a:./c:~");
    EXPECT_EQ(dataFolders(), (Paths{"/home/x/.local/share", "/a"}));
}

TEST(XdgFolders, KeepSettingsApart) {
    const EnvironmentVariable home("HOME", "/home/x");
    const EnvironmentVariable own("XDG_CONFIG_HOME", "/own");
    EXPECT_EQ(configurationFolder(), "/own");
    for (const char* const useless : {"", "own", "~"}) {
        const EnvironmentVariable relative("XDG_CONFIG_HOME", useless);
        EXPECT_EQ(configurationFolder(), "/home/x/.config") << useless;
    }
}

} // namespace
