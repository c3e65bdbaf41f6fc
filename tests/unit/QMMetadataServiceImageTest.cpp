// SPDX-License-Identifier: Apache-2.0
#include "services/QMMetadataService.h"
#include "tests/unit/support/BoundCatalogue.h"
#include "tests/unit/support/EnvironmentVariable.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::ImageProperties;
using Exif = ImageProperties::Exif;
using Gps = ImageProperties::Gps;
using Iptc = ImageProperties::Iptc;
using Tiff = ImageProperties::Tiff;
using Keys = QMMetadataService::Keys;
using Texts = std::vector<std::string>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// Every key, in an order of its own.
const Keys allKeys{"copyright",  "software",   "gps",       "dateOriginal", "focalLength",
                   "iso",        "aperture",   "exposure",  "lens",         "camera",
                   "animated",   "hasAlpha",   "dpi",       "colorProfile", "size",
                   "colorModel", "colorDepth", "dimensions"};

QMMetadataEntries entriesOf(const std::optional<ImageProperties>& image,
                            const Keys& keys = allKeys) {
    QMMetadataEntries entries;
    QMMetadataService::init({nullptr, [&image](const std::string&, bool) { return image; }})
        ->extractImageMetadata("/photo.jpg", keys, entries);
    return entries;
}

// "key=value" of each entry.
Texts valuesOf(const ImageProperties& image, const Keys& keys = allKeys) {
    Texts texts;
    for (const auto& entry : entriesOf(image, keys)) {
        texts.push_back(entry->key.value_or("none") + "=" + entry->value.value_or("none"));
    }
    return texts;
}

ImageProperties withExif(Exif exif) {
    ImageProperties image;
    image.exif = std::move(exif);
    return image;
}

ImageProperties withExposureTime(double time) {
    Exif exif;
    exif.exposureTime = time;
    return withExif(exif);
}

ImageProperties withDate(std::string date) {
    Exif exif;
    exif.dateTimeOriginal = std::move(date);
    return withExif(exif);
}

ImageProperties withDpi(std::optional<double> width, std::optional<double> height) {
    ImageProperties image;
    image.dpiWidth = width;
    image.dpiHeight = height;
    return image;
}

ImageProperties withGps(Gps gps) {
    ImageProperties image;
    image.gps = std::move(gps);
    return image;
}

Exif fullExif() {
    return {.lensModel = "EF50mm f/1.8",
            .exposureTime = 0.004,
            .fNumber = 2.8,
            .isoSpeedRatings = {100, 200},
            .focalLength = 50.0,
            .focalLenIn35mmFilm = 80,
            .dateTimeOriginal = "2023:07:14 18:30:05"};
}

ImageProperties photograph() {
    ImageProperties image;
    image.pixelWidth = 6000;
    image.pixelHeight = 4000;
    image.depth = 8;
    image.colorModel = "RGB";
    image.profileName = "Display P3";
    image.dpiWidth = 300;
    image.dpiHeight = 150;
    image.hasAlpha = false;
    image.imageCount = 2;
    image.exif = fullExif();
    image.tiff =
        Tiff{.make = "Maker", .model = "Model 5", .software = "Editor 1", .copyright = "(c) T"};
    image.gps =
        Gps{.latitude = 48.8584, .latitudeRef = "N", .longitude = 2.2945, .longitudeRef = "E"};
    image.iptc = Iptc{.copyrightNotice = "© I"};
    return image;
}

TEST(QMMetadataServiceImage, TellsSeventeenThingsInTheirOrder) {
    EXPECT_EQ(valuesOf(photograph()),
              (Texts{"dimensions=6000 × 4000 px", "colorDepth=8 Bit", "colorModel=RGB",
                     "colorProfile=Display P3", "dpi=300 × 150", "hasAlpha=meta.no",
                     "animated=meta.img.frames", "camera=Model 5", "lens=EF50mm f/1.8",
                     "exposure=1/250 s", "aperture=f/2.8", "iso=100",
                     "focalLength=50.0 mm (80 mm eq.)", "dateOriginal=Jul 14, 2023 at 6:30\u202FPM",
                     "gps=48.8584° N, 2.2945° E", "software=Editor 1", "copyright=© I"}));
}

