// SPDX-License-Identifier: Apache-2.0
#include "platform/LocalizedStrings.h"

#include "tests/unit/support/Catalogue.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::LocalizedStrings::bindCatalogue;
using platform::LocalizedStrings::format;
using platform::LocalizedStrings::replacingConversions;
using platform::LocalizedStrings::stringForKey;
using Arguments = std::vector<std::string_view>;

TEST(LocalizedStrings, ShowTheKeyWithoutACatalogue) {
    EXPECT_EQ(stringForKey("diskImage.error.notFound"), "diskImage.error.notFound");
    EXPECT_EQ(stringForKey("ü"), "ü");
    EXPECT_EQ(format("meta.img.frames", {"3"}), "meta.img.frames");
}

TEST(LocalizedStrings, NeverLookUpTheEmptyKey) {
    EXPECT_EQ(stringForKey(""), "");
}

TEST_F(Catalogue, HasTheTextsOfTheUsersLanguageInUTF8) {
    use("de");
    EXPECT_EQ(stringForKey("meta.img.size"), "Größe");
    use("en");
    EXPECT_EQ(stringForKey("meta.img.size"), "Size “as is”");
    use("fr:de:en");
    EXPECT_EQ(stringForKey("meta.img.size"), "Größe");
}

TEST_F(Catalogue, IsThatOfTheLocaleWhenNoLanguageIsPreferred) {
    const TemporaryFolder folder;
    std::filesystem::copy(std::string(QM_TEST_CATALOGUES) + "/de", folder.path("C"),
                          std::filesystem::copy_options::recursive);
    use(nullptr, folder.path());
    EXPECT_EQ(stringForKey("yes"), "ja");
}

TEST_F(Catalogue, KeepsKeysOfTheSameMeaningApart) {
    use("de");
    EXPECT_EQ(stringForKey("yes"), "ja");
    EXPECT_EQ(stringForKey("no"), "nein");
    EXPECT_EQ(stringForKey("meta.yes"), "Gewiß");
    EXPECT_EQ(stringForKey("meta.no"), "Mitnichten");
}

TEST_F(Catalogue, ShowsTheKeysOfTextsThatItLacks) {
    use("de");
    for (const std::string key : {"meta.img.nothing", "meta.img.model", "Yes", "grün", "a\nb"}) {
        EXPECT_EQ(stringForKey(key), key);
    }
    use("fr");
    EXPECT_EQ(stringForKey("yes"), "yes");
}

TEST_F(Catalogue, DoesNotShowItsHeader) {
    use("de");
    ASSERT_NE(std::string_view(::gettext("")), "");
    EXPECT_EQ(stringForKey(""), "");
    const std::string hidden("\0x", 2);
    EXPECT_EQ(stringForKey(hidden), hidden);
}

TEST_F(Catalogue, NeedNotExist) {
    use("de", "/nonexistent");
    EXPECT_EQ(stringForKey("yes"), "yes");
}

TEST_F(Catalogue, IsNotBoundUnderNamesThatLeadElsewhere) {
    use("de");
    for (const char* const domain : {"", "../qm-test", "/qm-test"}) {
        EXPECT_FALSE(bindCatalogue(domain, QM_TEST_CATALOGUES)) << domain;
    }
    EXPECT_FALSE(bindCatalogue("other", "locale"));
    EXPECT_FALSE(bindCatalogue("other", ""));
    EXPECT_EQ(stringForKey("yes"), "ja");
}

/// A catalogue of one text, written by hand: no compiler of catalogues makes one that is damaged.
std::string compiledCatalogue(const std::string& key, const std::string& text) {
    const std::string header = "Content-Type: text/plain; charset=UTF-8\n";
    constexpr std::uint32_t tables = 28;
    constexpr std::uint32_t texts = tables + 4 * 8;
    const auto at = [&](std::size_t before) { return static_cast<std::uint32_t>(texts + before); };
    const auto length = [](const std::string& of) { return static_cast<std::uint32_t>(of.size()); };
    const std::string behind = std::string(1, '\0') + key + '\0' + header + '\0' + text + '\0';
    const std::array<std::uint32_t, 15> numbers{0x950412de,
                                                0,
                                                2,
                                                tables,
                                                tables + 2 * 8,
                                                0,
                                                0, // what it is, and where its tables are
                                                0,
                                                at(0),
                                                length(key),
                                                at(1), // the keys
                                                length(header),
                                                at(2 + key.size()),
                                                length(text),
                                                at(3 + key.size() + header.size())};
    return std::string(reinterpret_cast<const char*>(numbers.data()), sizeof numbers) + behind;
}

