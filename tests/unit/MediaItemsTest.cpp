// SPDX-License-Identifier: Apache-2.0
// Titles, artists and albums in bytes that were made by hand.
#include "platform/linux/av/Mp4Items.h"
#include "platform/linux/av/TaggedItems.h"
#include "platform/linux/av/VorbisComment.h"
#include "tests/unit/support/IsoBoxes.h"
#include "tests/unit/support/MemoryFile.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
using platform::OpenedFile;
using platform::av::Items;
using Texts = std::vector<std::string>;

Texts textsOf(const Items& items) {
    Texts texts;
    for (const auto& item : items) {
        texts.push_back(std::string(1, "tal"[static_cast<std::size_t>(item.commonKey)]) + "=" +
                        item.stringValue.value_or("-"));
    }
    return texts;
}

std::string bigEndian(std::uint64_t number, std::size_t bytes) {
    return ByteWriter().big(number, bytes).bytes();
}

std::string littleEndian(std::uint32_t number) {
    return ByteWriter().little(number, 4).bytes();
}

std::string value(std::string_view type, const std::string& text, std::uint32_t kind = 1) {
    return isoBox(type, isoBox("data", bigEndian(kind, 4) + bigEndian(0, 4) + text));
}

Texts mp4(const std::string& bytes) {
    const MemoryFile file(bytes);
    return textsOf(platform::av::itemsOfMp4(OpenedFile::of(file.descriptor()).value()));
}

Texts inUserData(const std::string& contents) {
    return mp4(isoBox("moov", isoBox("udta", contents)));
}

Texts comments(const std::string& bytes) {
    return textsOf(platform::av::itemsOfVorbisComment(platform::bytesOf(bytes)));
}

std::string comment(const std::string& text) {
    return littleEndian(static_cast<std::uint32_t>(text.size())) + text;
}

Texts leadingTag(const std::string& bytes) {
    const MemoryFile file(bytes);
    return textsOf(platform::av::itemsOfLeadingTag(OpenedFile::of(file.descriptor()).value()));
}

std::uint64_t endOfTags(const std::string& bytes) {
    const MemoryFile file(bytes);
    return platform::av::endOfLeadingTags(OpenedFile::of(file.descriptor()).value());
}

} // namespace

