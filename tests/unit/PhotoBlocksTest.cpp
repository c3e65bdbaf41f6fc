// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/PhotoBlocks.h"

#include "tests/unit/support/ImageDescription.h"
#include "tests/unit/support/TiffWriter.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace platform::media;
using namespace std::string_view_literals;
using platform::ImageProperties;

constexpr std::uint16_t makeTag = 271;
constexpr std::uint16_t modelTag = 272;
constexpr std::uint16_t widthResolutionTag = 282;
constexpr std::uint16_t heightResolutionTag = 283;
constexpr std::uint16_t resolutionUnitTag = 296;
constexpr std::uint16_t softwareTag = 305;
constexpr std::uint16_t xmpTag = 700;
constexpr std::uint16_t copyrightTag = 33432;
constexpr std::uint16_t exifTag = 34665;
constexpr std::uint16_t gpsTag = 34853;

class PhotoBlocks : public ::testing::Test {
protected:
    static void SetUpTestSuite() { PhotoTags::prepare(); }

    // What a block says, without the beginning that has no size.
    static std::string said(std::string block) {
        ImageProperties properties;
        addExif(std::as_writable_bytes(std::span(block)), properties);
        const std::string text = ImageDescription::of(properties);
        const std::string nothing = "-1x-1 -1 no-model";
        return text.substr(0, nothing.size()) == nothing ? text.substr(nothing.size()) : text;
    }
    static std::string saidOf(const TiffDirectory& first) { return said(tiffBytes(first)); }
    static std::string saidOfExif(const TiffDirectory& directory) {
        return saidOf({tiffDirectories(exifTag, {directory})});
    }
    static std::string saidOfGps(const TiffDirectory& directory) {
        return saidOf({tiffDirectories(gpsTag, {directory})});
    }
};

} // namespace

TEST_F(PhotoBlocks, TakeTheFieldsOfTheFirstDirectory) {
    EXPECT_EQ(saidOf({tiffText(makeTag, "Maker"), tiffText(modelTag, "Model"),
                      tiffText(softwareTag, "1.0"), tiffText(copyrightTag, "Someone")}),
              " tiff make=Maker model=Model software=1.0 copyright=Someone exif");
}

TEST_F(PhotoBlocks, EndTextsBeforeZerosAndBlanks) {
    EXPECT_EQ(saidOf({tiffText(makeTag, "Maker \0 \0\0"sv), tiffText(modelTag, "A B \t\n"),
                      tiffText(softwareTag, "      ")}),
              " tiff make=Maker model=A B exif");
    EXPECT_EQ(saidOf({tiffText(makeTag, "\0Maker"sv)}), " tiff exif");
}

TEST_F(PhotoBlocks, TakeTheEditorsNoticeWhenThePhotographerSaysNothing) {
    EXPECT_EQ(saidOf({tiffText(copyrightTag, " \0Editor\0"sv)}), " tiff copyright=Editor exif");
    EXPECT_EQ(saidOf({tiffText(copyrightTag, "One\0Editor\0"sv)}), " tiff copyright=One exif");
}

TEST_F(PhotoBlocks, ReadTextsAsUtf8AndOtherwiseAsLatin1) {
    EXPECT_EQ(saidOf({tiffText(makeTag, "Gr\u00FCn"), tiffText(modelTag, "Gr\xFCn")}),
              " tiff make=Gr\u00FCn model=Gr\u00FCn exif");
}

TEST_F(PhotoBlocks, ConvertTheResolutionByItsUnit) {
    const auto resolution = [](std::initializer_list<std::uint64_t> unit) {
        return TiffDirectory{tiffRatios(widthResolutionTag, {{100, 1}}),
                             tiffRatios(heightResolutionTag, {{50, 1}}),
                             tiffShorts(resolutionUnitTag, unit)};
    };
    EXPECT_EQ(saidOf(resolution({2})), " dpi=100x50 tiff exif");
    EXPECT_EQ(saidOf(resolution({3})), " dpi=254x127 tiff exif");
    EXPECT_EQ(saidOf(resolution({1})), " tiff exif");
    EXPECT_EQ(saidOf({tiffRatios(widthResolutionTag, {{100, 1}}),
                      tiffRatios(heightResolutionTag, {{50, 1}})}),
              " dpi=100x50 tiff exif");
}

