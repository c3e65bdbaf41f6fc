// SPDX-License-Identifier: Apache-2.0
#include "platform/KeyedArchive.h"

#include "platform/PropertyList.h"

#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

using platform::Data;
using platform::KeyedArchiver;
using platform::KeyedUnarchiver;
using platform::PropertyList;
using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;
using UID = PropertyList::UID;

Data archiveOf(const std::string& text) {
    KeyedArchiver archiver("Item");
    archiver.encodeString("path", text);
    return archiver.encodedData();
}

std::optional<std::string> pathIn(const Data& archive) {
    const auto decoded = KeyedUnarchiver::forReadingFromData(archive, "Item");
    return decoded ? decoded->decodeString("path") : std::nullopt;
}

const Dictionary itemClass{{"$classname", "Item"}, {"$classes", Array{"Item", "NSObject"}}};

/// The path read from an archive with these objects, whose root is the one at `root`.
std::optional<std::string> pathIn(Array objects, PropertyList root = UID{1}) {
    return pathIn(PropertyList(Dictionary{{"$archiver", "NSKeyedArchiver"},
                                          {"$version", std::int64_t{100000}},
                                          {"$top", Dictionary{{"root", std::move(root)}}},
                                          {"$objects", std::move(objects)}})
                      .serialized(PropertyList::Format::binary));
}

TEST(KeyedArchive, HasTheShapeOfAKeyedArchive) {
    const auto list = PropertyList::parse(archiveOf("/a"));
    ASSERT_TRUE(list && list->valueForKey("$objects") && list->valueForKey("$top"));
    EXPECT_EQ(*list->valueForKey("$archiver"), PropertyList("NSKeyedArchiver"));
    EXPECT_EQ(*list->valueForKey("$version"), PropertyList(std::int64_t{100000}));
    EXPECT_EQ(*list->valueForKey("$top"), PropertyList(Dictionary{{"root", UID{1}}}));
    const Array& objects = *list->valueForKey("$objects")->array();
    ASSERT_EQ(objects.size(), 4U);
    EXPECT_EQ(objects[0], PropertyList("$null"));
    EXPECT_EQ(objects[1], PropertyList(Dictionary{{"path", UID{2}}, {"$class", UID{3}}}));
    EXPECT_EQ(objects[2], PropertyList("/a"));
    EXPECT_EQ(*objects[3].valueForKey("$classname"), PropertyList("Item"));
}

TEST(KeyedArchive, BringsBackAnyBytes) {
    for (const std::string& text :
         {std::string(), std::string("/grün"), std::string("/\xFF\xFE"), std::string("a\0b", 3)}) {
        EXPECT_EQ(pathIn(archiveOf(text)), text);
    }
}

TEST(KeyedArchive, LastValueOfAKeyCounts) {
    KeyedArchiver archiver("Item");
    archiver.encodeString("path", "first");
    archiver.encodeString("path", "second");
    EXPECT_EQ(pathIn(archiver.encodedData()), "second");
}

TEST(KeyedArchive, MissingKeysGiveNothing) {
    EXPECT_EQ(pathIn(KeyedArchiver("Item").encodedData()), std::nullopt);
}

TEST(KeyedArchive, OtherClassesAreRefused) {
    EXPECT_FALSE(KeyedUnarchiver::forReadingFromData(archiveOf("/a"), "Other"));
    EXPECT_FALSE(KeyedUnarchiver::forReadingFromData(archiveOf("/a"), ""));
}

TEST(KeyedArchive, ReadsArchivesOfOthers) {
    EXPECT_EQ(pathIn({"$null", Dictionary{{"$class", UID{3}}, {"path", UID{2}}}, "/x", itemClass}),
              "/x");
}

TEST(KeyedArchive, DamagedArchivesAreRefused) {
    EXPECT_EQ(pathIn(Array{}), std::nullopt);
    EXPECT_EQ(pathIn({"$null", "text", "/x", itemClass}), std::nullopt);
    EXPECT_EQ(pathIn({"$null", Dictionary{{"path", UID{2}}}, "/x", itemClass}), std::nullopt);
    const Dictionary item{{"$class", UID{3}}, {"path", UID{2}}};
    EXPECT_EQ(pathIn({"$null", item, "/x", "no class"}), std::nullopt);
    EXPECT_EQ(pathIn({"$null", item, "/x", itemClass}, UID{4}), std::nullopt);
    EXPECT_EQ(pathIn({"$null", item, "/x", itemClass}, std::int64_t{1}), std::nullopt);
    EXPECT_FALSE(KeyedUnarchiver::forReadingFromData({}, "Item"));
    EXPECT_FALSE(KeyedUnarchiver::forReadingFromData(platform::bytesOf("nonsense"), "Item"));
}

TEST(KeyedArchive, ReferencesThatLeadNowhereGiveNothing) {
    const Dictionary outOfRange{{"$class", UID{3}}, {"path", UID{9'999'999'999}}};
    EXPECT_EQ(pathIn({"$null", outOfRange, "/x", itemClass}), std::nullopt);
    const Dictionary itself{{"$class", UID{3}}, {"path", UID{1}}};
    EXPECT_EQ(pathIn({"$null", itself, "/x", itemClass}), std::nullopt);
    const Dictionary number{{"$class", UID{3}}, {"path", UID{2}}};
    EXPECT_EQ(pathIn({"$null", number, std::int64_t{5}, itemClass}), std::nullopt);
}

} // namespace
