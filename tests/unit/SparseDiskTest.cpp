// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/Encryption.h"
#include "platform/linux/hdiutil/SparseBundle.h"
#include "platform/linux/hdiutil/SparseImage.h"
#include "tests/unit/support/SparseImageWriter.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <filesystem>
#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::hdiutil::ByteSource;
using platform::hdiutil::FileSource;
using platform::hdiutil::isEncryptedImage;
using platform::hdiutil::SparseBundle;
using platform::hdiutil::SparseImage;

constexpr std::size_t sectorSize = 512;

std::shared_ptr<const ByteSource> fileOf(const TemporaryFolder& folder, const std::string& bytes) {
    return FileSource::open(folder.file("image", bytes));
}

std::shared_ptr<const SparseImage> imageOf(const TemporaryFolder& folder,
                                           const std::string& bytes) {
    auto opened = SparseImage::open(fileOf(folder, bytes));
    const auto* image = std::get_if<std::shared_ptr<const SparseImage>>(&opened);
    return image == nullptr ? nullptr : *image;
}

// Why there is no such image.
std::string reasonFor(const TemporaryFolder& folder, const std::string& bytes) {
    const auto opened = SparseImage::open(fileOf(folder, bytes));
    const auto* reason = std::get_if<std::string>(&opened);
    return reason == nullptr ? "" : *reason;
}

std::string allOf(const ByteSource& source) {
    std::vector<std::byte> bytes(source.size());
    if (!source.read(0, bytes)) {
        return "-";
    }
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

TEST(SparseImage, HoldsItsBandsInTheOrderOfTheirWriting) {
    const TemporaryFolder folder;
    const std::string a(2 * sectorSize, 'a');
    const std::string b(2 * sectorSize, 'b');
    // Four bands, of which the third was written first and the second later.
    const auto image = imageOf(folder, sparseImageHeader(2, 7, {3, 2}) + a + b);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), 7 * sectorSize);
    EXPECT_EQ(image->storedBytes(), 4 * sectorSize);
    EXPECT_EQ(allOf(*image),
              std::string(2 * sectorSize, '\0') + b + a + std::string(sectorSize, '\0'));
    std::vector<std::byte> piece(4);
    ASSERT_TRUE(image->read(2 * sectorSize - 2, piece));
    EXPECT_EQ(piece,
              (std::vector<std::byte>{std::byte{0}, std::byte{0}, std::byte{'b'}, std::byte{'b'}}));
    EXPECT_FALSE(image->read(7 * sectorSize - 2, piece));
}

TEST(SparseImage, TellsWhereItHasBands) {
    const TemporaryFolder folder;
    const std::string band(2 * sectorSize, 'a');
    const auto image = imageOf(folder, sparseImageHeader(2, 9, {4, 2}) + band + band);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->nextData(0), 2 * sectorSize);
    EXPECT_EQ(image->nextData(2 * sectorSize + 1), 2 * sectorSize + 1);
    EXPECT_EQ(image->nextData(4 * sectorSize), 6 * sectorSize);
    EXPECT_EQ(image->nextData(8 * sectorSize), 9 * sectorSize);
    EXPECT_EQ(image->nextData(10 * sectorSize), 9 * sectorSize);
}

TEST(SparseImage, CountsWhatIsMissingAtItsEndAsData) {
    const TemporaryFolder folder;
    const std::string band(2 * sectorSize, 'a');
    const auto image = imageOf(folder, sparseImageHeader(2, 4, {1, 2}) + band + "b");
    ASSERT_TRUE(image);
    EXPECT_EQ(image->nextData(2 * sectorSize), 2 * sectorSize);
    const std::uint64_t missing = image->nextData(2 * sectorSize + 1);
    EXPECT_EQ(missing, 2 * sectorSize + 1);
    std::vector<std::byte> piece(1);
    EXPECT_FALSE(image->read(missing, piece));
}

TEST(SparseImage, GoesOnBehindAFullHeader) {
    constexpr std::uint32_t places = (4096 - 64) / 4;
    const TemporaryFolder folder;
    std::vector<std::uint32_t> first;
    std::string bands;
    for (std::uint32_t i = 1; i <= places; ++i) {
        first.push_back(i);
        bands.append(sectorSize, static_cast<char>('a' + i % 26));
    }
    const std::string last(sectorSize, '!');
    const auto image = imageOf(folder, sparseImageHeader(1, places + 1, first) + bands +
                                           sparseImageHeader(1, places + 1, {places + 1}) + last);
    ASSERT_TRUE(image);
    EXPECT_EQ(allOf(*image), bands + last);
}