TEST_F(PhotoBlocks, LeaveOutResolutionsThatAreNone) {
    EXPECT_EQ(saidOf({tiffRatios(widthResolutionTag, {{72, 1}}),
                      tiffRatios(heightResolutionTag, {{72, 0}})}),
              " tiff exif");
    EXPECT_EQ(saidOf({tiffRatios(widthResolutionTag, {{0, 1}}),
                      tiffRatios(heightResolutionTag, {{72, 1}})}),
              " tiff exif");
    EXPECT_EQ(saidOf({tiffRatios(widthResolutionTag, {{72, 1}})}), " tiff exif");
}

TEST_F(PhotoBlocks, TakeTheFieldsOfTheExifDirectory) {
    EXPECT_EQ(saidOfExif({tiffRatios(33434, {{10, 2500}}), tiffRatios(33437, {{28, 10}}),
                          tiffShorts(34855, {100, 200}), tiffText(36867, "2023:07:14 18:30:05\0"sv),
                          tiffRatios(37386, {{42, 10}}), tiffShorts(40961, {1}),
                          tiffShorts(41989, {29}), tiffText(42036, "Lens\0"sv)}),
              " profile=sRGB IEC61966-2.1 tiff exif lens=Lens time=0.004 f=2.8 iso=100 iso=200 "
              "length=4.2 length35=29 date=2023:07:14 18:30:05");
}

TEST_F(PhotoBlocks, LeaveOutNumbersWithoutADenominator) {
    EXPECT_EQ(saidOfExif({tiffRatios(33434, {{1, 0}}), tiffRatios(33437, {{0, 0}}),
                          tiffRatios(37386, {{5, 0}})}),
              " tiff exif");
    EXPECT_EQ(saidOfExif({tiffRatios(33434, {{0, 1}})}), " tiff exif time=0");
}

TEST_F(PhotoBlocks, KeepNumbersAsLargeOrNegativeAsTheyAre) {
    EXPECT_EQ(saidOfExif({tiffRatios(33434, {{4000000000, 1}}), tiffRatios(33437, {{-5, 2}}, 10)}),
              " tiff exif time=4e+09 f=-2.5");
}

TEST_F(PhotoBlocks, TakeALargeSensitivityFromTheNewerField) {
    EXPECT_EQ(saidOfExif({tiffShorts(34855, {65535}), tiffLongs(34866, {102400})}),
              " tiff exif iso=102400");
    EXPECT_EQ(saidOfExif({tiffLongs(34865, {800})}), " tiff exif iso=800");
    EXPECT_EQ(saidOfExif({tiffShorts(34855, {65535})}), " tiff exif iso=65535");
}

TEST_F(PhotoBlocks, LeaveOutWhatStandsForUnknown) {
    EXPECT_EQ(saidOfExif({tiffText(36867, "    :  :     :  :  \0"sv), tiffShorts(41989, {0})}),
              " tiff exif");
}

TEST_F(PhotoBlocks, AddMinutesAndSecondsToDegrees) {
    EXPECT_EQ(saidOfGps({tiffText(1, "N\0"sv), tiffRatios(2, {{48, 1}, {30, 1}, {36, 1}}),
                         tiffText(3, "W\0"sv), tiffRatios(4, {{2, 1}, {15, 1}})}),
              " tiff exif gps latitude=48.51 ref=N longitude=2.25 ref=W");
    EXPECT_EQ(saidOfGps({tiffRatios(2, {{48, 1}, {30, 1}, {0, 0}}), tiffRatios(4, {{5, 2}})}),
              " tiff exif gps latitude=48.5 longitude=2.5");
}

