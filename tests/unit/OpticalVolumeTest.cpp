// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/OpticalVolume.h"

#include "tests/unit/support/MemorySource.h"
#include "tests/unit/support/ShellCommand.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using platform::hdiutil::FileSource;
using platform::hdiutil::OpticalFeatures;
using platform::hdiutil::readOpticalFeatures;
using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr std::size_t sector = 2048;

// The features as words, and the label.
std::string described(const std::optional<OpticalFeatures>& features) {
    if (!features) {
        return "nothing";
    }
    std::string text;
    const auto add = [&text](bool has, const char* word) { text += has ? word : ""; };
    add(features->isIso9660, "iso ");
    add(features->hasJoliet, "joliet ");
    add(features->hasRockRidge, "rock ");
    add(features->isUdf, "udf ");
    add(features->hasElTorito, "torito ");
    return text + features->volumeLabel;
}

// The same by isoinfo, which does not know UDF.
std::string describedByIsoinfo(const std::string& image) {
    const std::string said = outputOfShell("isoinfo -d -i '" + image + "'");
    const auto says = [&said](const char* words) { return said.find(words) != said.npos; };
    const std::string_view field = "\nVolume id: ";
    const std::size_t label = said.find(field) + field.size();
    return std::string("iso ") + (says("\nJoliet with UCS level") ? "joliet " : "") +
           (says("\nRock Ridge signatures") ? "rock " : "") +
           (says("\nEl Torito VD version") ? "torito " : "") +
           said.substr(label, said.find('\n', label) - label);
}

std::string describedByUs(const std::string& image) {
    const auto source = FileSource::open(image);
    return source ? described(readOpticalFeatures(*source)) : "unreadable";
}

// The disc that a tool makes of a folder with one file.
std::string discMadeBy(const std::string& tool, const TemporaryFolder& folder) {
    std::ofstream(folder.folder("d") + "/boot.img") << std::string(sector, 'x');
    std::string image = folder.path("image.iso");
    outputOfShell(tool + " -o '" + image + "' '" + folder.path("d") + "'");
    return image;
}

std::string madeBy(const std::string& tool) {
    const TemporaryFolder folder;
    return describedByUs(discMadeBy(tool, folder));
}

TEST(OpticalVolume, TellsWhatGenisoimageWrites) {
    EXPECT_EQ(madeBy("genisoimage -quiet -V 'PLAIN DISC'"), "iso PLAIN DISC");
    EXPECT_EQ(madeBy("genisoimage -quiet -V X -R"), "iso rock X");
    EXPECT_EQ(madeBy("genisoimage -quiet -V X -r -J"), "iso joliet rock X");
    EXPECT_EQ(madeBy("genisoimage -quiet -V X -J -ucs-level 1"), "iso joliet X");
    EXPECT_EQ(madeBy("genisoimage -quiet -V X -udf"), "iso udf X");
    EXPECT_EQ(madeBy("genisoimage -quiet -V X -b boot.img -no-emul-boot"), "iso torito X");
    EXPECT_EQ(madeBy("genisoimage -quiet -V X -hfs"), "iso X");
}

TEST(OpticalVolume, TellsWhatXorrisoWrites) {
    EXPECT_EQ(madeBy("xorriso -as mkisofs -V X -J"), "iso joliet rock X");
    EXPECT_EQ(madeBy("xorriso -as mkisofs -V X --norock"), "iso X");
    EXPECT_EQ(madeBy("xorriso -as mkisofs -V X -b boot.img -no-emul-boot -part_like_isohybrid"),
              "iso rock torito X");
}

TEST(OpticalVolume, AgreesWithIsoinfo) {
    for (const char* const options : {"", "-J", "-R", "-R -J", "-b boot.img -no-emul-boot",
                                      "-R -J -b boot.img -no-emul-boot"}) {
        for (std::string tool : {"genisoimage -V DISC ", "xorriso -as mkisofs --norock -V DISC "}) {
            const TemporaryFolder folder;
            const std::string image = discMadeBy(tool.append(options), folder);
            EXPECT_EQ(describedByUs(image), describedByIsoinfo(image)) << tool;
        }
    }
}

// These are in packages of Debian.
TEST(OpticalVolume, AgreesWithIsoinfoOnDiscsOfOthers) {
    int count = 0;
    for (const std::string image :
         {"/usr/lib/grub-rescue/grub-rescue-cdrom.iso",
          "/usr/lib/grub-rescue/grub-rescue-floppy.img", "/usr/lib/ipxe/ipxe.iso",
          "/usr/lib/memtest86+/memtest86+x64.iso"}) {
        if (std::filesystem::exists(image)) {
            EXPECT_EQ(describedByUs(image), describedByIsoinfo(image)) << image;
            ++count;
        }
    }
    if (count == 0) {
        GTEST_SKIP() << "none of them is here";
    }
}