TEST(SparseImage, IsRefusedWhenALaterHeaderIsCutOff) {
    constexpr std::uint32_t places = (4096 - 64) / 4;
    const TemporaryFolder folder;
    std::vector<std::uint32_t> first(places);
    std::iota(first.begin(), first.end(), 1U);
    const std::string start =
        sparseImageHeader(1, places + 1, first) + std::string(places * sectorSize, 'a');
    const std::string header = sparseImageHeader(1, places + 1, {});
    EXPECT_TRUE(imageOf(folder, start));
    EXPECT_TRUE(imageOf(folder, start + header));
    EXPECT_EQ(reasonFor(folder, start + header.substr(0, 4095)),
              "a header of the sparse image is cut off");
    EXPECT_EQ(reasonFor(folder, start + "sprs"), "a header of the sparse image is cut off");
}

TEST(SparseImage, IsRefusedWhenItIsDamaged) {
    const TemporaryFolder folder;
    const std::string band(sectorSize, 'a');
    EXPECT_FALSE(imageOf(folder, "sprs"));
    EXPECT_FALSE(imageOf(folder, sparseImageHeader(0, 4, {1}) + band));
    EXPECT_FALSE(imageOf(folder, sparseImageHeader(1, 4, {5}) + band));
    EXPECT_FALSE(imageOf(folder, sparseImageHeader(1, 4, {1, 1}) + band + band));
    EXPECT_FALSE(imageOf(folder, sparseImageHeader(1, 4, {1, 2, 3}) + band));
    std::string other = sparseImageHeader(1, 4, {1});
    other[7] = 9;
    EXPECT_FALSE(imageOf(folder, other + band));
    // The last band is cut off: what is there can be read.
    const auto image = imageOf(folder, sparseImageHeader(1, 2, {1, 2}) + band + "b");
    ASSERT_TRUE(image);
    std::vector<std::byte> piece(sectorSize);
    EXPECT_TRUE(image->read(0, piece));
    EXPECT_FALSE(image->read(sectorSize, piece));
}

TEST(SparseImage, IsToldByItsBeginning) {
    const TemporaryFolder folder;
    EXPECT_TRUE(SparseImage::isSparseImage(*fileOf(folder, sparseImageHeader(1, 1, {}))));
    EXPECT_FALSE(SparseImage::isSparseImage(*fileOf(folder, "spr")));
    EXPECT_FALSE(SparseImage::isSparseImage(*fileOf(folder, std::string(4096, '\0'))));
}

std::string description(const std::string& type, const std::string& bandSize,
                        const std::string& size) {
    return "<plist version=\"1.0\"><dict><key>diskimage-bundle-type</key><string>" + type +
           "</string><key>band-size</key><integer>" + bandSize +
           "</integer><key>size</key><integer>" + size + "</integer></dict></plist>";
}

const std::string bundleType = "com.apple.diskimage.sparsebundle";

class Bundle : public testing::Test {
protected:
    Bundle() { static_cast<void>(folder.folder("bands")); }

    std::shared_ptr<const SparseBundle> open(const std::string& bandSize, const std::string& size) {
        static_cast<void>(folder.file("Info.plist", description(bundleType, bandSize, size)));
        auto opened = SparseBundle::open(folder.path());
        const auto* bundle = std::get_if<std::shared_ptr<const SparseBundle>>(&opened);
        return bundle == nullptr ? nullptr : *bundle;
    }
    TemporaryFolder folder;
};

TEST_F(Bundle, HasAFileForEachBandThatWasWritten) {
    static_cast<void>(folder.file("bands/1", std::string(512, 'b')));
    static_cast<void>(folder.file("bands/a", "zz"));
    const auto bundle = open("512", "5632");
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->size(), 5632U);
    EXPECT_EQ(bundle->storedBytes(), 514U);
    EXPECT_EQ(allOf(*bundle), std::string(512, '\0') + std::string(512, 'b') +
                                  std::string(4096, '\0') + "zz" + std::string(510, '\0'));
    std::vector<std::byte> piece(4);
    EXPECT_FALSE(bundle->read(5629, piece));
}