TEST_F(PhotoBlocks, LeaveOutPositionsThatAreNone) {
    EXPECT_EQ(saidOfGps({tiffText(1, "N\0"sv), tiffRatios(2, {{0, 0}, {0, 0}, {0, 0}}),
                         tiffRatios(4, {{2, 1}, {1, 0}})}),
              " tiff exif gps ref=N");
    EXPECT_EQ(saidOfGps({tiffRatios(2, {{-48, 1}, {0, 1}, {0, 1}}, 10)}), " tiff exif gps");
}

TEST_F(PhotoBlocks, AreReadBehindTheMarkerOfJpegToo) {
    const std::string block = tiffBytes({tiffText(makeTag, "Maker")});
    EXPECT_EQ(said(std::string("Exif\0\0"sv).append(block)), said(block));
    EXPECT_EQ(said(block), " tiff make=Maker exif");
}

TEST_F(PhotoBlocks, AreNoneUnlessTheyAreTiffStructures) {
    for (const auto bytes : {""sv, "I"sv, "II*"sv, "Exif\0\0"sv, "ABCDEFGHIJKL"sv}) {
        EXPECT_EQ(said(std::string(bytes)), "") << bytes;
    }
}

TEST_F(PhotoBlocks, HideMetadataInXmlFromTheLibrary) {
    std::string block = tiffBytes({tiffText(makeTag, "Maker"), tiffText(xmpTag, "<x:xmpmeta/>")});
    EXPECT_EQ(said(block), " tiff make=Maker exif");
    ASSERT_TRUE(PhotoTags::decode(std::as_writable_bytes(std::span(block))));
    EXPECT_EQ(block.find("\xBC\x02"), std::string::npos);
}

TEST_F(PhotoBlocks, HaveTheXmpPacketInTheirFirstDirectory) {
    EXPECT_EQ(saidOf({tiffText(makeTag, "Maker"),
                      tiffText(xmpTag, "<rdf:RDF><rdf:Description tiff:Make='Other' "
                                       "tiff:Model='Model'/></rdf:RDF>")}),
              " tiff make=Maker model=Model exif");
}

TEST_F(PhotoBlocks, DoNotCopyFieldsOfManyMegabytes) {
    constexpr std::uint16_t layersTag = 37724;
    constexpr std::size_t most = 4U << 20U;
    const auto isThere = [](std::size_t length) {
        std::string block =
            tiffBytes({tiffText(makeTag, "Maker"), tiffText(layersTag, std::string(length, 'x'))});
        const auto tags = PhotoTags::decode(std::as_writable_bytes(std::span(block)));
        return tags && tags->text("Exif.Image.Make") && tags->hasField("Exif.Image.0x935c");
    };
    EXPECT_TRUE(isThere(most));
    EXPECT_FALSE(isThere(most + 1));
}

TEST_F(PhotoBlocks, AreNoneBeyondSixteenMegabytes) {
    constexpr std::size_t most = 16U << 20U;
    std::string block = tiffBytes({tiffText(makeTag, "Maker")});
    block.resize(most);
    EXPECT_EQ(said(block), " tiff make=Maker exif");
    block.push_back('\0');
    EXPECT_EQ(said(block), "");
    std::string packet = "<rdf:RDF><rdf:Description tiff:Make='Maker'/></rdf:RDF>";
    packet.resize(most, ' ');
    ImageProperties properties;
    platform::media::addXmp(platform::bytesOf(packet.append(" ")), properties);
    EXPECT_FALSE(properties.tiff);
    platform::media::addXmp(platform::bytesOf(std::string_view(packet).substr(0, most)),
                            properties);
    EXPECT_TRUE(properties.tiff);
}

