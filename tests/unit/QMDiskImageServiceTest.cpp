// SPDX-License-Identifier: Apache-2.0
#include "services/QMDiskImageService.h"

#include "tests/unit/support/DiskImageStandIn.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using platform::FileURL;
using platform::PropertyList;

std::optional<FileURL> mountPointIn(std::string_view output) {
    return QMDiskImageService::parseMountPointFromPlistData(platform::bytesOf(output));
}

std::string entitiesOf(const std::string& array) {
    return "<plist version=\"1.0\"><dict><key>system-entities</key>" + array + "</dict></plist>";
}

const std::string mounted = "<dict><key>dev-entry</key><string>/dev/loop0</string>"
                            "<key>mount-point</key><string>/Volumes/My Disk</string></dict>";

TEST(QMDiskImageService, TellsMountableImagesByTheirNames) {
    for (const char* const name : {"/a/image.DMG", "x.iso", "x.Img", "x.sparseimage", "x.cdr",
                                   "/nowhere/x.sparsebundle", "/nowhere/x.sparsebundle/"}) {
        EXPECT_TRUE(QMDiskImageService::isMountableDiskImage(name)) << name;
    }
    for (const char* const name : {"/a/image.dmg.zip", "", "dmg", ".dmg", "x.toast", "x.dmg "}) {
        EXPECT_FALSE(QMDiskImageService::isMountableDiskImage(name)) << name;
    }
}

TEST(QMDiskImageService, IsOneForTheProcessAndStartsEmpty) {
    EXPECT_EQ(QMDiskImageService::sharedService(), QMDiskImageService::sharedService());
    EXPECT_TRUE(QMDiskImageService::init()->mountedImages().empty());
}

TEST(QMDiskImageService, KeepsACopyOfTheRecordItIsGiven) {
    const auto service = QMDiskImageService::init();
    QMDiskImageService::MountedImages images{{"/mnt", "/a.dmg"}};
    service->setMountedImages(images);
    images.clear();
    EXPECT_EQ(service->mountedImages(), (QMDiskImageService::MountedImages{{"/mnt", "/a.dmg"}}));
}

TEST(QMDiskImageService, DescribesErrors) {
    const QMError error = QMDiskImageService::errorWithCode(-9, "why");
    EXPECT_EQ(error.domain, "QMDiskImage");
    EXPECT_EQ(error.code, -9);
    EXPECT_EQ(error.localizedDescription, "why");
    EXPECT_EQ(QMDiskImageService::errorWithCode(1, std::nullopt).localizedDescription,
              "Unknown error");
    EXPECT_EQ(QMDiskImageService::errorWithCode(1, "").localizedDescription, "");
}

TEST(MountPointOfOutput, IsThatOfTheFirstEntityWithOne) {
    const FileURL expected = FileURL::fromDirectoryPath("/Volumes/My Disk");
    EXPECT_EQ(mountPointIn(entitiesOf("<array>" + mounted + "</array>")), expected);
    EXPECT_EQ(expected.absoluteString(), "file:///Volumes/My%20Disk/");
    const std::string others = "<string>x</string><integer>1</integer><array/><dict/>"
                               "<dict><key>mount-point</key><string></string></dict>"
                               "<dict><key>mount-point</key><integer>7</integer></dict>";
    const std::string later = "<dict><key>mount-point</key><string>/later</string></dict>";
    EXPECT_EQ(mountPointIn(entitiesOf("<array>" + others + mounted + later + "</array>")),
              expected);
    EXPECT_EQ(mountPointIn(entitiesOf("<array>" + others + "</array>")), std::nullopt);
}

TEST(MountPointOfOutput, HasNoTrailingSlashInItsPath) {
    const auto url = mountPointIn(
        entitiesOf("<array><dict><key>mount-point</key><string>/mnt/a/</string></dict></array>"));
    ASSERT_TRUE(url);
    EXPECT_EQ(url->path(), "/mnt/a");
}

TEST(MountPointOfOutput, IsReadFromAnyFormat) {
    const PropertyList list(PropertyList::Dictionary{
        {"system-entities",
         PropertyList::Array{PropertyList::Dictionary{{"mount-point", "/mnt/a"}}}}});
    for (const auto format : {PropertyList::Format::binary, PropertyList::Format::xml}) {
        EXPECT_EQ(QMDiskImageService::parseMountPointFromPlistData(list.serialized(format)),
                  FileURL::fromDirectoryPath("/mnt/a"));
    }
}

TEST(MountPointOfOutput, IsNothingForOtherOutput) {
    for (const std::string& output :
         {std::string(), std::string("nonsense"), entitiesOf("<string>x</string>"),
          entitiesOf("<dict><key>mount-point</key><string>/x</string></dict>"),
          entitiesOf("<array/>"), std::string("<plist><array>") + mounted + "</array></plist>",
          std::string("<plist><dict><key>other</key><array>") + mounted + "</array></dict></plist>",
          entitiesOf("<array>" + mounted)}) {
        EXPECT_EQ(mountPointIn(output), std::nullopt) << output;
    }
}

class DiskImageInfo : public testing::Test {
protected:
    std::optional<PropertyList::Dictionary> info(const std::string& script) {
        tool.says(script);
        return QMDiskImageService::init({tool.path()})->diskImageInfoForPath(tool.image());
    }
    DiskImageStandIn tool;
};

TEST_F(DiskImageInfo, IsTheDictionaryThatTheToolPrints) {
    const auto dictionary =
        info("echo '<plist><dict><key>Format</key><string>UDZO</string></dict></plist>'; "
             "echo warning >&2");
    ASSERT_TRUE(dictionary);
    EXPECT_EQ(*dictionary, (PropertyList::Dictionary{{"Format", "UDZO"}}));
    EXPECT_EQ(tool.arguments(), "imageinfo\n" + tool.image() + "\n-plist\n");
}

TEST_F(DiskImageInfo, IsNothingWhenTheToolFails) {
    EXPECT_EQ(info("echo '<plist><dict/></plist>'; exit 1"), std::nullopt);
    EXPECT_EQ(info("echo '<plist><dict/></plist>'; kill -TERM $$"), std::nullopt);
    EXPECT_EQ(info("exit 0"), std::nullopt);
    EXPECT_EQ(info("echo '<plist><array/></plist>'"), std::nullopt);
    EXPECT_EQ(info("echo nonsense"), std::nullopt);
    EXPECT_EQ(QMDiskImageService::init({"/nowhere/tool"})->diskImageInfoForPath(tool.image()),
              std::nullopt);
}

TEST_F(DiskImageInfo, IsNothingWhereThereIsNoImageAndAsksNobody) {
    tool.says("echo '<plist><dict/></plist>'");
    const auto service = QMDiskImageService::init({tool.path()});
    EXPECT_EQ(service->diskImageInfoForPath(""), std::nullopt);
    EXPECT_EQ(service->diskImageInfoForPath(tool.image() + ".none"), std::nullopt);
    EXPECT_FALSE(tool.wasRun());
}

TEST_F(DiskImageInfo, IsReadToItsEndHoweverLong) {
    const auto dictionary =
        info("printf '<plist><dict><key>a</key><string>'; head -c 3000000 /dev/zero | tr '\\0' x; "
             "echo '</string></dict></plist>'; head -c 3000000 /dev/zero >&2");
    ASSERT_TRUE(dictionary);
    EXPECT_EQ(dictionary->at("a").string()->size(), 3000000U);
}

} // namespace
