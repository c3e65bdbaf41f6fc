// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/WorkFolders.h"

#include "platform/linux/Utf8.h"
#include "tests/unit/support/EnvironmentVariable.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <cerrno>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace {

namespace WorkFolders = platform::hdiutil::WorkFolders;
using WorkFolders::folderNameForLabel;

TEST(WorkFolders, AreTheUsersOwn) {
    const TemporaryFolder folder;
    const EnvironmentVariable runtime{"XDG_RUNTIME_DIR", folder.path().c_str()};
    const std::string records = folder.path("quillmere/attached");
    EXPECT_EQ(WorkFolders::records(), records);
    EXPECT_EQ(WorkFolders::records(), records);
    for (const std::string& path : {records, folder.path("quillmere")}) {
        EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms::owner_all);
    }
}

TEST(WorkFolders, AreNotWhereOthersCouldHavePutThem) {
    const TemporaryFolder folder;
    const EnvironmentVariable runtime{"XDG_RUNTIME_DIR", folder.path().c_str()};
    const std::string ours = folder.folder("quillmere");
    const auto isRefused = [](int reason) {
        errno = 0;
        return !WorkFolders::records() && errno == reason;
    };
    for (const auto who :
         {std::filesystem::perms::group_write, std::filesystem::perms::others_write}) {
        std::filesystem::permissions(ours, std::filesystem::perms::owner_all | who);
        EXPECT_TRUE(isRefused(EPERM));
    }
    std::filesystem::remove(ours);
    static_cast<void>(folder.link("quillmere", folder.folder("elsewhere")));
    EXPECT_TRUE(isRefused(EPERM));
    EXPECT_TRUE(std::filesystem::is_empty(folder.path("elsewhere")));
    std::filesystem::remove(ours);
    static_cast<void>(folder.file("quillmere"));
    EXPECT_TRUE(isRefused(EPERM));
    const EnvironmentVariable missing{"XDG_RUNTIME_DIR", folder.path("missing").c_str()};
    EXPECT_TRUE(isRefused(ENOENT));
    EXPECT_EQ(WorkFolders::freeMountPoint("A"), std::nullopt);
}

TEST(WorkFolders, ForDisksAreInTheCacheOfTheUser) {
    const TemporaryFolder folder;
    const EnvironmentVariable home{"HOME", folder.path().c_str()};
    const EnvironmentVariable cache{"XDG_CACHE_HOME", folder.path("cache").c_str()};
    EXPECT_EQ(WorkFolders::expandedDisks(), folder.path("cache/quillmere/disks"));
    const std::string usual = folder.path(".cache/quillmere/disks");
    for (const char* const nowhere : {"relative", "", static_cast<const char*>(nullptr)}) {
        const EnvironmentVariable none{"XDG_CACHE_HOME", nowhere};
        EXPECT_EQ(WorkFolders::expandedDisks(), usual);
    }
}

TEST(MountPoint, HasANumberWhereItsNameIsTaken) {
    const TemporaryFolder folder;
    const EnvironmentVariable runtime{"XDG_RUNTIME_DIR", folder.path().c_str()};
    const std::string first = folder.path("quillmere/volumes/My Disk");
    ASSERT_EQ(WorkFolders::freeMountPoint("My Disk"), first);
    EXPECT_TRUE(WorkFolders::makeMountPoint(first));
    EXPECT_FALSE(WorkFolders::makeMountPoint(first));
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(WorkFolders::freeMountPoint("My Disk"), first + " 1");
    // Also by a link that leads nowhere.
    static_cast<void>(folder.link("quillmere/volumes/My Disk 1", "nowhere"));
    EXPECT_EQ(WorkFolders::freeMountPoint("My Disk"), first + " 2");
    for (int number = 2; number < 1000; ++number) {
        static_cast<void>(folder.file("quillmere/volumes/My Disk " + std::to_string(number)));
    }
    EXPECT_EQ(WorkFolders::freeMountPoint("My Disk"), std::nullopt);
}

TEST(FolderName, IsThatOfTheLabel) {
    EXPECT_EQ(folderNameForLabel("My Disk"), "My Disk");
    EXPECT_EQ(folderNameForLabel("Übung"), "Übung");
    EXPECT_EQ(folderNameForLabel("a/b"), "a:b");
    EXPECT_EQ(folderNameForLabel("a\n\x01\x7F"
                                 "b"),
              "ab");
    EXPECT_EQ(folderNameForLabel("\xFF"), "\uFFFD");
}

TEST(FolderName, IsNeverThatOfAnotherFolder) {
    for (const char* const label : {"", ".", "..", "\n"}) {
        EXPECT_EQ(folderNameForLabel(label), "Untitled");
    }
    EXPECT_EQ(folderNameForLabel("../.."), "..:..");
    EXPECT_EQ(folderNameForLabel("\xEF\xBF\xBE"), "\uFFFD");
    EXPECT_LT(folderNameForLabel(std::string(5000, '\xFF')).size(), 256U);
    EXPECT_TRUE(platform::isUTF8(folderNameForLabel(std::string(1, 'x').append(5000, '\xFF'))));
    EXPECT_LT(folderNameForLabel(std::string(5000, 'x')).size(), 256U);
}

} // namespace
