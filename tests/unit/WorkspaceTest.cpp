// SPDX-License-Identifier: Apache-2.0
#include "platform/Workspace.h"

#include "tests/unit/support/EnvironmentVariable.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <string>

#include <gtest/gtest.h>

namespace {

TEST(Workspace, KnowsWhetherAnApplicationIsInstalled) {
    const TemporaryFolder folder;
    const EnvironmentVariable own("XDG_DATA_HOME", folder.path().c_str());
    const EnvironmentVariable system("XDG_DATA_DIRS", folder.path("none").c_str());
    EXPECT_FALSE(platform::Workspace::openApplication("org.example.Files"));
    static_cast<void>(folder.folder("applications"));
    static_cast<void>(folder.file("applications/org.example.Files.desktop",
                                  "[Desktop Entry]\nType=Application\n"));
    EXPECT_TRUE(platform::Workspace::openApplication("org.example.Files"));
    static_cast<void>(
        folder.file("applications/org.example.Files.desktop", "[Desktop Entry]\nTryExec=/none\n"));
    EXPECT_FALSE(platform::Workspace::openApplication("org.example.Files"));
}

TEST(Workspace, PassesOverEntriesThatCannotBeRead) {
    const TemporaryFolder folder;
    const EnvironmentVariable own("XDG_DATA_HOME", folder.path("own").c_str());
    const EnvironmentVariable system("XDG_DATA_DIRS", folder.path("system").c_str());
    static_cast<void>(folder.folder("own/applications"));
    static_cast<void>(folder.folder("system/applications"));
    const std::string name = "/applications/org.example.Files.desktop";
    const std::string entry = "[Desktop Entry]\nType=Application\n";
    static_cast<void>(folder.file("own" + name, entry + std::string(std::size_t{1} << 20, '#')));
    EXPECT_FALSE(platform::Workspace::openApplication("org.example.Files"));
    static_cast<void>(folder.file("system" + name, entry));
    EXPECT_TRUE(platform::Workspace::openApplication("org.example.Files"));
    static_cast<void>(folder.file("own" + name, entry + "Hidden=true\n"));
    EXPECT_FALSE(platform::Workspace::openApplication("org.example.Files"));
}

} // namespace
