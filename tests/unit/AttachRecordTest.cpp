// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/AttachRecord.h"

#include "tests/unit/support/EnvironmentVariable.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using platform::PropertyList;
using platform::hdiutil::AttachRecord;
using platform::hdiutil::AttachRecords;
using platform::hdiutil::MountMethod;

AttachRecord record() {
    return {"/a/image\xFF.dmg",
            "/cache/1.disk",
            {{"/run/x/A", MountMethod::kernel},
             {"/run/x/\xFF", MountMethod::fuse},
             {"/run/x/C", MountMethod::copy},
             {"/media/x/D", MountMethod::service, {"/dev/loop3", "/a/\xFF", 4096, 17}}},
            {PropertyList(PropertyList::Dictionary{{"dev-entry", "/dev/loop3"}})},
            true};
}

TEST(AttachRecord, SurvivesBeingWritten) {
    const AttachRecord original = record();
    for (const auto format : {PropertyList::Format::xml, PropertyList::Format::binary}) {
        const auto bytes = original.asPropertyList().serialized(format);
        const auto list = PropertyList::parse(bytes);
        ASSERT_TRUE(list);
        EXPECT_EQ(AttachRecord::fromPropertyList(*list), original);
    }
}

TEST(AttachRecord, IsNotReadFromAnythingElse) {
    EXPECT_EQ(AttachRecord::fromPropertyList(PropertyList("x")), std::nullopt);
    const PropertyList list = record().asPropertyList();
    for (const auto& [key, value] : *list.dictionary()) {
        PropertyList::Dictionary lacking = *list.dictionary();
        lacking.erase(key);
        EXPECT_EQ(AttachRecord::fromPropertyList(lacking), std::nullopt) << key;
        lacking.emplace(key, PropertyList(std::int64_t{1}));
        const auto read = AttachRecord::fromPropertyList(lacking);
        EXPECT_TRUE(!read || (key == "complete" && !read->isComplete)) << key;
    }
    PropertyList::Dictionary strange = *list.dictionary();
    strange.insert_or_assign("volumes", PropertyList::Array{PropertyList("x")});
    EXPECT_EQ(AttachRecord::fromPropertyList(strange), std::nullopt);
}

TEST(AttachRecord, NeedsTheMountPointAndTheMethodOfAVolume) {
    const PropertyList list = record().asPropertyList();
    const auto isRead = [&list](PropertyList::Dictionary volume) {
        PropertyList::Dictionary changed = *list.dictionary();
        changed.insert_or_assign("volumes", PropertyList::Array{std::move(volume)});
        return AttachRecord::fromPropertyList(changed).has_value();
    };
    const PropertyList::Dictionary whole =
        *list.valueForKey("volumes")->array()->front().dictionary();
    EXPECT_TRUE(isRead(whole));
    for (const char* const key : {"mount-point", "method"}) {
        PropertyList::Dictionary volume = whole;
        volume.erase(key);
        EXPECT_FALSE(isRead(volume)) << key;
        volume.emplace(key, PropertyList(std::int64_t{0}));
        EXPECT_FALSE(isRead(volume)) << key;
        volume.insert_or_assign(key, "magic");
        EXPECT_FALSE(isRead(volume)) << key;
    }
}

TEST(AttachRecord, NeedsAllOfADeviceOfTheService) {
    const PropertyList list = record().asPropertyList();
    const PropertyList volume = list.valueForKey("volumes")->array()->back();
    for (const char* const key : {"device", "file", "offset", "sequence"}) {
        PropertyList::Dictionary lacking = *volume.dictionary();
        lacking.insert_or_assign(key, PropertyList(std::int64_t{-1}));
        PropertyList::Dictionary changed = *list.dictionary();
        changed.insert_or_assign("volumes", PropertyList::Array{lacking});
        EXPECT_EQ(AttachRecord::fromPropertyList(changed), std::nullopt) << key;
        lacking.erase(key);
        changed.insert_or_assign("volumes", PropertyList::Array{lacking});
        EXPECT_EQ(AttachRecord::fromPropertyList(changed), std::nullopt) << key;
    }
}

// As many as a partition map may have, of an image far from the root.
TEST(AttachRecords, KeepWhatIsSaidOfManyVolumes) {
    const TemporaryFolder folder;
    const EnvironmentVariable runtime{"XDG_RUNTIME_DIR", folder.path().c_str()};
    const auto records = AttachRecords::open();
    ASSERT_TRUE(records);
    constexpr std::size_t count = 1024;
    const std::string image = "/" + std::string(4000, 'i');
    AttachRecord many;
    many.image = image;
    many.volumes.assign(count, {"/media/x/D", MountMethod::service, {"/dev/loop3", image, 0, 1}});
    many.entities.assign(count, PropertyList::Dictionary{{"dev-entry", image}});
    ASSERT_TRUE(records->store(many));
    const auto kept = records->all();
    ASSERT_EQ(kept.size(), 1U);
    EXPECT_TRUE(kept.front() == many);
}

} // namespace
