// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/ImageState.h"

#include "platform/linux/hdiutil/ByteSource.h"
#include "tests/unit/support/FileTime.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <filesystem>
#include <functional>

#include <gtest/gtest.h>

namespace {

using platform::FileIdentity;
using platform::hdiutil::bundleStateAt;
using platform::hdiutil::FileSource;
using platform::hdiutil::imageStateOf;

constexpr std::int64_t second = 1'000'000'000;
const FileIdentity someFile{
    .device = 1, .inode = 2, .size = 3, .modified = 4 * second, .changed = 5 * second};

TEST(ImageState, DependsOnEverythingThatWritingChanges) {
    const auto state = imageStateOf(someFile);
    ASSERT_TRUE(state);
    EXPECT_EQ(imageStateOf(someFile), state);
    const std::vector<std::function<void(FileIdentity&)>> changes{
        [](FileIdentity& file) { ++file.device; },  [](FileIdentity& file) { ++file.inode; },
        [](FileIdentity& file) { ++file.size; },    [](FileIdentity& file) { ++file.modified; },
        [](FileIdentity& file) { ++file.changed; },
    };
    for (const auto& change : changes) {
        FileIdentity changed = someFile;
        change(changed);
        EXPECT_TRUE(imageStateOf(changed));
        EXPECT_NE(imageStateOf(changed), state);
    }
}

TEST(ImageState, IsUnknownForDevicesAndForFilesThatAreBeingWritten) {
    EXPECT_EQ(platform::identityOfFile("/dev/null"), std::nullopt);
    EXPECT_EQ(imageStateOf(std::nullopt), std::nullopt);
    const TemporaryFolder folder;
    const std::string path = folder.file("image", "x");
    setModified(path, std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
    EXPECT_EQ(imageStateOf(FileSource::open(path)->state()), std::nullopt);
    makeOld(path);
    EXPECT_NE(imageStateOf(FileSource::open(path)->state()), std::nullopt);
}

TEST(FileSource, KnowsWhetherTheFileWasWrittenTo) {
    const TemporaryFolder folder;
    const std::string path = folder.file("image", "x");
    makeOld(path);
    const auto source = FileSource::open(path);
    ASSERT_TRUE(source);
    std::filesystem::rename(path, folder.path("moved"));
    EXPECT_TRUE(source->isUnchanged());
    static_cast<void>(folder.file("moved", "y"));
    EXPECT_FALSE(source->isUnchanged());
}

// A bundle of three bands, nothing of which was written lately.
struct Bundle {
    Bundle() {
        static_cast<void>(folder.folder("bands"));
        for (const char* const name : {"Info.plist", "bands/0", "bands/1", "bands/a"}) {
            makeOld(folder.file(name, "x"));
        }
    }
    [[nodiscard]] auto state() const { return bundleStateAt(folder.path()); }

    TemporaryFolder folder;
};

TEST(BundleState, StaysAsLongAsNothingIsWritten) {
    const Bundle bundle;
    ASSERT_TRUE(bundle.state());
    EXPECT_EQ(bundle.state(), bundle.state());
}

TEST(BundleState, DependsOnEveryBand) {
    const Bundle bundle;
    const auto before = bundle.state();
    for (const char* const name : {"Info.plist", "bands/0", "bands/1", "bands/a"}) {
        const Bundle other;
        const auto state = other.state();
        const std::string path = other.folder.file(name, "y");
        setModified(path, std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
        EXPECT_EQ(other.state(), std::nullopt) << name;
        makeOld(path);
        ASSERT_TRUE(other.state());
        EXPECT_NE(other.state(), state) << name;
    }
    std::filesystem::rename(bundle.folder.path("bands/1"), bundle.folder.path("bands/2"));
    const auto moved = bundle.state();
    EXPECT_NE(moved, before);
    std::filesystem::remove(bundle.folder.path("bands/2"));
    ASSERT_TRUE(bundle.state());
    EXPECT_NE(bundle.state(), moved);
}

TEST(BundleState, IsUnknownWhereThereIsNoBundle) {
    const Bundle bundle;
    std::filesystem::create_symlink("nowhere", bundle.folder.path("bands/3"));
    EXPECT_EQ(bundle.state(), std::nullopt);
    std::filesystem::remove_all(bundle.folder.path("bands"));
    EXPECT_EQ(bundle.state(), std::nullopt);
    EXPECT_EQ(bundleStateAt(bundle.folder.path("none")), std::nullopt);
}

} // namespace