TEST(OpticalVolume, TakesTheLabelThatSaysMore) {
    EXPECT_EQ(madeBy("genisoimage -quiet -input-charset utf-8 -V 'Gr\u00FCn' -J"),
              "iso joliet Gr\u00FCn");
    EXPECT_EQ(madeBy("genisoimage -quiet -V A_NAME_OF_MORE_THAN_16_LETTERS -J"),
              "iso joliet A_NAME_OF_MORE_THAN_16_LETTERS");
}

TEST(OpticalVolume, TellsUdfOfEveryBlockSize) {
    for (const std::string blockSize : {"512", "2048", "4096"}) {
        const TemporaryFolder folder;
        const std::string image = folder.file("udf");
        std::filesystem::resize_file(image, 16U << 20U);
        std::string line = "mkudffs -b ";
        outputOfShell(line.append(blockSize).append(" '").append(image).append("'"));
        EXPECT_EQ(describedByUs(image), "udf ") << blockSize;
    }
}

void putPrimary(MemorySource& disc, std::size_t at) {
    disc.put(at * sector, "\1CD001\1"sv);
    disc.put(at * sector + 40, "LABEL                           ");
    disc.putLittle(at * sector + 128, sector, 2);
    disc.putLittle(at * sector + 158, 20, 4);
}

// A disc whose root folder begins with a record that has this system use area.
std::string withSystemUse(std::string_view area) {
    MemorySource disc(64 * sector);
    putPrimary(disc, 16);
    disc.putLittle(20 * sector, 34 + area.size(), 1);
    disc.putLittle(20 * sector + 32, 1, 1);
    disc.put(20 * sector + 34, area);
    return described(readOpticalFeatures(disc));
}

TEST(OpticalVolume, NeedsTheMarksOfRockRidge) {
    const std::string sharing = "SP\7\1\xBE\xEF";
    EXPECT_EQ(withSystemUse(sharing + "\0PX\4\1"s), "iso rock LABEL");
    EXPECT_EQ(withSystemUse(sharing + "\0RR\5\1\x81"s), "iso rock LABEL");
    EXPECT_EQ(withSystemUse(std::string(14, 'x') + sharing + "\0PX\4\1"s), "iso rock LABEL");
    EXPECT_EQ(withSystemUse(sharing + "\0ZF\4\1RR\5\1\x81"s), "iso rock LABEL");
    EXPECT_EQ(withSystemUse(sharing + "\0ZF\4\1"s), "iso LABEL");
    EXPECT_EQ(withSystemUse("PX\4\1"), "iso LABEL");
    EXPECT_EQ(withSystemUse(sharing), "iso LABEL");
    EXPECT_EQ(withSystemUse(""), "iso LABEL");
}

TEST(OpticalVolume, SurvivesEntriesWithoutEnd) {
    const std::string sharing = "SP\7\1\xBE\xEF\0"s;
    EXPECT_EQ(withSystemUse(sharing + "XX\0\1PX\4\1"s), "iso LABEL");
    EXPECT_EQ(withSystemUse(sharing + "XX\3\1PX\4\1"), "iso LABEL");
    EXPECT_EQ(withSystemUse(sharing + "XX\xFF\1PX\4\1"), "iso LABEL");
}

TEST(OpticalVolume, SurvivesARootThatIsNotThere) {
    MemorySource disc(64 * sector);
    putPrimary(disc, 16);
    for (const std::uint64_t block : {63U, 64U, 0xFFFFFFFFU}) {
        disc.putLittle(16 * sector + 158, block, 4);
        EXPECT_EQ(described(readOpticalFeatures(disc)), "iso LABEL");
    }
}

TEST(OpticalVolume, ReadsABoundedNumberOfDescriptors) {
    MemorySource disc(200 * sector);
    for (std::size_t i = 16; i < 200; ++i) {
        disc.put(i * sector, "\xFF"
                             "CD001\1");
    }
    EXPECT_EQ(described(readOpticalFeatures(disc)), "nothing");
    putPrimary(disc, 16 + 64);
    EXPECT_EQ(described(readOpticalFeatures(disc)), "nothing");
    putPrimary(disc, 16 + 63);
    EXPECT_EQ(described(readOpticalFeatures(disc)), "iso LABEL");
}

// A descriptor that says with `escape` which characters its names have.
void putSupplementary(MemorySource& disc, std::size_t at, std::string_view escape,
                      std::string_view label) {
    disc.put(at * sector, "\2CD001\1"sv);
    disc.put(at * sector + 88, escape);
    for (std::size_t i = 0; i < 16; ++i) {
        disc.put(at * sector + 40 + 2 * i, "\0"sv);
        disc.put(at * sector + 41 + 2 * i, i < label.size() ? label.substr(i, 1) : " ");
    }
}

