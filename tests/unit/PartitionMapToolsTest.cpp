// SPDX-License-Identifier: Apache-2.0
// Partition maps as the usual tools write them, compared with what these tools say of them.
#include "platform/linux/hdiutil/PartitionMap.h"
#include "tests/unit/support/ShellCommand.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <fstream>

#include <gtest/gtest.h>

namespace {

using platform::hdiutil::FileSource;
using platform::hdiutil::Partition;
using platform::hdiutil::PartitionMap;
using platform::hdiutil::readPartitionMap;
using Scheme = PartitionMap::Scheme;

PartitionMap mapOf(const std::string& path) {
    const auto source = FileSource::open(path);
    return source ? readPartitionMap(*source) : PartitionMap();
}

// A line for each partition: its number, first byte, length, name and UUID.
std::string listing(const PartitionMap& map) {
    std::string text;
    for (const Partition& partition : map.partitions) {
        text += std::to_string(partition.number) + ' ' + std::to_string(partition.firstByte) + ' ' +
                std::to_string(partition.byteLength) + ' ' + partition.name + ' ' + partition.uuid +
                '\n';
    }
    return text;
}

std::string hints(const PartitionMap& map) {
    std::string text;
    for (const Partition& partition : map.partitions) {
        text += partition.hint + '\n';
    }
    return text;
}

// The same listing by sfdisk, without the extended partitions that hold others.
std::string listingOfSfdisk(const TemporaryFolder& folder, const std::string& image) {
    const std::string script = folder.file("listing.py", R"(import json, re, sys
for p in json.load(sys.stdin)["partitiontable"]["partitions"]:
    if p["type"] not in ("5", "f", "85"):
        print(re.search("[0-9]+$", p["node"])[0], p["start"] * 512, p["size"] * 512,
              p.get("name", ""), p.get("uuid", ""))
)");
    return outputOfShell("sfdisk -J '" + image + "' | python3 '" + script + "'");
}

std::string emptyDisk(const TemporaryFolder& folder, std::uintmax_t size) {
    std::filesystem::resize_file(folder.file("disk"), size);
    return folder.path("disk");
}

// A disk that sfdisk has divided.
std::string divided(const TemporaryFolder& folder, const std::string& table,
                    std::uintmax_t size = 64U << 20U) {
    const std::string image = emptyDisk(folder, size);
    outputOfShell("LC_ALL=C.UTF-8 sfdisk '" + image + "' <'" + folder.file("table", table) + "'");
    return image;
}

const std::string gptTable =
    "label: gpt\n"
    "size=8MiB, type=uefi, name=\"EFI System\"\n"
    "size=16MiB, type=48465300-0000-11AA-AA11-00306543ECAC, name=\"Gr\u00FCn\"\n"
    "size=8MiB, type=7C3457EF-0000-11AA-AA11-00306543ECAC\n"
    "size=4MiB, type=linux\n"
    "size=4MiB, type=EBD0A0A2-B9E5-4433-87C0-68B6B72699C7\n"
    "type=01234567-89AB-CDEF-0123-456789ABCDEF\n";

TEST(PartitionMapTools, GptIsReadAsSfdiskReadsIt) {
    const TemporaryFolder folder;
    const std::string image = divided(folder, gptTable);
    const PartitionMap map = mapOf(image);
    EXPECT_EQ(map.scheme, Scheme::gpt);
    EXPECT_EQ(map.blockSize, 512U);
    EXPECT_EQ(listing(map), listingOfSfdisk(folder, image));
    EXPECT_EQ(hints(map), "EFI\nApple_HFS\nApple_APFS\nLinux\nMicrosoft Basic Data\n"
                          "01234567-89AB-CDEF-0123-456789ABCDEF\n");
    ASSERT_EQ(map.partitions.size(), 6U);
    EXPECT_EQ(map.partitions[1].name, "Gr\u00FCn");
    EXPECT_EQ(map.partitions[1].number, 2U);
}

TEST(PartitionMapTools, GptOfSgdiskKeepsItsNumbers) {
    const TemporaryFolder folder;
    const std::string image = emptyDisk(folder, 64U << 20U);
    outputOfShell(
        "LC_ALL=C.UTF-8 sgdisk -n 3:0:+8M -t 3:af00 -c '3:Third \U0001F600' -n 7:0:0 -t 7:8200 '" +
        image + "'");
    const PartitionMap map = mapOf(image);
    EXPECT_EQ(listing(map), listingOfSfdisk(folder, image));
    EXPECT_EQ(hints(map), "Apple_HFS\nLinux Swap\n");
    ASSERT_EQ(map.partitions.size(), 2U);
    EXPECT_EQ(map.partitions[0].name, "Third \U0001F600");
    EXPECT_EQ(map.partitions[1].number, 7U);
}

TEST(PartitionMapTools, GptThatWasDamagedIsReadFromItsEnd) {
    const TemporaryFolder folder;
    const std::string image = divided(folder, gptTable);
    const std::string before = listing(mapOf(image));
    outputOfShell("dd if=/dev/zero of='" + image + "' bs=512 seek=1 count=33 conv=notrunc");
    EXPECT_EQ(mapOf(image).scheme, Scheme::gpt);
    EXPECT_EQ(listing(mapOf(image)), before);
    EXPECT_NE(before, "");
}

TEST(PartitionMapTools, GptWithEntriesThatWereDamagedIsReadFromItsEnd) {
    const TemporaryFolder folder;
    const std::string image = divided(folder, gptTable);
    const std::string before = listing(mapOf(image));
    std::fstream(image, std::ios::in | std::ios::out | std::ios::binary).seekp(1024 + 56) << "XX";
    EXPECT_EQ(listing(mapOf(image)), before);
}

TEST(PartitionMapTools, GptThatIsDamagedTwiceIsNone) {
    const TemporaryFolder folder;
    const std::string image = divided(folder, gptTable);
    outputOfShell("dd if=/dev/zero of='" + image + "' bs=512 seek=1 count=1 conv=notrunc");
    std::fstream(image, std::ios::in | std::ios::out | std::ios::binary)
            .seekp(-512 + 40, std::ios::end)
        << "XX";
    EXPECT_EQ(mapOf(image).scheme, Scheme::none);
    EXPECT_EQ(listing(mapOf(image)), "");
}

TEST(PartitionMapTools, GptThatAnMbrReplacedIsLeftBehind) {
    const TemporaryFolder folder;
    const std::string image = divided(folder, gptTable);
    const TemporaryFolder other;
    const std::string table = divided(other, "label: dos\n2048,4096,83\n");
    outputOfShell("dd if='" + table + "' of='" + image + "' bs=512 count=1 conv=notrunc");
    EXPECT_EQ(mapOf(image).scheme, Scheme::mbr);
    EXPECT_EQ(listing(mapOf(image)), "1 1048576 2097152  \n");
}

TEST(PartitionMapTools, MbrIsReadAsSfdiskReadsIt) {
    const TemporaryFolder folder;
    const std::string image =
        divided(folder, "label: dos\n,4MiB,c,*\n,4MiB,7\n,4MiB,af\n,,f\n,4MiB,83\n,4MiB,82\n"
                        ",4MiB,fd\n,,6\n");
    const PartitionMap map = mapOf(image);
    EXPECT_EQ(map.scheme, Scheme::mbr);
    EXPECT_EQ(map.blockSize, 512U);
    EXPECT_EQ(listing(map), listingOfSfdisk(folder, image));
    EXPECT_EQ(hints(map), "DOS_FAT_32\nWindows_NTFS\nApple_HFS\nLinux\nLinux_Swap\nLinux_RAID\n"
                          "DOS_FAT_16\n");
    ASSERT_EQ(map.partitions.size(), 7U);
    EXPECT_EQ(map.partitions[3].number, 5U);
}

TEST(PartitionMapTools, FileSystemsOnTheWholeDiskAreNoMap) {
    for (const std::string maker :
         {"mkfs.vfat --mbr=y", "mkfs.vfat -F 32 --mbr=y", "mkfs.exfat", "mkfs.ext4 -q"}) {
        const TemporaryFolder folder;
        const std::string image = emptyDisk(folder, 64U << 20U);
        outputOfShell(maker + " '" + image + "'");
        EXPECT_EQ(mapOf(image).scheme, Scheme::none) << maker;
        EXPECT_TRUE(mapOf(image).partitions.empty()) << maker;
    }
}

TEST(PartitionMapTools, IsoThatAlsoBootsFromDisksHasAnMbr) {
    const TemporaryFolder folder;
    std::ofstream(folder.folder("d") + "/boot.img") << std::string(2048, 'x');
    const std::string image = folder.path("hybrid.iso");
    outputOfShell("xorriso -as mkisofs -R -b boot.img -no-emul-boot -part_like_isohybrid "
                  "--protective-msdos-label -iso_mbr_part_type 0x17 -o '" +
                  image + "' '" + folder.path("d") + "'");
    const PartitionMap map = mapOf(image);
    EXPECT_EQ(map.scheme, Scheme::mbr);
    EXPECT_EQ(hints(map), "0x17\n");
    EXPECT_EQ(listing(map), listingOfSfdisk(folder, image));
}

// The map of a disc that a tool makes of a folder with one file.
PartitionMap mapOfDiscMadeBy(const std::string& tool) {
    const TemporaryFolder folder;
    std::ofstream(folder.folder("d") + "/a") << "x";
    const std::string image = folder.path("image.iso");
    outputOfShell(tool + " -o '" + image + "' '" + folder.path("d") + "'");
    return mapOf(image);
}

TEST(PartitionMapTools, AppleMapOfGenisoimage) {
    const PartitionMap map = mapOfDiscMadeBy("genisoimage -quiet -hfs -part -V MyDisc");
    EXPECT_EQ(map.scheme, Scheme::apple);
    EXPECT_EQ(map.blockSize, 512U);
    EXPECT_EQ(hints(map), "Apple_partition_map\nApple_HFS\n");
    ASSERT_EQ(map.partitions.size(), 2U);
    EXPECT_EQ(map.partitions[0].name, "Apple");
    EXPECT_EQ(map.partitions[1].name, "MyDisc");
    EXPECT_EQ(map.partitions[1].number, 2U);
    EXPECT_EQ(map.partitions[1].firstByte, 16U * 512U);
}

TEST(PartitionMapTools, AppleMapInBlocksOf2048Bytes) {
    const PartitionMap map = mapOfDiscMadeBy("xorriso -as mkisofs -hfsplus -apm-block-size 2048");
    EXPECT_EQ(map.scheme, Scheme::apple);
    EXPECT_EQ(map.blockSize, 2048U);
    EXPECT_NE(hints(map).find("Apple_HFS\n"), std::string::npos) << hints(map);
}

} // namespace
