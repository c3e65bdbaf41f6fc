// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/TagSearch.h"

#include "platform/FileTags.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using platform::itemsWithTag;
using platform::SearchScope;
using Paths = std::vector<std::string>;

class TagSearch : public testing::Test {
protected:
    void SetUp() override {
        if (platform::FileTags::write(folder.file("probe"), {"x"})) {
            GTEST_SKIP() << "the file system keeps no extended attributes";
        }
        std::filesystem::remove(folder.path("probe"));
    }
    std::string tagged(const std::string& path, const Paths& tags = {"wanted"}) {
        EXPECT_FALSE(platform::FileTags::write(path, tags));
        return path;
    }
    [[nodiscard]] Paths found(std::unordered_set<std::string> excluded = {}) const {
        return itemsWithTag({{folder.path()}, std::move(excluded)}, "wanted");
    }
    TemporaryFolder folder;
};

TEST_F(TagSearch, FindsFilesFoldersAndHiddenItemsSorted) {
    const Paths expected{tagged(folder.folder("a")), tagged(folder.file("a/.hidden")),
                         tagged(folder.folder("b/c/d")), tagged(folder.file("b/c/f"))};
    ASSERT_NE(folder.file("b/plain"), "");
    EXPECT_EQ(found(), expected);
}

TEST_F(TagSearch, ComparesNamesExactly) {
    tagged(folder.file("1"), {"Wanted"});
    tagged(folder.file("2"), {"wanted "});
    tagged(folder.file("3"), {"unwanted"});
    const Paths expected{tagged(folder.file("4"), {"other", "wanted", "more"})};
    EXPECT_EQ(found(), expected);
}

TEST_F(TagSearch, TheStartingPointItselfCounts) {
    tagged(folder.path());
    EXPECT_EQ(found(), Paths{folder.path()});
    const std::string file = tagged(folder.file("f"));
    EXPECT_EQ(itemsWithTag({{file}, {}}, "wanted"), Paths{file});
}

TEST_F(TagSearch, LinksAreNotFollowed) {
    const TemporaryFolder elsewhere;
    tagged(elsewhere.file("f"));
    ASSERT_NE(folder.link("link", elsewhere.path()), "");
    ASSERT_NE(folder.link("loop", "."), "");
    ASSERT_NE(folder.link("file", elsewhere.path("f")), "");
    EXPECT_EQ(found(), Paths());
}

TEST_F(TagSearch, ExcludedFoldersAreNotEntered) {
    const std::string mounted = tagged(folder.folder("mounted"));
    tagged(folder.file("mounted/f"));
    const std::string beside = tagged(folder.file("mounted2"));
    EXPECT_EQ(found({mounted}), Paths{beside});
}

TEST_F(TagSearch, OddNamesAndSpecialFilesAreNoHindrance) {
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
    const Paths expected{tagged(folder.file("a\nb")), tagged(folder.file("caf\xE9"))};
    EXPECT_EQ(found(), expected);
}

TEST_F(TagSearch, MissingStartingPointsGiveNothing) {
    EXPECT_EQ(itemsWithTag({{folder.path("missing")}, {}}, "wanted"), Paths());
    EXPECT_EQ(itemsWithTag({}, "wanted"), Paths());
}

TEST_F(TagSearch, BroadAndDeepTreesAreWalkedWhole) {
    std::string path = ".";
    for (int depth = 0; depth < 200; ++depth) {
        path += "/d";
    }
    const std::string deep = folder.folder(path);
    ASSERT_NE(folder.file(path + "/f"), "");
    tagged(folder.path(path + "/f"));
    for (int i = 0; i < 3000; ++i) {
        ASSERT_NE(folder.file("broad" + std::to_string(i)), "");
    }
    tagged(folder.path("broad2999"));
    EXPECT_EQ(found().size(), 2U);
}

TEST_F(TagSearch, WhatVanishesMeanwhileIsNoHindrance) {
    const std::string kept = tagged(folder.file("kept"));
    std::atomic<bool> stop = false;
    std::thread churn([this, &stop] {
        while (!stop) {
            const std::string sub = folder.folder("churn/x/y");
            std::filesystem::remove_all(folder.path("churn"));
        }
    });
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(found(), Paths{kept});
    }
    stop = true;
    churn.join();
}

const platform::MountTable::Mount root{1, "8:1", "/", "/", "ext4", "/dev/a"};
const platform::MountTable::Mount networkRoot{1, "0:9", "/", "/", "nfs4", "x:/"};
const platform::MountTable::Mount processes{2, "0:5", "/", "/proc", "proc", "proc"};
const platform::MountTable::Mount data{3, "8:2", "/", "/data", "xfs", "/dev/b"};
const platform::MountTable::Mount hidden{4, "8:3", "/", "/data/below", "xfs", "/dev/c"};

TEST(SearchScope, HoldsLocalMountsAndStopsAtAllOthers) {
    const auto scope = platform::scopeOf({root, processes, data, hidden}, {root, processes, data});
    EXPECT_EQ(scope.startingPoints, (Paths{"/", "/data"}));
    EXPECT_EQ(scope.excludedPaths,
              (std::unordered_set<std::string>{"/", "/proc", "/data", "/data/below"}));
}

TEST(SearchScope, HoldsTheRootThatTheTableDoesNotTellOf) {
    EXPECT_EQ(platform::scopeOf({processes, data}, {processes, data}).startingPoints,
              (Paths{"/", "/data"}));
    EXPECT_EQ(platform::scopeOf({}, {}).startingPoints, Paths{"/"});
}

TEST(SearchScope, DoesNotHoldARootOnTheNetwork) {
    EXPECT_EQ(platform::scopeOf({networkRoot, data}, {networkRoot, data}).startingPoints,
              Paths{"/data"});
}

TEST_F(TagSearch, LocalComputerHoldsTheTemporaryFolder) {
    const SearchScope scope = platform::localComputerScope();
    EXPECT_FALSE(scope.startingPoints.empty());
    EXPECT_TRUE(scope.excludedPaths.contains("/proc"));
    EXPECT_EQ(std::ranges::find(scope.startingPoints, "/proc"), scope.startingPoints.end());
}

} // namespace
