// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/VolumeProbe.h"

#include "platform/linux/hdiutil/PartitionMap.h"
#include "platform/linux/hdiutil/VolumeLandmarks.h"
#include "tests/unit/support/MemorySource.h"
#include "tests/unit/support/ShellCommand.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <random>

#include <gtest/gtest.h>

namespace {

using platform::hdiutil::ByteSource;
using platform::hdiutil::FileSource;
using platform::hdiutil::PartSource;
using platform::hdiutil::probeVolume;
using platform::hdiutil::Volume;
using platform::hdiutil::volumeKind;
using namespace std::string_view_literals;

constexpr std::uint64_t megabyte = 1U << 20U;
constexpr std::uint64_t gigabyte = 1U << 30U;

std::string described(const std::optional<Volume>& volume) {
    return volume ? volume->type + '\n' + volume->label + '\n' + volume->uuid + '\n' : "nothing";
}

std::string probed(const std::string& path) {
    const auto source = FileSource::open(path);
    return source ? described(probeVolume(*source)) : "unreadable";
}

// What blkid says of the whole file.
std::string byBlkid(const std::string& path) {
    std::string text;
    for (const std::string tag : {"TYPE", "LABEL", "UUID"}) {
        const std::string value =
            outputOfShell("blkid -p -o value -s " + tag + " '" + path + "' || true");
        text += value.empty() ? "\n" : value;
    }
    return text;
}

struct Maker {
    const char* command; // before the file's name
    const char* type;
    const char* label;
    std::uint64_t size = 64 * megabyte;
};

std::ostream& operator<<(std::ostream& stream, const Maker& maker) {
    return stream << maker.command;
}

class MadeVolume : public testing::TestWithParam<Maker> {};

TEST_P(MadeVolume, IsFoundAsBlkidFindsIt) {
    const TemporaryFolder folder;
    const std::string image = folder.file("image");
    std::filesystem::resize_file(image, GetParam().size);
    outputOfShell(std::string(GetParam().command) + " '" + image + "'");
    const auto source = FileSource::open(image);
    ASSERT_TRUE(source);
    const auto volume = probeVolume(*source);
    ASSERT_TRUE(volume);
    EXPECT_EQ(volume->type, GetParam().type);
    EXPECT_EQ(volume->label, GetParam().label);
    EXPECT_NE(volume->uuid, "");
    EXPECT_EQ(described(volume), byBlkid(image));
}

INSTANTIATE_TEST_SUITE_P(
    VolumeProbe, MadeVolume,
    testing::Values(Maker{"mkfs.ext2 -q -L Two", "ext2", "Two"},
                    Maker{"mkfs.ext3 -q -L Three", "ext3", "Three"},
                    Maker{"mkfs.ext4 -q -L 'My Disk'", "ext4", "My Disk"},
                    Maker{"mkfs.ext4 -q", "ext4", ""},
                    Maker{"mkfs.vfat -F 12 -n TWELVE", "vfat", "TWELVE", 2 * megabyte},
                    Maker{"mkfs.vfat -F 16 -n SIXTEEN", "vfat", "SIXTEEN"},
                    Maker{"mkfs.vfat -F 32 -n THIRTYTWO", "vfat", "THIRTYTWO"},
                    Maker{"mkfs.exfat -L Extended", "exfat", "Extended"},
                    Maker{"mkfs.btrfs -q -L Tree", "btrfs", "Tree", 128 * megabyte},
                    Maker{"mkfs.xfs -q -L Ex", "xfs", "Ex", 300 * megabyte},
                    Maker{"mkudffs -b 2048 -l Universal", "udf", "Universal"},
                    Maker{"mkudffs -b 512 -l Universal", "udf", "Universal"}));

// FAT and exFAT have their names far behind the beginning on these.
INSTANTIATE_TEST_SUITE_P(
    LargeVolumeProbe, MadeVolume,
    testing::Values(Maker{"mkfs.vfat -F 32 -s 8 -n LARGE", "vfat", "LARGE", 8 * gigabyte},
                    Maker{"mkfs.exfat -c 4096 -L Large", "exfat", "Large", 8 * gigabyte},
                    Maker{"mkudffs -b 4096 -l Large", "udf", "Large", 8 * gigabyte},
                    Maker{"mkfs.ext4 -q -E lazy_itable_init=1,lazy_journal_init=1 -L Large", "ext4",
                          "Large", 8 * gigabyte}));

// The file system that a tool makes of a folder.
class MadeOfFolder : public testing::TestWithParam<Maker> {};

TEST_P(MadeOfFolder, IsFoundAsBlkidFindsIt) {
    const TemporaryFolder folder;
    std::ofstream(folder.folder("d") + "/file") << "x";
    const std::string image = folder.path("image");
    const std::string toFile = GetParam().command;
    outputOfShell("cd '" + folder.path() + "'; " + toFile);
    EXPECT_EQ(probed(image), byBlkid(image));
    const auto source = FileSource::open(image);
    ASSERT_TRUE(source);
    EXPECT_EQ(probeVolume(*source).value_or(Volume()).type, GetParam().type);
    EXPECT_EQ(probeVolume(*source).value_or(Volume()).label, GetParam().label);
}

INSTANTIATE_TEST_SUITE_P(
    VolumeProbe, MadeOfFolder,
    testing::Values(Maker{"mksquashfs d image -quiet -no-progress", "squashfs", ""},
                    Maker{"genisoimage -quiet -V 'My Disc' -J -R -o image d", "iso9660", "My Disc"},
                    Maker{"xorriso -as mkisofs -V MYDISC -o image d", "iso9660", "MYDISC"}));

TEST(VolumeProbe, FindsHfsPlusInAPartition) {
    const TemporaryFolder folder;
    std::ofstream(folder.folder("d") + "/file") << "x";
    outputOfShell("cd '" + folder.path() + "'; xorriso -as mkisofs -hfsplus -V MACDISC -o image d");
    const std::shared_ptr<const ByteSource> disk = FileSource::open(folder.path("image"));
    ASSERT_TRUE(disk);
    for (const auto& partition : platform::hdiutil::readPartitionMap(*disk).partitions) {
        if (partition.hint == "Apple_HFS") {
            const PartSource part(disk, partition.firstByte, partition.byteLength);
            const Volume volume = probeVolume(part).value_or(Volume());
            EXPECT_EQ(volume.type, "hfsplus");
            EXPECT_EQ(volume.label, "MACDISC");
            return;
        }
    }
    FAIL() << "no such partition";
}

// The volume's name stands in the first leaf of the catalog, here in the catalog's second extent.
TEST(VolumeProbe, FindsTheNameOfHfsPlusFarBehind) {
    MemorySource disk(64 * megabyte);
    constexpr std::size_t block = 4096;
    disk.put(1024, "H+\0\4"sv);
    disk.putBig(1024 + 40, block, 4);
    disk.putBig(1024 + 44, disk.size() / block, 4);
    const std::size_t extents = 1024 + 272 + 16;
    disk.putBig(extents, 4000, 4);
    disk.putBig(extents + 4, 1, 4);
    disk.putBig(extents + 8, 9000, 4);
    disk.putBig(extents + 12, 3, 4);
    const std::size_t header = 4000 * block;
    disk.putBig(header + 8, 1, 1);      // the kind of a header node
    disk.putBig(header + 14 + 6, 1, 4); // records, and where they begin
    disk.putBig(header + 14 + 10, 2, 4);
    disk.putBig(header + 14 + 18, block, 2);
    const std::size_t leaf = 9001 * block;
    disk.putBig(leaf + 8, 0xFF, 1); // that of a leaf
    disk.putBig(leaf + 10, 1, 2);
    disk.putBig(leaf + 14, 6 + 3 * 2, 2);
    disk.putBig(leaf + 16, 1, 4); // the root's parent
    disk.putBig(leaf + 20, 3, 2);
    disk.put(leaf + 22, "\0M\0a\0c"sv);
    EXPECT_EQ(probeVolume(disk).value_or(Volume()).type, "hfsplus");
    EXPECT_EQ(probeVolume(disk).value_or(Volume()).label, "Mac");
}

// Windows puts the table of files 3 GiB behind the beginning where it can.
TEST(VolumeProbe, FindsNtfsWhoseFileTableIsFarBehind) {
    MemorySource disk(64 * megabyte);
    disk.put(0, "\xEB\x52\x90NTFS    \0\2\x08"sv);
    disk.putLittle(40, disk.size() / 512, 8);
    disk.putLittle(48, 8000, 8);
    disk.put(64, "\xF6"); // records of 2^10 bytes
    disk.putLittle(72, 0x6FB9356417D82108, 8);
    const std::size_t table = std::size_t{8000} * 8 * 512;
    disk.put(table, "FILE");
    const std::size_t record = table + 3 * 1024;
    disk.put(record, "FILE");
    disk.putLittle(record + 20, 56, 2); // where the attributes begin
    disk.putLittle(record + 24, 256, 4);
    disk.putLittle(record + 28, 1024, 4);
    const std::size_t name = record + 56;
    disk.putLittle(name, 0x60, 4);
    disk.putLittle(name + 4, 40, 4);
    disk.putLittle(name + 16, 6, 4);
    disk.putLittle(name + 20, 24, 2);
    disk.put(name + 24, "W\0i\0n\0"sv);
    disk.putLittle(name + 40, 0xFFFFFFFF, 4);
    EXPECT_EQ(described(probeVolume(disk)), "ntfs\nWin\n6FB9356417D82108\n");
}

MemorySource apfs() {
    MemorySource disk(4 * megabyte);
    disk.putLittle(24, 1, 2); // the kind of object: a container's superblock
    disk.putLittle(26, 0x8000, 2);
    disk.put(32, "NXSB");
    disk.putLittle(36, 4096, 4);
    disk.put(72, "\x11\x22\x33\x44\x55\x66\x77\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF\x01");
    return disk;
}

TEST(VolumeProbe, FindsContainersOfApfs) {
    MemorySource disk = apfs();
    EXPECT_EQ(described(probeVolume(disk)), "apfs\n\n11223344-5566-7788-99aa-bbccddeeff01\n");
    disk.putLittle(36, 12345, 4);
    EXPECT_EQ(described(probeVolume(disk)), "nothing");
}

TEST(VolumeProbe, FindsNothingInNoise) {
    std::mt19937 random; // NOLINT(cert-msc51-cpp): a failure must come again
    for (const std::size_t size : {0U, 1U, 512U, 1024U, 1025U, 70000U, 5000000U}) {
        MemorySource disk(size);
        EXPECT_EQ(described(probeVolume(disk)), "nothing") << size;
        for (std::size_t i = 0; i < size; ++i) {
            disk.putLittle(i, random(), 1);
        }
        EXPECT_EQ(described(probeVolume(disk)), "nothing") << size;
    }
}

TEST(VolumeProbe, TellsWhatIsNoFileSystem) {
    const TemporaryFolder folder;
    const std::string image = folder.file("image");
    std::filesystem::resize_file(image, megabyte);
    outputOfShell("mkswap -L Swap '" + image + "'");
    const auto source = FileSource::open(image);
    ASSERT_TRUE(source);
    const Volume swap = probeVolume(*source).value_or(Volume());
    EXPECT_EQ(swap.type, "swap");
    EXPECT_FALSE(swap.isFileSystem);
    EXPECT_TRUE(probeVolume(apfs()).value_or(Volume{"", "", "", false}).isFileSystem);
}

TEST(VolumeProbe, FindsVolumesBehindPartsThatCannotBeRead) {
    MemorySource disk = apfs();
    disk.breakAt(megabyte);
    EXPECT_EQ(probeVolume(disk).value_or(Volume()).type, "apfs");
    disk.breakAt(0);
    EXPECT_EQ(described(probeVolume(disk)), "nothing");
}

TEST(VolumeProbe, LabelsAreAlwaysUtf8) {
    const TemporaryFolder folder;
    const std::string image = folder.file("image");
    std::filesystem::resize_file(image, megabyte);
    outputOfShell("mkfs.ext2 -q -L 'ab  ' '" + image + "'");
    EXPECT_EQ(probed(image).substr(0, 8), "ext2\nab\n");
    // The field of the superblock for the name.
    std::fstream(image, std::ios::in | std::ios::out | std::ios::binary).seekp(1024 + 120)
        << "Gr\xFCn";
    EXPECT_EQ(probed(image).substr(0, 12), "ext2\nGr\uFFFDn\n");
}

// Pointers of a boot sector or a volume header to wherever a hostile image likes.
TEST(VolumeLandmarks, AreWithinTheVolumeAndFew) {
    for (const unsigned fill : {0x00U, 0x01U, 0x02U, 0x0CU, 0x7FU, 0x80U, 0xE1U, 0xFEU, 0xFFU}) {
        for (const auto& [offset, text] : {std::pair(3U, "NTFS    "), std::pair(3U, "EXFAT   "),
                                           std::pair(82U, "FAT32   "), std::pair(1024U, "H+")}) {
            MemorySource disk(3 * megabyte);
            for (std::size_t i = 0; i < 4096; ++i) {
                disk.putLittle(i, fill, 1);
            }
            disk.put(offset, text);
            std::uint64_t total = 0;
            for (const auto& [start, length] : platform::hdiutil::volumeLandmarks(disk)) {
                EXPECT_LE(start, disk.size()) << text << fill;
                EXPECT_LE(length, disk.size() - start) << text << fill;
                total += length;
            }
            EXPECT_GE(total, 2 * megabyte);
            EXPECT_LT(total, 4 * megabyte) << text << fill;
            static_cast<void>(probeVolume(disk)); // for the sanitizers
        }
    }
}

// Where the first stretch begins that is neither the beginning nor the end; 0 without one.
std::uint64_t firstDetail(const MemorySource& disk) {
    for (const auto& stretch : platform::hdiutil::volumeLandmarks(disk)) {
        if (stretch.offset != 0 && stretch.offset + stretch.length != disk.size()) {
            return stretch.offset;
        }
    }
    return 0;
}

TEST(VolumeLandmarks, OfNtfsCountInClustersOfEverySize) {
    const auto withCluster = [](unsigned encoded) {
        MemorySource disk(64 * megabyte);
        disk.put(3, "NTFS    \0\2"sv);
        disk.putLittle(13, encoded, 1);
        disk.putLittle(48, 5, 8);
        return firstDetail(disk);
    };
    EXPECT_EQ(withCluster(1), 5U * 512);
    EXPECT_EQ(withCluster(128), 5U * 128 * 512);
    EXPECT_EQ(withCluster(256 - 12), 5U * 4096 * 512);
    EXPECT_EQ(withCluster(256 - 31), 0U);
    EXPECT_EQ(withCluster(256 - 32), 0U);
    EXPECT_EQ(withCluster(129), 0U);
    EXPECT_EQ(withCluster(0), 0U);
}

TEST(VolumeLandmarks, OfExfatCountInClustersOfEverySize) {
    const auto withShifts = [](unsigned sector, unsigned cluster) {
        MemorySource disk(64 * megabyte);
        disk.put(3, "EXFAT   ");
        disk.putLittle(88, 100, 4); // sectors before the first cluster, which is the second
        disk.putLittle(96, 3, 4);
        disk.putLittle(108, sector, 1);
        disk.putLittle(109, cluster, 1);
        return firstDetail(disk);
    };
    EXPECT_EQ(withShifts(9, 3), (100U + 8) * 512);
    EXPECT_EQ(withShifts(12, 5), (100U + 32) * 4096);
    EXPECT_EQ(withShifts(13, 5), 0U);
    EXPECT_EQ(withShifts(0, 25), 100U + (1U << 25U));
    EXPECT_EQ(withShifts(0, 26), 0U);
}

TEST(VolumeLandmarks, OfHfsPlusEndWithTheCatalog) {
    constexpr std::size_t block = 4096;
    constexpr std::size_t extents = 1024 + 272 + 16;
    const auto stretchesWithLeaf = [](std::uint32_t catalog, std::uint32_t leaf) {
        MemorySource disk(64 * megabyte);
        disk.put(1024, "HX"sv);
        disk.putBig(1024 + 40, block, 4);
        for (std::size_t i = 0; i < 8; ++i) {
            disk.putBig(extents + 8 * i, catalog + i, 4);
            disk.putBig(extents + 8 * i + 4, 1, 4);
        }
        disk.putBig(std::size_t{4000} * block + 14 + 10, leaf, 4);
        disk.putBig(std::size_t{4000} * block + 14 + 18, block, 2);
        return platform::hdiutil::volumeLandmarks(disk).size();
    };
    // The beginning, the end, the catalog, and its first leaf.
    EXPECT_EQ(stretchesWithLeaf(4000, 0), 4U);
    EXPECT_EQ(stretchesWithLeaf(4000, 7), 4U);
    EXPECT_EQ(stretchesWithLeaf(4000, 8), 3U);
    EXPECT_EQ(stretchesWithLeaf(4000, 0xFFFFFFFF), 3U);
    EXPECT_EQ(stretchesWithLeaf(16384, 0), 2U);
    MemorySource broken(64 * megabyte);
    broken.put(1024, "H+"sv);
    broken.putBig(1024 + 40, block, 4);
    broken.putBig(extents, 4000, 4);
    broken.putBig(extents + 4, 1, 4);
    EXPECT_EQ(platform::hdiutil::volumeLandmarks(broken).size(), 4U);
    broken.breakAt(4000 * block);
    EXPECT_EQ(platform::hdiutil::volumeLandmarks(broken).size(), 3U);
}

TEST(VolumeKind, IsTheWordOfMacOS) {
    const auto kindOf = [](const char* type) { return volumeKind({type, "", "", true}); };
    EXPECT_EQ(kindOf("iso9660"), "cd9660");
    EXPECT_EQ(kindOf("vfat"), "msdos");
    EXPECT_EQ(kindOf("hfsplus"), "hfs");
    for (const char* same : {"hfs", "apfs", "udf", "exfat", "ntfs", "ext4", "xfs"}) {
        EXPECT_EQ(kindOf(same), same);
    }
}

} // namespace