TEST(OpticalVolume, TellsJolietByEachOfItsLevels) {
    const auto withEscape = [](std::string_view escape) {
        MemorySource disc(64 * sector);
        putPrimary(disc, 16);
        putSupplementary(disc, 17, escape, "Joliet");
        return described(readOpticalFeatures(disc));
    };
    EXPECT_EQ(withEscape("%/@"), "iso joliet Joliet");
    EXPECT_EQ(withEscape("%/C"), "iso joliet Joliet");
    EXPECT_EQ(withEscape("%/E"), "iso joliet Joliet");
    EXPECT_EQ(withEscape("%/G"), "iso LABEL");
    EXPECT_EQ(withEscape(""), "iso LABEL");
}

TEST(OpticalVolume, BelievesTheFirstOfEachDescriptor) {
    MemorySource disc(64 * sector);
    putPrimary(disc, 16);
    putPrimary(disc, 17);
    disc.put(17 * sector + 40, "OTHER");
    EXPECT_EQ(described(readOpticalFeatures(disc)), "iso LABEL");
    putSupplementary(disc, 18, "%/E", "Joliet");
    putSupplementary(disc, 19, "%/E", "Other");
    EXPECT_EQ(described(readOpticalFeatures(disc)), "iso joliet Joliet");
}

TEST(OpticalVolume, TellsElToritoByItsName) {
    MemorySource disc(64 * sector);
    putPrimary(disc, 16);
    disc.put(17 * sector, "\0CD001\1ANOTHER SYSTEM"sv);
    EXPECT_EQ(described(readOpticalFeatures(disc)), "iso LABEL");
    disc.put(17 * sector, "\0CD001\1EL TORITO SPECIFICATION"sv);
    EXPECT_EQ(described(readOpticalFeatures(disc)), "iso torito LABEL");
}

TEST(OpticalVolume, LooksBehindDescriptorsOfOtherStandards) {
    const auto behind = [](std::string_view first, std::string_view second) {
        MemorySource disc(64 * sector);
        disc.put(16 * sector + 1, first);
        disc.put(17 * sector + 1, second);
        disc.put(19 * sector + 1, "BEA01");
        disc.put(20 * sector + 1, "NSR02");
        return described(readOpticalFeatures(disc));
    };
    EXPECT_EQ(behind("BOOT2", "CDW02"), "udf ");
    EXPECT_EQ(behind("CDW02", "BOOT2"), "udf ");
    EXPECT_EQ(behind("BOOT2", "OTHER"), "nothing");
}

TEST(OpticalVolume, IsNotUdfBehindTheEndOfTheExtendedArea) {
    MemorySource disc(64 * sector);
    disc.put(16 * sector + 1, "BEA01");
    disc.put(17 * sector + 1, "TEA01");
    disc.put(18 * sector + 1, "NSR03");
    EXPECT_EQ(described(readOpticalFeatures(disc)), "nothing");
    disc.put(19 * sector + 1, "BEA01");
    disc.put(20 * sector + 1, "NSR03");
    disc.put(21 * sector + 1, "TEA01");
    disc.put(22 * sector + 1, "NSR03");
    EXPECT_EQ(described(readOpticalFeatures(disc)), "udf ");
}

TEST(OpticalVolume, NeedsTheBeginningOfTheExtendedArea) {
    MemorySource disc(64 * sector);
    disc.put(16 * sector, "\0NSR02\1"sv);
    EXPECT_EQ(described(readOpticalFeatures(disc)), "nothing");
    disc.put(16 * sector, "\0BEA01\1"sv);
    EXPECT_EQ(described(readOpticalFeatures(disc)), "nothing");
    disc.put(17 * sector, "\0NSR03\1"sv);
    EXPECT_EQ(described(readOpticalFeatures(disc)), "udf ");
}

TEST(OpticalVolume, IsNotSeenElsewhere) {
    EXPECT_EQ(described(readOpticalFeatures(MemorySource(0))), "nothing");
    EXPECT_EQ(described(readOpticalFeatures(MemorySource(16 * sector + 7))), "nothing");
    MemorySource disc(64 * sector);
    EXPECT_EQ(described(readOpticalFeatures(disc)), "nothing");
    putPrimary(disc, 16);
    disc.breakAt(16 * sector);
    EXPECT_EQ(described(readOpticalFeatures(disc)), "nothing");
}

TEST(OpticalVolume, LabelsAreAlwaysUtf8) {
    MemorySource disc(64 * sector);
    putPrimary(disc, 16);
    disc.put(16 * sector + 40, "GR\xDCN");
    EXPECT_EQ(described(readOpticalFeatures(disc)), "iso GR\uFFFDNL");
}

} // namespace