TEST(QMMetadataServiceImage, LabelsEntriesAndMarksTheDimensions) {
    Texts labels;
    for (const auto& entry : entriesOf(photograph())) {
        labels.push_back(entry->localizedKey.value_or("none") + (entry->isPrimary ? "!" : ""));
    }
    EXPECT_EQ(labels,
              (Texts{"meta.img.dimensions!", "meta.img.colorDepth", "meta.img.colorModel",
                     "meta.img.colorProfile", "meta.img.dpi", "meta.img.hasAlpha",
                     "meta.img.animated", "meta.img.camera", "meta.img.lens", "meta.img.exposure",
                     "meta.img.aperture", "ISO", "meta.img.focalLength", "meta.img.dateOriginal",
                     "meta.img.gps", "meta.img.software", "meta.img.copyright"}));
}

TEST(QMMetadataServiceImage, WhatTheFileDoesNotSayHasNoEntry) {
    EXPECT_EQ(valuesOf({}), Texts());
    ImageProperties blocks;
    blocks.exif.emplace();
    blocks.tiff.emplace();
    blocks.gps.emplace();
    blocks.iptc.emplace();
    EXPECT_EQ(valuesOf(blocks), Texts());
}

TEST(QMMetadataServiceImage, EachKeyIsToldAlone) {
    const Texts all = valuesOf(photograph());
    for (const std::string& text : all) {
        const std::string key = text.substr(0, text.find('='));
        EXPECT_EQ(valuesOf(photograph(), {key}), Texts{text});
    }
}

TEST(QMMetadataServiceImage, EachKeyIsLeftOutAlone) {
    const Texts all = valuesOf(photograph());
    for (std::size_t left = 0; left < all.size(); ++left) {
        Keys keys;
        Texts expected;
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (i != left) {
                keys.emplace_back(all[i].substr(0, all[i].find('=')));
                expected.push_back(all[i]);
            }
        }
        EXPECT_EQ(valuesOf(photograph(), keys), expected);
    }
}

TEST(QMMetadataServiceImage, KeysThatMeanNothingDoNoHarm) {
    EXPECT_EQ(valuesOf(photograph(), {std::int64_t{5}, "iso", "unknown", "ISO", "iso"}),
              Texts{"iso=100"});
}

TEST(QMMetadataServiceImage, DimensionsNeedBoth) {
    ImageProperties image;
    image.pixelWidth = 1;
    EXPECT_EQ(valuesOf(image), Texts());
    image.pixelHeight = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(valuesOf(image), Texts{"dimensions=1 × 9223372036854775807 px"});
    image.pixelWidth.reset();
    EXPECT_EQ(valuesOf(image), Texts());
}

TEST(QMMetadataServiceImage, ResolutionIsToldOnceWhereBothAreEqual) {
    EXPECT_EQ(valuesOf(withDpi(72, 72.0)), Texts{"dpi=72"});
    EXPECT_EQ(valuesOf(withDpi(300, 150)), Texts{"dpi=300 × 150"});
    EXPECT_EQ(valuesOf(withDpi(72, std::nullopt)), Texts());
    EXPECT_EQ(valuesOf(withDpi(std::nullopt, 72)), Texts());
}

TEST(QMMetadataServiceImage, FractionsOfTheResolutionAreCutOff) {
    EXPECT_EQ(valuesOf(withDpi(143.9926, 143.9926)), Texts{"dpi=143"});
    EXPECT_EQ(valuesOf(withDpi(72.2, 72.9)), Texts{"dpi=72 × 72"});
    EXPECT_EQ(valuesOf(withDpi(-0.9, -1.5)), Texts{"dpi=0 × -1"});
}

