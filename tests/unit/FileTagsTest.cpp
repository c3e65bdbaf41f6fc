// SPDX-License-Identifier: Apache-2.0
#include "platform/FileTags.h"

#include "platform/PropertyList.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/xattr.h>

namespace {

using platform::PropertyList;
using Names = std::vector<std::string>;

constexpr const char* desktop = "user.xdg.tags";
constexpr const char* finder = "user.com.apple.metadata:_kMDItemUserTags";
constexpr const char* samba = "user.DosStream.com.apple.metadata:_kMDItemUserTags:$DATA";
constexpr const char* oldSamba =
    "user.DosStream.com.apple.metadata\xEF\x80\xA2_kMDItemUserTags:$DATA";

std::string finderValue(const Names& names, PropertyList::Format format) {
    const PropertyList::Array array(names.begin(), names.end());
    std::string value;
    for (const std::byte byte : PropertyList(array).serialized(format)) {
        value.push_back(static_cast<char>(byte));
    }
    return value;
}

class FileTags : public testing::Test {
protected:
    void SetUp() override {
        if (!set("user.test", "x")) {
            GTEST_SKIP() << "the file system keeps no extended attributes";
        }
    }
    bool set(const char* attribute, const std::string& value) {
        return ::setxattr(path.c_str(), attribute, value.data(), value.size(), 0) == 0;
    }
    bool setFinder(const Names& names) {
        return set(finder, finderValue(names, PropertyList::Format::binary));
    }
    [[nodiscard]] std::optional<Names> read() const { return platform::FileTags::read(path); }

    TemporaryFolder folder;
    std::string path = folder.file("f");
};

TEST_F(FileTags, AbsentOnPlainFiles) {
    EXPECT_EQ(read(), std::nullopt);
}

TEST_F(FileTags, OfTheDesktops) {
    ASSERT_TRUE(set(desktop, "Red,,Wörk, blank ,"));
    EXPECT_EQ(read(), (Names{"Red", "Wörk", " blank "}));
}

TEST_F(FileTags, OfTheFinderInEverySpellingAndForm) {
    for (const char* attribute : {finder, samba, oldSamba}) {
        for (const auto format : {PropertyList::Format::binary, PropertyList::Format::xml}) {
            for (const std::size_t zeroBytes : {0U, 1U}) {
                const std::string value = finderValue({"Red\n6", "Wörk", "a,b"}, format);
                ASSERT_TRUE(set(attribute, value + std::string(zeroBytes, '\0')));
                EXPECT_EQ(read(), (Names{"Red", "Wörk", "a,b"})) << attribute;
            }
        }
        ASSERT_EQ(::removexattr(path.c_str(), attribute), 0);
    }
}

TEST_F(FileTags, FindersListIsTheBetterOfTwoThatAgree) {
    ASSERT_TRUE(set(desktop, "a,b,c") && setFinder({"a,b\n1", "", "c"}));
    EXPECT_EQ(read(), (Names{"a,b", "", "c"}));
}

TEST_F(FileTags, DifferentListsAreJoinedTheDesktopsFirst) {
    ASSERT_TRUE(set(desktop, "a,b") && setFinder({"c\n2", "b"}));
    EXPECT_EQ(read(), (Names{"a", "b", "c"}));
}

TEST_F(FileTags, DamagedFinderListsAreLeftAside) {
    ASSERT_TRUE(set(finder, "bplist00nonsense"));
    EXPECT_EQ(read(), std::nullopt);
    ASSERT_TRUE(set(desktop, "a"));
    EXPECT_EQ(read(), Names{"a"});
}

TEST_F(FileTags, FinderListsThatAreCutOffAreLeftAside) {
    const std::string whole = finderValue({"Red\n6", "Blue"}, PropertyList::Format::binary);
    ASSERT_TRUE(set(desktop, "a"));
    for (std::size_t size = 0; size < whole.size(); size += 7) {
        ASSERT_TRUE(set(finder, whole.substr(0, size)));
        EXPECT_EQ(read(), Names{"a"}) << size;
    }
}

TEST_F(FileTags, EmptyDesktopListsCountAsNone) {
    ASSERT_TRUE(set(desktop, ""));
    EXPECT_EQ(read(), Names());
    ASSERT_TRUE(setFinder({"a"}));
    EXPECT_EQ(read(), Names{"a"});
}

TEST_F(FileTags, ListsThatHoldMoreThanTextsAreDamaged) {
    const platform::Data bytes =
        PropertyList(PropertyList::Array{"a", std::int64_t{5}, PropertyList::Array{"b"}})
            .serialized(PropertyList::Format::binary);
    ASSERT_EQ(::setxattr(path.c_str(), finder, bytes.data(), bytes.size(), 0), 0);
    EXPECT_EQ(read(), std::nullopt);
}

TEST_F(FileTags, LongListsAreRead) {
    std::string value;
    Names names;
    for (int i = 0; i < 300; ++i) {
        names.push_back("tag" + std::to_string(i));
        value += names.back() + ",";
    }
    ASSERT_TRUE(set(desktop, value));
    EXPECT_EQ(read(), names);
}

TEST_F(FileTags, OfALinkAreItsOwn) {
    ASSERT_TRUE(set(desktop, "a"));
    EXPECT_EQ(platform::FileTags::read(folder.link("link", "f")), std::nullopt);
    EXPECT_EQ(platform::FileTags::read(folder.link("dangling", "nowhere")), std::nullopt);
}

TEST_F(FileTags, OtherAttributesAreNoTags) {
    ASSERT_TRUE(set("user.xdg.tagsx", "a") && set("user.xuser.xdg.tags", "b"));
    EXPECT_EQ(read(), std::nullopt);
}

} // namespace
