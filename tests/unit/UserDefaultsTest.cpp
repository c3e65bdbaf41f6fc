// SPDX-License-Identifier: Apache-2.0
#include "platform/UserDefaults.h"

#include "platform/Application.h"
#include "tests/unit/support/EnvironmentVariable.h"
#include "tests/unit/support/StandardUserDefaults.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using platform::PropertyList;
using platform::UserDefaults;
using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;
using Texts = std::vector<std::string>;

const PropertyList one(std::int64_t{1});
const PropertyList two(std::int64_t{2});

class UserDefaultsTest : public testing::Test {
protected:
    StandardUserDefaults settings;
    UserDefaults& defaults = UserDefaults::standard();
};

TEST_F(UserDefaultsTest, AnswerNothingForUnknownKeys) {
    EXPECT_EQ(defaults.objectForKey("x"), std::nullopt);
    EXPECT_EQ(defaults.stringForKey("x"), std::nullopt);
    EXPECT_EQ(defaults.arrayForKey("x"), nullptr);
    EXPECT_EQ(defaults.stringArrayForKey(""), std::nullopt);
    EXPECT_EQ(defaults.dictionaryForKey("x"), std::nullopt);
    EXPECT_EQ(defaults.dataForKey("x"), std::nullopt);
    EXPECT_FALSE(defaults.boolForKey("x"));
    EXPECT_EQ(defaults.integerForKey("x"), 0);
    EXPECT_EQ(defaults.doubleForKey("x"), 0);
}

TEST_F(UserDefaultsTest, HoldValuesOfEveryKind) {
    const Dictionary values{{"array", Array{"a", one, Array()}},
                            {"data", platform::Data(3, std::byte{7})},
                            {"date", PropertyList::Value(PropertyList::AbsoluteTime{86400})},
                            {"dictionary", Dictionary{{"", Dictionary()}}},
                            {"flag", true},
                            {"integer", std::int64_t{-5}},
                            {"number", 2.5},
                            {"text", "grün"}};
    settings.save(values);
    for (const auto& [key, value] : values) {
        EXPECT_EQ(defaults.objectForKey(key), value) << key;
        EXPECT_EQ(defaults.arrayForKey(key) != nullptr, key == "array");
        EXPECT_EQ(defaults.dictionaryForKey(key).has_value(), key == "dictionary");
        EXPECT_EQ(defaults.dataForKey(key).has_value(), key == "data");
    }
    EXPECT_EQ(*defaults.arrayForKey("array"), *values.at("array").array());
    EXPECT_EQ(defaults.dictionaryForKey("dictionary"), *values.at("dictionary").dictionary());
    EXPECT_EQ(defaults.dataForKey("data"), *values.at("data").data());
}

TEST_F(UserDefaultsTest, ReadNumbersAndTextsAsEachOther) {
    settings.save(Dictionary{
        {"flag", true}, {"integer", std::int64_t{-5}}, {"number", 2.5}, {"text", "1.5 or so"}});
    EXPECT_TRUE(defaults.boolForKey("flag"));
    EXPECT_TRUE(defaults.boolForKey("text"));
    EXPECT_EQ(defaults.integerForKey("flag"), 1);
    EXPECT_EQ(defaults.integerForKey("number"), 2);
    EXPECT_EQ(defaults.integerForKey("text"), 1);
    EXPECT_EQ(defaults.doubleForKey("integer"), -5);
    EXPECT_EQ(defaults.doubleForKey("text"), 1.5);
    EXPECT_EQ(defaults.stringForKey("integer"), "-5");
    EXPECT_EQ(defaults.stringForKey("flag"), "1");
}

TEST_F(UserDefaultsTest, TellArraysOfTextsFromOthers) {
    settings.save(
        Dictionary{{"empty", Array()}, {"mixed", Array{"a", one}}, {"texts", Array{"b", "a"}}});
    EXPECT_EQ(defaults.stringArrayForKey("texts"), (Texts{"b", "a"}));
    EXPECT_EQ(defaults.stringArrayForKey("empty"), Texts());
    EXPECT_EQ(defaults.stringArrayForKey("mixed"), std::nullopt);
}

TEST_F(UserDefaultsTest, PreferWhatTheUserHasSet) {
    defaults.registerDefaults({{"a", one}, {"b", one}});
    EXPECT_EQ(defaults.integerForKey("a"), 1);
    settings.save(Dictionary{{"a", two}});
    EXPECT_EQ(defaults.integerForKey("a"), 2);
    EXPECT_EQ(defaults.integerForKey("b"), 1);
    defaults.registerDefaults({{"a", std::int64_t{3}}});
    EXPECT_EQ(defaults.integerForKey("a"), 2);
    settings.save(Dictionary());
    EXPECT_EQ(defaults.integerForKey("a"), 3);
}

TEST_F(UserDefaultsTest, PreferWhatTheUserHasSetAlsoOfAnotherKind) {
    defaults.registerDefaults({{"a", Array{"x"}}});
    settings.save(Dictionary{{"a", "text"}});
    EXPECT_EQ(defaults.arrayForKey("a"), nullptr);
}

