// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/PhotoBlocks.h"
#include "tests/unit/support/ImageDescription.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using platform::ImageProperties;

std::string packetOf(std::string_view attributes) {
    return std::string("<rdf:RDF><rdf:Description ").append(attributes).append("/></rdf:RDF>");
}

// What is said of an image after a packet, without the beginning that has no size.
std::string said(std::string_view attributes, ImageProperties properties = {}) {
    platform::media::addXmp(platform::bytesOf(packetOf(attributes)), properties);
    return ImageDescription::of(properties).substr(std::string_view("-1x-1 -1 no-model").size());
}

} // namespace

TEST(XmpBlock, HasWhatExifAndTiffHaveFieldsFor) {
    EXPECT_EQ(said("tiff:Make='Maker' tiff:Model='Model ' tiff:Software='1.0' tiff:Copyright='me' "
                   "exifEX:LensModel='Lens' exif:ExposureTime='1/250' exif:FNumber='28/10' "
                   "exif:ISOSpeedRatings='400' exif:FocalLength='35' "
                   "exif:FocalLengthIn35mmFilm='52' "
                   "exif:DateTimeOriginal='2023-07-14T18:30:05.25+02:00'"),
              " tiff make=Maker model=Model software=1.0 copyright=me exif lens=Lens time=0.004 "
              "f=2.8 iso=400 length=35 length35=52 date=2023:07:14 18:30:05");
}

TEST(XmpBlock, HasOtherPropertiesForTheSame) {
    EXPECT_EQ(said("xmp:CreatorTool='Editor' dc:rights='me' aux:Lens='Lens' exif:Flash='0' "
                   "exifEX:PhotographicSensitivity='102400'"),
              " tiff software=Editor copyright=me exif lens=Lens iso=102400");
    EXPECT_EQ(said("xap:CreatorTool='Old editor'"), " tiff software=Old editor");
    EXPECT_EQ(said("xmp:CreatorTool='b' tiff:Software='a' dc:rights='d' tiff:Copyright='c'"),
              " tiff software=a copyright=c");
}

TEST(XmpBlock, IsAnExifBlockWhenAnyOfItsPropertiesIsThere) {
    EXPECT_EQ(said("tiff:Make='Maker' exif:PixelXDimension='9'"), " tiff make=Maker exif");
    EXPECT_EQ(said("tiff:Make='Maker' aux:Lens='Lens'"), " tiff make=Maker");
    EXPECT_EQ(said("tiff:Orientation='1'"), "");
    EXPECT_EQ(said(""), "");
}

TEST(XmpBlock, DoesNotReplaceWhatOtherBlocksSay) {
    ImageProperties properties;
    properties.tiff.emplace().make = "Mine";
    auto& exif = properties.exif.emplace();
    exif.fNumber = 4;
    exif.isoSpeedRatings = {50};
    properties.gps = {48.5, std::nullopt, 2.25, std::nullopt};
    EXPECT_EQ(said("tiff:Make='Other' tiff:Model='Model' exif:FNumber='8' "
                   "exif:ISOSpeedRatings='400' exif:FocalLength='50' aux:Lens='Lens' "
                   "exif:GPSLatitude='1,0N' exif:GPSLongitude='2,0E'",
                   properties),
              " tiff make=Mine model=Model exif lens=Lens f=4 iso=50 length=50 gps latitude=48.5 "
              "longitude=2.25");
}

TEST(XmpBlock, HasNoNumbersThatAreNone) {
    for (const std::string_view number :
         {"", "x", "1/", "1/0", "0/0", "/2", "1/2/3", "1/2 mm", "inf", "nan", "1e308/1e-308"}) {
        EXPECT_EQ(said(std::string("exif:FNumber='").append(number).append("'")), " exif")
            << number;
    }
    for (const std::string_view number : {"", "x", "1.5", "99999999999999999999", "0"}) {
        EXPECT_EQ(said(std::string("exif:FocalLengthIn35mmFilm='").append(number).append("'")),
                  " exif")
            << number;
    }
}

TEST(XmpBlock, HasDatesInTheFormOfExif) {
    const auto date = [](std::string_view text) {
        return said(std::string("exif:DateTimeOriginal='").append(text).append("'"));
    };
    EXPECT_EQ(date("2023-07-14T18:30:05"), " exif date=2023:07:14 18:30:05");
    EXPECT_EQ(date("2023-07-14T18:30:05Z"), " exif date=2023:07:14 18:30:05");
    EXPECT_EQ(date("2023-07-14T18:30"), " exif date=2023:07:14 18:30:00");
    EXPECT_EQ(date("2023-07-14T18:30+02:00"), " exif date=2023:07:14 18:30:00");
    for (const char* const other :
         {"2023-07-14", "2023:07:14 18:30:05", "in July", "2023-7-4T1:2"}) {
        EXPECT_EQ(date(other), std::string(" exif date=").append(other));
    }
}

TEST(XmpBlock, HasPositionsInDegrees) {
    const auto place = [](std::string_view latitude) {
        return said(std::string("exif:GPSLongitude='2,15,0W' exif:GPSLatitude='")
                        .append(latitude)
                        .append("'"));
    };
    EXPECT_EQ(place("48,30.6N"), " exif gps latitude=48.51 ref=N longitude=2.25 ref=W");
    EXPECT_EQ(place("48,30,36S"), " exif gps latitude=48.51 ref=S longitude=2.25 ref=W");
    EXPECT_EQ(place("48.51N"), " exif gps latitude=48.51 ref=N longitude=2.25 ref=W");
    for (const std::string_view none : {"", "N", "48,30.6", "48,30.6X", "48,-1N", "-48,0N",
                                        "48,,6N", "1,2,3,4N", "nan,0N", "inf,0N", "48,30.6NN"}) {
        EXPECT_EQ(place(none), " exif") << none;
    }
}
