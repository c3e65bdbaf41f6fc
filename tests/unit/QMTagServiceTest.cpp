// SPDX-License-Identifier: Apache-2.0
#include "services/QMTagService.h"

#include "model/QMFileItem.h"
#include "platform/PropertyList.h"
#include "tests/unit/support/EnvironmentVariable.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace {

using platform::PropertyList;
using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;
using Tags = QMTagService::Tags;

class QMTagServiceTest : public testing::Test {
protected:
    void SetUp() override {
        if (!QMTagService::setTags({"probe"}, path) || !QMTagService::setTags({}, path)) {
            GTEST_SKIP() << "the file system keeps no extended attributes";
        }
    }
    [[nodiscard]] Tags tags() const { return QMTagService::tagsForPath(path); }
    TemporaryFolder folder;
    std::string path = folder.file("f");
};

TEST_F(QMTagServiceTest, TagsAreStoredInOrder) {
    EXPECT_EQ(tags(), Tags());
    EXPECT_TRUE(QMTagService::setTags({"b", "a", "Grün"}, path));
    EXPECT_EQ(tags(), (Tags{"b", "a", "Grün"}));
    EXPECT_TRUE(QMTagService::setTags({"c"}, path));
    EXPECT_EQ(tags(), Tags{"c"});
}

TEST_F(QMTagServiceTest, NoTagsRemoveThemAll) {
    EXPECT_TRUE(QMTagService::setTags({"a,b", ""}, path));
    EXPECT_EQ(tags(), (Tags{"a,b", ""}));
    EXPECT_TRUE(QMTagService::setTags({}, path));
    EXPECT_EQ(tags(), Tags());
    EXPECT_EQ(::listxattr(path.c_str(), nullptr, 0), 0);
}

TEST_F(QMTagServiceTest, AddingPutsATagLastOnce) {
    EXPECT_TRUE(QMTagService::addTag("b", path));
    EXPECT_TRUE(QMTagService::addTag("a", path));
    EXPECT_TRUE(QMTagService::addTag("b", path));
    EXPECT_TRUE(QMTagService::addTag("B", path));
    EXPECT_EQ(tags(), (Tags{"b", "a", "B"}));
}

TEST_F(QMTagServiceTest, RemovingTakesEveryOccurrence) {
    EXPECT_TRUE(QMTagService::setTags({"a", "b", "a", "A"}, path));
    EXPECT_TRUE(QMTagService::removeTag("a", path));
    EXPECT_EQ(tags(), (Tags{"b", "A"}));
    EXPECT_TRUE(QMTagService::removeTag("never there", path));
    EXPECT_EQ(tags(), (Tags{"b", "A"}));
}

TEST_F(QMTagServiceTest, ItemsShowTheSameTags) {
    EXPECT_TRUE(QMTagService::setTags({"x,y", "z"}, path));
    EXPECT_EQ(QMFileItem::initWithURL(platform::FileURL::fromPath(path))->tags(), tags());
}

TEST_F(QMTagServiceTest, WhatNeedsNoWriteSucceedsWhereNothingCanBeWritten) {
    QMError error{"untouched", 1, ""};
    EXPECT_TRUE(QMTagService::removeTag("a", "/nonexistent/f", &error));
    EXPECT_TRUE(QMTagService::removeTag("a", "/proc/version", &error));
    EXPECT_EQ(error.domain, "untouched");
}

TEST_F(QMTagServiceTest, FailuresCarryTheSystemsReason) {
    QMError error;
    EXPECT_FALSE(QMTagService::addTag("a", "/nonexistent/f", &error));
    EXPECT_EQ(error.domain, "NSCocoaErrorDomain");
    EXPECT_EQ(error.code, 4);
    EXPECT_EQ(error.localizedDescription,
              "The tags of “f” couldn’t be saved: No such file or directory");
    EXPECT_FALSE(QMTagService::setTags({"a"}, "/proc/version", &error));
    EXPECT_EQ(error.code, 512);
    EXPECT_FALSE(QMTagService::setTags({"a"}, "/proc/version"));
    EXPECT_EQ(QMTagService::tagsForPath("/nonexistent/f"), Tags());
}