TEST_F(PhotoBlocks, SurviveDamageAtEveryByte) {
    const std::string whole = tiffBytes(
        {tiffText(makeTag, "Canon"), tiffText(modelTag, "Model of a camera"),
         tiffDirectories(exifTag, {{tiffRatios(33434, {{1, 250}}),
                                    {37500, 7, 40, tiffBytes({tiffShorts(1, {1, 2, 3})}), {}}}}),
         tiffDirectories(gpsTag, {{tiffText(1, "N"), tiffRatios(2, {{48, 1}, {1, 1}, {2, 1}})}})});
    for (std::size_t i = 0; i < whole.size(); ++i) {
        std::ignore = said(whole.substr(0, i));
        for (const char byte : {'\0', '\1', '\x7F', '\x80', '\xFF'}) {
            std::string damaged = whole;
            damaged[i] = byte;
            std::ignore = said(damaged);
        }
    }
    EXPECT_NE(said(whole), "");
}

TEST_F(PhotoBlocks, DoNotReplaceWhatTheFormatItselfHasSaid) {
    std::string block = tiffBytes({tiffRatios(widthResolutionTag, {{300, 1}}),
                                   tiffRatios(heightResolutionTag, {{300, 1}}),
                                   tiffDirectories(exifTag, {{tiffShorts(40961, {1})}})});
    ImageProperties properties;
    properties.dpiWidth = 72;
    properties.dpiHeight = 72;
    properties.profileName = "Mine";
    addExif(std::as_writable_bytes(std::span(block)), properties);
    EXPECT_EQ(properties.dpiWidth, 72);
    EXPECT_EQ(properties.profileName, "Mine");
}

TEST_F(PhotoBlocks, FindTheNoticeInAnIptcRecord) {
    const auto noticeOf = [](std::string_view record) {
        ImageProperties properties;
        addIptc(platform::bytesOf(record), properties);
        return properties.iptc ? properties.iptc->copyrightNotice.value_or("none") : "no record";
    };
    EXPECT_EQ(noticeOf("\x1C\2\x74\0\4Mine"sv), "Mine");
    EXPECT_EQ(noticeOf("\x1C\2\x74\0\4Gr\xFCn"sv), "Gr\u00FCn");
    EXPECT_EQ(noticeOf("\x1C\2\5\0\4Name"sv), "none");
    EXPECT_EQ(noticeOf("\x1C\2\x74\0\xFFMine"sv), "none");
    EXPECT_EQ(noticeOf(""sv), "no record");
}

TEST_F(PhotoBlocks, FindResourcesByTheirNumber) {
    const std::string bytes = ByteWriter()
                                  .text("8BIM")
                                  .big(7, 2)
                                  .text("\3abc")
                                  .big(3, 4)
                                  .text("one\0"sv)
                                  .text("8BIM")
                                  .big(1028, 2)
                                  .big(0, 2)
                                  .big(3, 4)
                                  .text("two\0"sv)
                                  .text("MeSa")
                                  .big(8, 2)
                                  .big(0, 2)
                                  .big(4, 4)
                                  .text("mesa")
                                  .text("8BIM")
                                  .big(6, 2)
                                  .big(0, 2)
                                  .big(4, 4)
                                  .text("last")
                                  .text("8BIM")
                                  .big(9, 2)
                                  .big(0, 2)
                                  .big(99, 4)
                                  .text("cut off")
                                  .bytes();
    const auto found = [&bytes](std::uint16_t number, std::size_t length) {
        const auto resource =
            imageResource(platform::bytesOf(std::string_view(bytes).substr(0, length)), number);
        return resource
                   ? std::string(reinterpret_cast<const char*>(resource->data()), resource->size())
                   : "none";
    };
    EXPECT_EQ(found(7, bytes.size()), "one");
    EXPECT_EQ(found(1028, bytes.size()), "two");
    EXPECT_EQ(found(6, bytes.size()), "last");
    EXPECT_EQ(found(8, bytes.size()), "none");
    EXPECT_EQ(found(9, bytes.size()), "none");
    EXPECT_EQ(found(5, bytes.size()), "none");
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        EXPECT_EQ(found(1028, length), length < 33 ? "none" : "two") << length;
    }
}