TEST(QMMetadataServiceImage, ResolutionsOutOfRangeBecomeTheNearestNumber) {
    EXPECT_EQ(valuesOf(withDpi(infinity, infinity)), Texts{"dpi=9223372036854775807"});
    EXPECT_EQ(valuesOf(withDpi(-1e300, 1e19)),
              Texts{"dpi=-9223372036854775808 × 9223372036854775807"});
    EXPECT_EQ(valuesOf(withDpi(nan, 1)), Texts{"dpi=0 × 1"});
}

TEST(QMMetadataServiceImage, SaysWhetherThereIsAlpha) {
    ImageProperties image;
    image.hasAlpha = true;
    EXPECT_EQ(valuesOf(image), Texts{"hasAlpha=meta.yes"});
    image.hasAlpha = false;
    EXPECT_EQ(valuesOf(image), Texts{"hasAlpha=meta.no"});
}

TEST(QMMetadataServiceImage, OneImageIsNoAnimation) {
    ImageProperties image;
    for (const std::uint64_t count : {0U, 1U}) {
        image.imageCount = count;
        EXPECT_EQ(valuesOf(image), Texts()) << count;
    }
}

TEST(QMMetadataServiceImage, FramesAreCountedInTheUsersLanguage) {
    ImageProperties image;
    image.hasAlpha = true;
    image.imageCount = 12;
    {
        const BoundCatalogue catalogue("en");
        EXPECT_EQ(valuesOf(image), (Texts{"hasAlpha=Indeed", "animated=12 frames"}));
    }
    image.imageCount = std::numeric_limits<std::uint64_t>::max();
    const BoundCatalogue catalogue("de");
    EXPECT_EQ(valuesOf(image), (Texts{"hasAlpha=Gewiß", "animated=18446744073709551615 Bilder"}));
}

TEST(QMMetadataServiceImage, ImagesAreCountedOnlyForTheKeyThatTellsIt) {
    std::vector<std::pair<std::string, bool>> readings;
    const auto service =
        QMMetadataService::init({nullptr, [&](const std::string& path, bool wants) {
                                     readings.emplace_back(path, wants);
                                     return std::optional(photograph());
                                 }});
    QMMetadataEntries entries;
    service->extractImageMetadata("/a.gif", {"animated"}, entries);
    service->extractImageMetadata("/b.gif", {"dimensions", "camera"}, entries);
    EXPECT_EQ(entries.size(), 3U);
    service->extractImageMetadata("/c\xFF.gif", {}, entries);
    EXPECT_EQ(entries.size(), 3U);
    EXPECT_EQ(readings, (std::vector<std::pair<std::string, bool>>{
                            {"/a.gif", true}, {"/b.gif", false}, {"/c\xFF.gif", false}}));
}

TEST(QMMetadataServiceImage, CameraIsTheModelAlone) {
    ImageProperties image = withExif({});
    image.tiff = Tiff{.make = "Maker", .model = "Maker Model 5", .software = {}, .copyright = {}};
    EXPECT_EQ(valuesOf(image), Texts{"camera=Maker Model 5"});
    image.tiff->model.reset();
    EXPECT_EQ(valuesOf(image), Texts{"camera=Maker"});
}

TEST(QMMetadataServiceImage, WithoutExifThereIsNoCamera) {
    ImageProperties image = photograph();
    image.exif.reset();
    EXPECT_EQ(valuesOf(image, {"camera", "lens", "exposure", "aperture", "iso", "focalLength",
                               "dateOriginal", "gps", "software", "copyright"}),
              (Texts{"gps=48.8584° N, 2.2945° E", "software=Editor 1", "copyright=© I"}));
}

