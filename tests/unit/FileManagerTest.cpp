// SPDX-License-Identifier: Apache-2.0
#include "platform/FileManager.h"

#include "platform/FileStatus.h"
#include "tests/unit/support/EnvironmentVariable.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <filesystem>
#include <string>

#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

namespace FileManager = platform::FileManager;

TEST(FileManager, ExistenceFollowsLinks) {
    const TemporaryFolder folder;
    ASSERT_NE(folder.file("f"), "");
    EXPECT_TRUE(FileManager::fileExistsAtPath(folder.path("f")));
    EXPECT_TRUE(FileManager::fileExistsAtPath(folder.path()));
    EXPECT_TRUE(FileManager::fileExistsAtPath(folder.link("link", "f")));
    EXPECT_FALSE(FileManager::fileExistsAtPath(folder.link("dangling", "nowhere")));
    EXPECT_FALSE(FileManager::fileExistsAtPath(folder.link("loop", "loop")));
    EXPECT_FALSE(FileManager::fileExistsAtPath(folder.path("f") + "/"));
    EXPECT_FALSE(FileManager::fileExistsAtPath(""));
}

TEST(FileManager, ContentsAreReadUpToALimit) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f", std::string(20'000, 'x'));
    EXPECT_EQ(FileManager::contentsAtPath(path, 20'000)->size(), 20'000U);
    EXPECT_EQ(FileManager::contentsAtPath(path, 19'999), std::nullopt);
    EXPECT_EQ(FileManager::contentsAtPath(folder.file("empty"), 0), platform::Data());
    EXPECT_GT(FileManager::contentsAtPath("/proc/self/status", 1'000'000)->size(), 0U);
    EXPECT_EQ(FileManager::contentsAtPath(folder.path("missing"), 10), std::nullopt);
    EXPECT_EQ(FileManager::contentsAtPath(folder.path(), 10), std::nullopt);
    EXPECT_EQ(FileManager::contentsAtPath("/dev/zero", 10), std::nullopt);
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
    EXPECT_EQ(FileManager::contentsAtPath(folder.path("fifo"), 10), std::nullopt);
}

TEST(FileManager, HomeIsTheVariableElseTheAccounts) {
    {
        const EnvironmentVariable home("HOME", "/some/where//");
        EXPECT_EQ(FileManager::homeDirectory(), "/some/where");
    }
    const auto account = FileManager::homeDirectoryForUser("root");
    EXPECT_EQ(account, "/root");
    EXPECT_EQ(FileManager::homeDirectoryForUser("no-such-user"), std::nullopt);
    const EnvironmentVariable home("HOME", nullptr);
    const auto user = platform::userName(::getuid());
    ASSERT_TRUE(user);
    EXPECT_EQ(FileManager::homeDirectory(), FileManager::homeDirectoryForUser(*user));
}

TEST(FileManager, ResolvesLinksOfPathsThatExist) {
    const TemporaryFolder folder;
    const std::string file = folder.file("f");
    EXPECT_EQ(FileManager::resolvingSymlinks(folder.link("link", "f")), file);
    EXPECT_EQ(FileManager::resolvingSymlinks(folder.path("missing")), std::nullopt);
}

TEST(FileStatus, FollowsLinksWhenAsked) {
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.file("f", "x").c_str(), 04751), 0);
    const std::string link = folder.link("link", "f");
    const auto own = platform::statusOfItem(link, false);
    const auto target = platform::statusOfItem(link, true);
    ASSERT_TRUE(own && target);
    EXPECT_TRUE(own->isSymbolicLink);
    EXPECT_FALSE(target->isSymbolicLink || target->isDirectory);
    EXPECT_EQ(target->mode, 04751U);
    EXPECT_FALSE(platform::statusOfItem(folder.link("dangling", "nowhere"), true));
    EXPECT_TRUE(platform::statusOfItem(folder.path(), true)->isDirectory);
}

TEST(FileStatus, NamesAccounts) {
    EXPECT_EQ(platform::userName(0), "root");
    EXPECT_EQ(platform::groupName(0), "root");
    EXPECT_EQ(platform::userName(987'654), std::nullopt);
    EXPECT_EQ(platform::groupName(987'654), std::nullopt);
}

} // namespace