TEST_F(Catalogue, IsNotBelievedWhereItIsNotUTF8) {
    for (const std::string text : {"gut", "b\xf6se"}) {
        const TemporaryFolder folder;
        const std::string inside = folder.folder("de/LC_MESSAGES");
        const auto path = folder.file("de/LC_MESSAGES/qm-test.mo", compiledCatalogue("key", text));
        use("de", folder.path());
        EXPECT_EQ(stringForKey("key"), text == "gut" ? "gut" : "key");
    }
}

TEST_F(Catalogue, HasFormats) {
    use("en");
    EXPECT_EQ(format("meta.img.frames", {"3"}), "3 frames");
    EXPECT_EQ(format("meta.img.place", {"A", "B"}), "from A to B");
    EXPECT_EQ(format("meta.img.nothing", {"A"}), "meta.img.nothing");
    use("de");
    EXPECT_EQ(format("meta.img.frames", {"3"}), "3 Bilder");
    EXPECT_EQ(format("meta.img.place", {"A", "B"}), "von B nach A");
    EXPECT_EQ(format("meta.img.wrong", {"A", "B"}), "A und %n und B zu 100 %");
    EXPECT_EQ(format("meta.img.wrong", {}), "%s und %n und %s zu 100 %");
}

TEST(TranslatedFormats, TakeArgumentsInTheirOrder) {
    EXPECT_EQ(replacingConversions("%@, %ld, %lu; %d", Arguments{"a", "b", "c", "d"}),
              "a, b, c; d");
    EXPECT_EQ(replacingConversions("%.1f%%|%-5s|%+08.3lf|%llu|%zu|%x",
                                   Arguments{"1.5", "b", "c", "d", "e", "f"}),
              "1.5%|b|c|d|e|f");
}

TEST(TranslatedFormats, TakeArgumentsByTheirPosition) {
    EXPECT_EQ(replacingConversions("%2$@ %1$ld %2$.1f %@", Arguments{"a", "b"}), "b a b a");
}

TEST(TranslatedFormats, LeaveWhatHasNoArgument) {
    const Arguments one{"a"};
    EXPECT_EQ(replacingConversions("%@ %ld %@", one), "a %ld %@");
    EXPECT_EQ(replacingConversions("%0$@ %2$@ %99999999999999999999$s %1$@", one),
              "%0$@ %2$@ %99999999999999999999$s a");
    EXPECT_EQ(replacingConversions("%s%s%s", {}), "%s%s%s");
}

TEST(TranslatedFormats, LeaveWhatIsNoConversion) {
    const Arguments one{"a"};
    for (const char* const text : {"", "%", "%1", "%1$", "%.", "%l", "% d", "%n", "%*d", "%p",
                                   "%$@", "%1$1$@", "100 %", "%ä", "%5%", "%-", "%1$n"}) {
        EXPECT_EQ(replacingConversions(text, one), text);
    }
    EXPECT_EQ(replacingConversions("%n%@", one), "%na");
    EXPECT_EQ(replacingConversions("%%@ %%%@", one), "%@ %a");
}

TEST(TranslatedFormats, LeaveOutArgumentsThatNothingAsksFor) {
    EXPECT_EQ(replacingConversions("one", Arguments{"a", "b"}), "one");
}

TEST(TranslatedFormats, DoNotReadArgumentsAsFormats) {
    EXPECT_EQ(replacingConversions("%@ %@", Arguments{"%@ %n %2$@", "b"}), "%@ %n %2$@ b");
}

} // namespace