TEST(QMMetadataServiceImage, ShortExposuresAreFractions) {
    EXPECT_EQ(valuesOf(withExposureTime(0.004)), Texts{"exposure=1/250 s"});
    EXPECT_EQ(valuesOf(withExposureTime(1.0 / 3)), Texts{"exposure=1/3 s"});
    EXPECT_EQ(valuesOf(withExposureTime(0.4)), Texts{"exposure=1/2 s"});
    EXPECT_EQ(valuesOf(withExposureTime(0.999)), Texts{"exposure=1/1 s"});
    EXPECT_EQ(valuesOf(withExposureTime(1.0)), Texts{"exposure=1.0 s"});
    EXPECT_EQ(valuesOf(withExposureTime(2.5)), Texts{"exposure=2.5 s"});
    EXPECT_EQ(valuesOf(withExposureTime(30)), Texts{"exposure=30.0 s"});
}

TEST(QMMetadataServiceImage, ImpossibleExposuresAreToldAsTheyAre) {
    EXPECT_EQ(valuesOf(withExposureTime(0.0)), Texts{"exposure=1/inf s"});
    EXPECT_EQ(valuesOf(withExposureTime(-0.0)), Texts{"exposure=1/-inf s"});
    EXPECT_EQ(valuesOf(withExposureTime(-2)), Texts{"exposure=1/-0 s"});
    EXPECT_EQ(valuesOf(withExposureTime(-infinity)), Texts{"exposure=1/-0 s"});
    EXPECT_EQ(valuesOf(withExposureTime(infinity)), Texts{"exposure=inf s"});
    EXPECT_EQ(valuesOf(withExposureTime(nan)), Texts{"exposure=nan s"});
    EXPECT_EQ(valuesOf(withExposureTime(-nan)), Texts{"exposure=nan s"});
}

TEST(QMMetadataServiceImage, ApertureHasOneDecimal) {
    Exif exif;
    exif.fNumber = 8;
    EXPECT_EQ(valuesOf(withExif(exif)), Texts{"aperture=f/8.0"});
    exif.fNumber = 1.25;
    EXPECT_EQ(valuesOf(withExif(exif)), Texts{"aperture=f/1.2"});
    exif.fNumber = infinity;
    EXPECT_EQ(valuesOf(withExif(exif)), Texts{"aperture=f/inf"});
}