TEST_F(Bundle, TellsWhereItHasBands) {
    static_cast<void>(folder.file("bands/1", std::string(512, 'b')));
    static_cast<void>(folder.file("bands/2", "short"));
    static_cast<void>(folder.file("bands/a", "zz"));
    // No names of bands, and bands beyond the end.
    for (const char* const name :
         {"bands/03", "bands/B", "bands/ 4", "bands/5.txt", "bands/c", "bands/ffffffffffffffff"}) {
        static_cast<void>(folder.file(name, "no"));
    }
    const auto bundle = open("512", "6000");
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->nextData(0), 512U);
    EXPECT_EQ(bundle->nextData(1023), 1023U);
    EXPECT_EQ(bundle->nextData(1028), 1028U);
    EXPECT_EQ(bundle->nextData(1029), 5120U);
    EXPECT_EQ(bundle->nextData(5122), 6000U);
    EXPECT_EQ(bundle->nextData(7000), 6000U);
    EXPECT_EQ(bundle->storedBytes(), 523U);
}

TEST_F(Bundle, CountsABandThatCannotBeReadAsData) {
    static_cast<void>(folder.folder("bands/1"));
    const auto bundle = open("512", "2048");
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->nextData(0), 512U);
    EXPECT_EQ(bundle->nextData(600), 600U);
}

TEST_F(Bundle, HasNoDataInTheHolesOfItsBands) {
    const std::string path = folder.file("bands/0", "a");
    std::filesystem::resize_file(path, 1U << 20);
    const auto bundle = open("1048576", "1048576");
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->nextData(0), 0U);
    // A file system without holes has zeros there, which are as good.
    const std::uint64_t next = bundle->nextData(1U << 16);
    EXPECT_TRUE(next == 1U << 20 || next == 1U << 16) << next;
}

TEST_F(Bundle, MayHaveBandsOnDisksOfAnySize) {
    static_cast<void>(folder.file("bands/7fffff", "a"));
    const auto bundle = open("1099511627776", "9223372036854775807");
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->nextData(0), 0x7fffffULL << 40U);
    EXPECT_EQ(bundle->nextData((0x7fffffULL << 40U) + 1), bundle->size());
}

TEST_F(Bundle, IsRefusedWhenItsBandsCannotBeListed) {
    std::filesystem::remove(folder.path("bands"));
    EXPECT_TRUE(open("512", "44"));
    static_cast<void>(folder.file("bands", "a file"));
    EXPECT_FALSE(open("512", "44"));
}

TEST_F(Bundle, IsRefusedWhenItIsDamaged) {
    EXPECT_FALSE(open("0", "44"));
    EXPECT_FALSE(open("-512", "44"));
    EXPECT_FALSE(open("512", "0"));
    EXPECT_FALSE(open("9000000000000000000", "44"));
    static_cast<void>(folder.folder("bands/0"));
    const auto bundle = open("512", "44");
    ASSERT_TRUE(bundle);
    std::vector<std::byte> piece(4);
    EXPECT_FALSE(bundle->read(0, piece));
}

TEST_F(Bundle, IsRefusedWhenItsBandsAreSmallerThanASector) {
    EXPECT_FALSE(open("1", "1073741824"));
    EXPECT_FALSE(open("511", "1073741824"));
    EXPECT_TRUE(open("512", "1073741824"));
}

TEST_F(Bundle, IsToldByItsDescription) {
    EXPECT_FALSE(SparseBundle::isSparseBundle(folder.path()));
    static_cast<void>(folder.file("Info.plist", description("other", "512", "44")));
    EXPECT_FALSE(SparseBundle::isSparseBundle(folder.path()));
    static_cast<void>(folder.file("Info.plist", description(bundleType, "512", "44")));
    EXPECT_TRUE(SparseBundle::isSparseBundle(folder.path()));
    EXPECT_FALSE(SparseBundle::isSparseBundle(folder.path("Info.plist")));
}

TEST_F(Bundle, SaysWhenItIsEncrypted) {
    const auto bundle = open("512", "44");
    ASSERT_TRUE(bundle);
    EXPECT_FALSE(bundle->isEncrypted());
    static_cast<void>(folder.file("token", "encrcdsa...."));
    EXPECT_TRUE(bundle->isEncrypted());
}

TEST(EncryptedImage, IsToldByHeaderOrTrailer) {
    const TemporaryFolder folder;
    EXPECT_TRUE(isEncryptedImage(*fileOf(folder, "encrcdsa" + std::string(100, 'x'))));
    EXPECT_TRUE(isEncryptedImage(*fileOf(folder, std::string(100, 'x') + "cdsaencr")));
    EXPECT_FALSE(isEncryptedImage(*fileOf(folder, "xencrcdsa")));
    EXPECT_FALSE(isEncryptedImage(*fileOf(folder, "encrcds")));
    EXPECT_FALSE(isEncryptedImage(*fileOf(folder, "")));
}

} // namespace