TEST(MediaItems, OfMp4AreFoundWhereverTheMovieIs) {
    const std::string movie = isoBox(
        "moov",
        isoBox("udta", isoBox("meta", bigEndian(0, 4) + isoBox("ilst", value("\xA9nam", "T")))));
    EXPECT_EQ(mp4(movie), Texts{"t=T"});
    EXPECT_EQ(mp4(isoBox("mdat", std::string(100'000, 'x')) + movie), Texts{"t=T"});
    const std::string large = bigEndian(1, 4) + "mdat" + bigEndian(16 + 5, 8) + "12345";
    EXPECT_EQ(mp4(large + movie), Texts{"t=T"});
    EXPECT_EQ(mp4(movie + bigEndian(0, 4) + "mdat123"), Texts{"t=T"});
}

TEST(MediaItems, OfMp4KeepTheirOrderAndWhatIsTwiceThere) {
    EXPECT_EQ(inUserData(isoBox("meta", bigEndian(0, 4) + isoBox("hdlr", std::string(25, '\0')) +
                                            isoBox("ilst", value("\xA9"
                                                                 "ART",
                                                                 "A") +
                                                               value("\xA9nam", "T") +
                                                               value("\xA9"
                                                                     "alb",
                                                                     "L") +
                                                               value("aART", "no") +
                                                               value("\xA9"
                                                                     "ART",
                                                                     "A")))),
              (Texts{"a=A", "t=T", "l=L", "a=A"}));
}

TEST(MediaItems, OfMp4WithSeveralValuesAreSeveral) {
    const std::string data = isoBox("data", bigEndian(1, 4) + bigEndian(0, 4) + "x");
    EXPECT_EQ(inUserData(isoBox(
                  "meta", bigEndian(0, 4) +
                              isoBox("ilst", isoBox("\xA9nam", data + isoBox("name", "") + data)))),
              (Texts{"t=x", "t=x"}));
}

TEST(MediaItems, OfMp4AreTextsInTwoEncodingsOrNone) {
    EXPECT_EQ(inUserData(isoBox("meta", bigEndian(0, 4) +
                                            isoBox("ilst", value("\xA9nam", "\0G\0r\0\xFC\0n"s, 2) +
                                                               value("\xA9nam", "Gr\xFCn", 1) +
                                                               value("\xA9nam", "\1", 21) +
                                                               value("\xA9nam", "a\0b"s)))),
              (Texts{"t=Grün", "t=Grün", "t=-", "t=a"}));
}

TEST(MediaItems, OfQuickTimeHaveTextsForEachLanguage) {
    EXPECT_EQ(inUserData(isoBox("\xA9nam", bigEndian(1, 2) + bigEndian(0, 2) + "T" +
                                               bigEndian(2, 2) + bigEndian(9, 2) + "zw")),
              (Texts{"t=T", "t=zw"}));
    EXPECT_EQ(inUserData(isoBox("\xA9nam", bigEndian(9, 2) + bigEndian(0, 2) + "T")), Texts());
}

TEST(MediaItems, OfQuickTimeMayHaveKeys) {
    const auto key = [](const std::string& name) {
        return bigEndian(8 + name.size(), 4) + "mdta" + name;
    };
    const std::string keys =
        isoBox("keys", bigEndian(0, 4) + bigEndian(3, 4) + key("other") +
                           key("com.apple.quicktime.artist") + key("com.apple.quicktime.title"));
    const auto item = [](std::uint32_t number, const std::string& text) {
        return value(bigEndian(number, 4), text);
    };
    const std::string list =
        isoBox("ilst", item(3, "T") + item(1, "no") + item(2, "A") + item(4, "no") + item(0, "no"));
    EXPECT_EQ(
        mp4(isoBox("moov", isoBox("meta", isoBox("hdlr", std::string(24, '\0')) + keys + list))),
        (Texts{"t=T", "a=A"}));
}

TEST(MediaItems, OfQuickTimeHaveNoKeysBehindADamagedOne) {
    const std::string title = "com.apple.quicktime.title";
    const std::string key = bigEndian(8 + title.size(), 4) + "mdta" + title;
    const auto itemsWith = [&key](const std::string& damaged) {
        const std::string keys =
            isoBox("keys", bigEndian(0, 4) + bigEndian(3, 4) + key + damaged + key);
        const std::string list =
            isoBox("ilst", value(bigEndian(1, 4), "first") + value(bigEndian(2, 4), "second") +
                               value(bigEndian(3, 4), "third"));
        return mp4(
            isoBox("moov", isoBox("meta", isoBox("hdlr", std::string(24, '\0')) + keys + list)));
    };
    const Texts first{"t=first"};
    EXPECT_EQ(itemsWith(bigEndian(0, 4) + "mdta"), first);
    EXPECT_EQ(itemsWith(bigEndian(7, 4) + "mdta"), first);
    EXPECT_EQ(itemsWith(bigEndian(8 + key.size() + 1, 4) + "mdta"), first);
    EXPECT_EQ(itemsWith(bigEndian(0xFFFFFFFF, 4) + "mdta"), first);
    EXPECT_EQ(itemsWith(bigEndian(8, 4) + "mdta"), (Texts{"t=first", "t=third"}));
}

TEST(MediaItems, OfPhonesAreTextsInTwoEncodings) {
    EXPECT_EQ(inUserData(isoBox("titl", std::string(6, '\0') + "T\0"s) +
                         isoBox("perf", std::string(6, '\0') + "\xFE\xFF\0A\0\0"s) +
                         isoBox("albm", "short")),
              (Texts{"t=T", "a=A"}));
}

TEST(MediaItems, OfDamagedMp4EndWhereTheDamageIs) {
    const std::string list = isoBox("ilst", value("\xA9nam", "T"));
    EXPECT_EQ(inUserData(isoBox("meta", bigEndian(0, 4) + list) + bigEndian(4, 4) + "size"),
              Texts{"t=T"});
    EXPECT_EQ(
        inUserData(bigEndian(0xFFFFFFFF, 4) + "free" + isoBox("meta", bigEndian(0, 4) + list)),
        Texts());
    EXPECT_EQ(inUserData(bigEndian(1, 4) + "free" + bigEndian(0xFFFFFFFFFFFFFFFF, 8)), Texts());
    EXPECT_EQ(mp4(isoBox("moov", isoBox("meta", ""))), Texts());
    // A value without its kind and its language.
    EXPECT_EQ(
        inUserData(isoBox(
            "meta", bigEndian(0, 4) +
                        isoBox("ilst", isoBox("\xA9nam", isoBox("data", bigEndian(1, 4) + "123"))) +
                        list)),
        Texts{"t=T"});
    // More boxes than any file has.
    std::string many;
    for (int i = 0; i < 20'000; ++i) {
        many += isoBox("free", "");
    }
    EXPECT_EQ(inUserData(many + isoBox("meta", bigEndian(0, 4) + list)), Texts());
}

TEST(MediaItems, OfVorbisKeepTheirOrderAndWhatIsTwiceThere) {
    EXPECT_EQ(comments(comment("maker") + littleEndian(6) + comment("Artist=A") +
                       comment("TITLE=T=1") + comment("title=") + comment("ALBUMARTIST=no") +
                       comment("ALBUM=L") + comment("TITLE=T=1")),
              (Texts{"a=A", "t=T=1", "t=", "l=L", "t=T=1"}));
}

TEST(MediaItems, OfDamagedVorbisEndWhereTheDamageIs) {
    EXPECT_EQ(comments(""), Texts());
    EXPECT_EQ(comments(littleEndian(0xFFFFFFFF)), Texts());
    const std::string one = comment("") + littleEndian(0xFFFFFFFF) + comment("TITLE=T");
    EXPECT_EQ(comments(one), Texts{"t=T"});
    EXPECT_EQ(comments(one + littleEndian(8) + "TITLE=x"), Texts{"t=T"});
    EXPECT_EQ(comments(one + "\1\2"), Texts{"t=T"});
}

TEST(MediaItems, TagsEndWhereTheySay) {
    const std::string tag = "ID3\4\0\0\0\0\1\2"s + std::string(130, 'x');
    EXPECT_EQ(endOfTags(tag + std::string(100, 'y')), 140U);
    EXPECT_EQ(endOfTags(tag + tag + "more"), 280U);
    EXPECT_EQ(endOfTags("ID3\4\0\x10\0\0\0\2xx3DI\4\0\x10\0\0\0\2more"s), 22U);
    EXPECT_EQ(endOfTags("ID3\4\0\0\x7F\x7F\x7F\x7F"s + "short"), 15U);
    EXPECT_EQ(endOfTags("ID3\4\0\0\0\0\0"s), 0U);
    EXPECT_EQ(endOfTags(""), 0U);
    EXPECT_EQ(endOfTags("TAG" + std::string(125, '\0')), 0U);
}

TEST(MediaItems, OfTheOldestTagsHaveShortNames) {
    const auto frame = [](const std::string& name, const std::string& text) {
        return name + bigEndian(text.size() + 1, 3) + "\0"s + text;
    };
    const std::string frames =
        frame("TP1", "A") + frame("TT2", "T") + frame("TP2", "no") + frame("TAL", "L");
    EXPECT_EQ(leadingTag("ID3\2\0\0\0\0\0"s + static_cast<char>(frames.size()) + frames),
              (Texts{"a=A", "t=T", "l=L"}));
}