TEST(QMMetadataServiceImage, SensitivityIsTheFirstOfThem) {
    Exif exif;
    exif.isoSpeedRatings = {0};
    EXPECT_EQ(valuesOf(withExif(exif)), Texts{"iso=0"});
    exif.isoSpeedRatings = {102'400, 100};
    EXPECT_EQ(valuesOf(withExif(exif)), Texts{"iso=102400"});
}

TEST(QMMetadataServiceImage, FocalLengthIn35mmFilmStandsBehindTheOther) {
    Exif exif;
    exif.focalLenIn35mmFilm = 29;
    EXPECT_EQ(valuesOf(withExif(exif)), Texts());
    exif.focalLength = 4.15;
    EXPECT_EQ(valuesOf(withExif(exif)), Texts{"focalLength=4.2 mm (29 mm eq.)"});
    exif.focalLenIn35mmFilm.reset();
    EXPECT_EQ(valuesOf(withExif(exif)), Texts{"focalLength=4.2 mm"});
}

TEST(QMMetadataServiceImage, DatesAreWrittenForDisplay) {
    EXPECT_EQ(valuesOf(withDate("2023:07:14 18:30:05")),
              Texts{"dateOriginal=Jul 14, 2023 at 6:30\u202FPM"});
    const EnvironmentVariable zone("TZ", "Asia/Kolkata");
    EXPECT_EQ(valuesOf(withDate("2024:02:29 00:00:59")),
              Texts{"dateOriginal=Feb 29, 2024 at 12:00\u202FAM"});
}

TEST(QMMetadataServiceImage, WhatIsNoDateStaysAsItIs) {
    for (const std::string text :
         {"", "    :  :     :  :  ", "0000:00:00 00:00:00", "2023:13:01 00:00:00",
          "2023:02:30 12:00:00", "2023:07:14 18:30:05 Z", "2023-07-14T18:30:05", "2023:07:14",
          "im Sommer ’23", "%@ %n"}) {
        EXPECT_EQ(valuesOf(withDate(text)), Texts{"dateOriginal=" + text});
    }
}

TEST(QMMetadataServiceImage, TimesThatTheClocksSkipStayAsTheyAre) {
    const EnvironmentVariable zone("TZ", "Europe/Berlin");
    EXPECT_EQ(valuesOf(withDate("2023:03:26 02:30:00")), Texts{"dateOriginal=2023:03:26 02:30:00"});
    EXPECT_EQ(valuesOf(withDate("2023:03:26 03:30:00")),
              Texts{"dateOriginal=Mar 26, 2023 at 3:30\u202FAM"});
}

TEST(QMMetadataServiceImage, PositionHasFourDecimalsAndItsLetters) {
    EXPECT_EQ(
        valuesOf(withGps(
            {.latitude = 48.8584, .latitudeRef = "N", .longitude = 2.2945, .longitudeRef = "E"})),
        Texts{"gps=48.8584° N, 2.2945° E"});
    EXPECT_EQ(
        valuesOf(withGps(
            {.latitude = 33.85678, .latitudeRef = "S", .longitude = 151, .longitudeRef = "W"})),
        Texts{"gps=33.8568° S, 151.0000° W"});
}

TEST(QMMetadataServiceImage, PositionWithoutLettersKeepsTheirBlanks) {
    Gps gps;
    gps.latitude = 48.8584;
    EXPECT_EQ(valuesOf(withGps(gps)), Texts());
    gps.longitude = 2.2945;
    EXPECT_EQ(valuesOf(withGps(gps)), Texts{"gps=48.8584° , 2.2945° "});
    gps.longitudeRef = "E";
    EXPECT_EQ(valuesOf(withGps(gps)), Texts{"gps=48.8584° , 2.2945° E"});
    gps.latitude.reset();
    EXPECT_EQ(valuesOf(withGps(gps)), Texts());
}

TEST(QMMetadataServiceImage, NoticeWinsOverTheOtherCopyright) {
    ImageProperties image;
    image.tiff.emplace().copyright = "T";
    EXPECT_EQ(valuesOf(image), Texts{"copyright=T"});
    image.iptc.emplace();
    EXPECT_EQ(valuesOf(image), Texts{"copyright=T"});
    image.iptc->copyrightNotice = "I";
    EXPECT_EQ(valuesOf(image), Texts{"copyright=I"});
    image.tiff.reset();
    EXPECT_EQ(valuesOf(image), Texts{"copyright=I"});
}

TEST(QMMetadataServiceImage, EmptyTextsAreThere) {
    ImageProperties image;
    image.colorModel = "";
    image.profileName = "";
    image.exif.emplace().lensModel = "";
    image.tiff = Tiff{.make = "Maker", .model = "", .software = "", .copyright = "T"};
    image.iptc = Iptc{.copyrightNotice = ""};
    EXPECT_EQ(
        valuesOf(image),
        (Texts{"colorModel=", "colorProfile=", "camera=", "lens=", "software=", "copyright="}));
}

TEST(QMMetadataServiceImage, AppendsToWhatIsThere) {
    QMMetadataEntries entries{QMMetadataEntry::entryWithKey("first", "l", "v")};
    QMMetadataService::init(
        {nullptr, [](const std::string&, bool) { return std::optional(photograph()); }})
        ->extractImageMetadata("/photo.jpg", {"iso"}, entries);
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries.front()->key, "first");
}

TEST(QMMetadataServiceImage, WhatCannotBeReadHasNoEntries) {
    EXPECT_TRUE(entriesOf(std::nullopt).empty());
}

} // namespace