TEST_F(UserDefaultsTest, ReplaceEqualKeysWhenRegisteredAgain) {
    defaults.registerDefaults({{"a", one}, {"b", one}});
    defaults.registerDefaults({{"a", two}, {"c", two}});
    EXPECT_EQ(defaults.integerForKey("a"), 2);
    EXPECT_EQ(defaults.integerForKey("b"), 1);
    EXPECT_EQ(defaults.integerForKey("c"), 2);
}

TEST_F(UserDefaultsTest, WriteNothing) {
    defaults.registerDefaults({{"a", one}});
    EXPECT_EQ(defaults.integerForKey("a"), 1);
    EXPECT_FALSE(std::filesystem::exists(settings.path()));
}

TEST_F(UserDefaultsTest, NoticeThatTheFileChanges) {
    for (int i = 1; i <= 20; ++i) {
        settings.save(Dictionary{{"a", std::int64_t{i}}});
        EXPECT_EQ(defaults.integerForKey("a"), i);
    }
    std::filesystem::remove(settings.path());
    EXPECT_EQ(defaults.integerForKey("a"), 0);
    settings.save(Dictionary{{"a", two}});
    EXPECT_EQ(defaults.integerForKey("a"), 2);
    std::filesystem::resize_file(settings.path(), 20);
    EXPECT_EQ(defaults.integerForKey("a"), 0);
}

TEST_F(UserDefaultsTest, ReadXml) {
    settings.saveBytes("<plist version=\"1.0\"><dict><key>a</key><true/></dict></plist>");
    EXPECT_TRUE(defaults.boolForKey("a"));
}

TEST_F(UserDefaultsTest, HaveNothingSetInFilesThatAreNoDictionary) {
    defaults.registerDefaults({{"a", one}});
    for (const std::string bytes :
         {"", "bplist00", "not a property list", "<plist><dict><key>a</key><true/>",
          "<plist version=\"1.0\"><array><true/></array></plist>"}) {
        settings.save(Dictionary{{"a", two}});
        EXPECT_EQ(defaults.integerForKey("a"), 2);
        settings.saveBytes(bytes);
        EXPECT_EQ(defaults.integerForKey("a"), 1) << bytes;
    }
}

TEST_F(UserDefaultsTest, HaveNothingSetInFilesOfMoreThan16MiB) {
    const std::string list = "<plist version=\"1.0\"><dict><key>a</key><true/></dict></plist>";
    settings.saveBytes(list);
    std::filesystem::resize_file(settings.path(), (16 << 20) + 1);
    EXPECT_FALSE(defaults.boolForKey("a"));
}

TEST_F(UserDefaultsTest, WaitForNothingThatIsNoFile) {
    ASSERT_EQ(::mkfifo(settings.path().c_str(), 0600), 0);
    EXPECT_EQ(defaults.objectForKey("a"), std::nullopt);
    for (const char* const path : {"/dev/zero", "/dev/tty", "/", "", "/nonexistent/x"}) {
        EXPECT_EQ(UserDefaults(path).objectForKey("a"), std::nullopt) << path;
    }
}

TEST_F(UserDefaultsTest, SeeAFileOnceItMayBeRead) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "nothing is kept from the administrator";
    }
    settings.save(Dictionary{{"a", true}});
    std::filesystem::permissions(settings.path(), std::filesystem::perms::none);
    EXPECT_FALSE(defaults.boolForKey("a"));
    std::filesystem::permissions(settings.path(), std::filesystem::perms::owner_read);
    EXPECT_TRUE(defaults.boolForKey("a"));
}

TEST(StandardUserDefaultsOfTheProcess, AreInTheConfigurationFolder) {
    const TemporaryFolder folder;
    const EnvironmentVariable configuration("XDG_CONFIG_HOME", folder.path().c_str());
    const std::string name = std::string(platform::applicationIdentifier()) + ".plist";
    EXPECT_EQ(UserDefaults::pathOfStandard(), folder.path(name));
    const auto path = folder.file(name, "<plist version=\"1.0\"><dict><key>a</key>"
                                        "<string>b</string></dict></plist>");
    EXPECT_EQ(UserDefaults(UserDefaults::pathOfStandard()).stringForKey("a"), "b");
    const EnvironmentVariable relative("XDG_CONFIG_HOME", "x");
    const EnvironmentVariable home("HOME", "/home/x");
    EXPECT_EQ(UserDefaults::pathOfStandard(), "/home/x/.config/" + name);
}

TEST(StandardUserDefaultsOfTheProcess, AreOneForAll) {
    UserDefaults& user = UserDefaults::standard();
    {
        const StandardUserDefaults other;
        EXPECT_NE(&UserDefaults::standard(), &user);
    }
    EXPECT_EQ(&UserDefaults::standard(), &user);
}

} // namespace