TEST_F(QMTagServiceTest, ListsWithoutRoomAreRefusedAndTheOldOnesStay) {
    EXPECT_TRUE(QMTagService::setTags({"old", "with,comma"}, path));
    QMError error;
    EXPECT_FALSE(QMTagService::setTags({std::string(100'000, 'x')}, path, &error));
    EXPECT_NE(error.localizedDescription, "");
    EXPECT_EQ(tags(), (Tags{"old", "with,comma"}));
    EXPECT_FALSE(QMTagService::addTag(std::string(100'000, 'y'), path, &error));
    EXPECT_EQ(tags(), (Tags{"old", "with,comma"}));
}

TEST_F(QMTagServiceTest, WriteThatFailsHalfWayIsTakenBack) {
    // The Finder's list takes most of the room that some file systems have, so that the desktops'
    // list behind it finds none. Where there is room for all, both lists are in.
    EXPECT_TRUE(QMTagService::setTags({"old"}, path));
    for (const std::size_t size : {1000U, 1800U, 1900U, 1950U, 2000U, 3000U, 3900U}) {
        const std::string name = std::string(size, 'x') + ",";
        const bool stored = QMTagService::setTags({name}, path);
        EXPECT_EQ(tags(), stored ? Tags{name} : Tags{"old"}) << size;
        EXPECT_TRUE(QMTagService::setTags({"old"}, path));
        EXPECT_TRUE(QMTagService::setTags({}, path));
        EXPECT_TRUE(QMTagService::setTags({"old"}, path));
    }
}

TEST_F(QMTagServiceTest, DamagedListsAreReplacedButNotEdited) {
    constexpr const char* finder = "user.com.apple.metadata:_kMDItemUserTags";
    ASSERT_EQ(::setxattr(path.c_str(), finder, "damaged", 7, 0), 0);
    EXPECT_TRUE(QMTagService::removeTag("a", path));
    QMError error;
    EXPECT_FALSE(QMTagService::addTag("a", path, &error));
    EXPECT_NE(error.localizedDescription.find("damaged"), std::string::npos);
    EXPECT_EQ(::getxattr(path.c_str(), finder, nullptr, 0), 7);
    EXPECT_TRUE(QMTagService::setTags({"a"}, path));
    EXPECT_EQ(tags(), Tags{"a"});
}

TEST_F(QMTagServiceTest, NamesWithLineBreaksAreRefusedButForColors) {
    EXPECT_TRUE(QMTagService::setTags({"old"}, path));
    for (const char* name : {"a\nb", "\n", "a\n", "a\n8", "a\n66", "a\n6\n"}) {
        QMError error;
        EXPECT_FALSE(QMTagService::addTag(name, path, &error)) << name;
        EXPECT_NE(error.localizedDescription.find("line break"), std::string::npos);
    }
    EXPECT_EQ(tags(), Tags{"old"});
    EXPECT_TRUE(QMTagService::setTags({"Red\n6"}, path));
    EXPECT_EQ(tags(), Tags{"Red"});
}

TEST_F(QMTagServiceTest, ControlBytesAndNulAreBytesLikeOthers) {
    const Tags odd{std::string("a\0b", 3), "\x01\x1B[31m", "\xFF"};
    EXPECT_TRUE(QMTagService::setTags(odd, path));
    EXPECT_EQ(tags(), odd);
    QMError error;
    EXPECT_FALSE(QMTagService::addTag("x,y", path, &error));
    EXPECT_EQ(tags(), odd);
}

TEST_F(QMTagServiceTest, LinksCarryNoTagsHere) {
    EXPECT_TRUE(QMTagService::setTags({"a"}, path));
    const std::string link = folder.link("link", "f");
    EXPECT_EQ(QMTagService::tagsForPath(link), Tags());
    EXPECT_FALSE(QMTagService::setTags({"b"}, link));
    EXPECT_EQ(tags(), Tags{"a"});
}

TEST(QMTagService, TellsTheNameOfItsNotification) {
    EXPECT_EQ(QMTagsDidChangeNotification, "QMTagsDidChangeNotification");
}

const Array builtIn{
    Dictionary{{"n", "Red"}, {"l", std::int64_t{6}}},
    Dictionary{{"n", "Orange"}, {"l", std::int64_t{7}}},
    Dictionary{{"n", "Yellow"}, {"l", std::int64_t{5}}},
    Dictionary{{"n", "Green"}, {"l", std::int64_t{2}}},
    Dictionary{{"n", "Blue"}, {"l", std::int64_t{4}}},
    Dictionary{{"n", "Purple"}, {"l", std::int64_t{3}}},
    Dictionary{{"n", "Gray"}, {"l", std::int64_t{1}}},
};

/// The defined tags of a user whose synced preferences are these bytes.
Array availableWith(std::string_view preferences) {
    const TemporaryFolder home;
    const EnvironmentVariable variable("HOME", home.path().c_str());
    const std::string directory = home.folder("Library/SyncedPreferences");
    EXPECT_NE(home.file("Library/SyncedPreferences/com.apple.finder.plist", preferences), "");
    return QMTagService::allAvailableTags();
}

Array availableWith(const PropertyList& preferences, PropertyList::Format format) {
    const platform::Data bytes = preferences.serialized(format);
    return availableWith(
        std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

TEST(QMTagService, DefinedTagsAreTheBuiltInOnesWithoutPreferences) {
    EXPECT_EQ(QMTagService::allAvailableTags(), builtIn);
}

TEST(QMTagService, DefinedTagsAreReturnedAsStored) {
    const Array stored{Dictionary{{"n", "Work"}, {"l", std::int64_t{0}}},
                       Dictionary{{"n", "Work"}},
                       Dictionary{{"n", ""}},
                       Dictionary{{"l", std::int64_t{3}}},
                       "no dictionary",
                       std::int64_t{5}};
    const PropertyList preferences =
        Dictionary{{"FinderTagDict", Dictionary{{"FinderTags", stored}}}};
    EXPECT_EQ(availableWith(preferences, PropertyList::Format::binary), stored);
    EXPECT_EQ(availableWith(preferences, PropertyList::Format::xml), stored);
    const PropertyList none = Dictionary{{"FinderTagDict", Dictionary{{"FinderTags", Array{}}}}};
    EXPECT_EQ(availableWith(none, PropertyList::Format::xml), Array{});
}

TEST(QMTagService, OnlyTheDocumentedPlaceCounts) {
    const PropertyList deeper = Dictionary{
        {"values", Dictionary{{"FinderTagDict",
                               Dictionary{{"value", Dictionary{{"FinderTags", Array{"x"}}}}}}}}};
    EXPECT_EQ(availableWith(deeper, PropertyList::Format::binary), builtIn);
}

TEST(QMTagService, MalformedPreferencesGiveTheBuiltInTags) {
    for (const char* bytes : {"", "nonsense", "bplist00", "<plist><dict>"}) {
        EXPECT_EQ(availableWith(bytes), builtIn) << bytes;
    }
    for (const PropertyList& other :
         {PropertyList(Array{}), PropertyList(Dictionary{{"FinderTagDict", "x"}}),
          PropertyList(Dictionary{{"FinderTagDict", Dictionary{{"FinderTags", "x"}}}})}) {
        EXPECT_EQ(availableWith(other, PropertyList::Format::binary), builtIn);
    }
}

TEST(QMTagService, PreferencesThatAreNoFileAreIgnored) {
    const TemporaryFolder home;
    const EnvironmentVariable variable("HOME", home.path().c_str());
    const std::string fifo = home.folder("Library/SyncedPreferences") + "/com.apple.finder.plist";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(QMTagService::allAvailableTags(), builtIn);
}

} // namespace
