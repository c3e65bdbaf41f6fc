// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/UdifExpander.h"

#include "tests/unit/support/DiskOfImage.h"
#include "tests/unit/support/TemporaryFolder.h"
#include "tests/unit/support/UdifWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace {

using platform::hdiutil::ByteSource;
using platform::hdiutil::expandUdif;
using udif::Kind;

constexpr Kind everyKind[] = {Kind::raw, Kind::adc, Kind::zlib, Kind::bzip2, Kind::lzma};

// A file without a name, closed at the end.
class Target {
public:
    explicit Target(int descriptor)
        : m_descriptor(descriptor) {}
    Target()
        : Target(::memfd_create("disk", MFD_CLOEXEC | MFD_ALLOW_SEALING)) {}
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;
    Target(Target&&) = delete;
    Target& operator=(Target&&) = delete;
    ~Target() { ::close(m_descriptor); }

    [[nodiscard]] int descriptor() const { return m_descriptor; }
    [[nodiscard]] struct stat status() const {
        struct stat status {};
        EXPECT_EQ(::fstat(m_descriptor, &status), 0);
        return status;
    }
    [[nodiscard]] std::string bytes() const {
        std::string bytes(static_cast<std::size_t>(status().st_size), '?');
        EXPECT_EQ(::pread(m_descriptor, bytes.data(), bytes.size(), 0),
                  static_cast<ssize_t>(bytes.size()));
        return bytes;
    }

private:
    int m_descriptor;
};

// The outcome of an expansion: the disk's bytes, or why there are none.
std::string expanded(const DiskOfImage& image, unsigned threads) {
    const Target target;
    const auto failure = expandUdif(*image.file, image.image, target.descriptor(), threads);
    return failure ? failure->reason : target.bytes();
}

TEST(UdifExpander, WritesTheDisk) {
    const std::string disk = udif::sampleDisk(101);
    for (const Kind kind : everyKind) {
        for (const std::uint64_t tables : {1U, 3U}) {
            const DiskOfImage image(udif::imageOf(disk, {kind, Kind::zero, 8, tables}));
            EXPECT_EQ(expanded(image, 1), disk);
            EXPECT_EQ(expanded(image, 4), disk);
        }
    }
}

TEST(UdifExpander, WritesTheSameWithAnyNumberOfThreads) {
    const std::string disk = udif::sampleDisk(5000);
    const DiskOfImage image(udif::imageOf(disk, {Kind::zlib, Kind::ignore, 16, 3}));
    const std::string serial = expanded(image, 1);
    EXPECT_EQ(serial, disk);
    for (const unsigned threads : {0U, 2U, 3U, 16U, 1000U}) {
        EXPECT_EQ(expanded(image, threads), serial) << threads;
    }
}

TEST(UdifExpander, WritesRawChunksOfAnySize) {
    // More than a piece, and not a multiple of one.
    const std::string disk = udif::sampleDisk(7001);
    EXPECT_EQ(expanded(DiskOfImage(udif::imageOf(disk, {Kind::raw, Kind::zero, 7001, 1})), 2),
              disk);
}

TEST(UdifExpander, WritesAnEmptyDisk) {
    EXPECT_EQ(expanded(DiskOfImage(udif::imageOf("")), 2), "");
}

TEST(UdifExpander, LeavesHolesForZeros) {
    const TemporaryFolder folder;
    const Target target(::open(folder.path("disk").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    std::string disk(std::size_t{8} << 20U, '\0');
    disk.replace(std::size_t{4} << 20U, 3, "abc");
    // The zeros are kept as data, so only the writer can find them; chunks do not start at blocks.
    for (const Kind kind : {Kind::raw, Kind::zlib}) {
        const DiskOfImage image(udif::imageOf(disk, {kind, kind, 1023, 1}));
        EXPECT_FALSE(expandUdif(*image.file, image.image, target.descriptor(), 2));
        EXPECT_EQ(target.bytes(), disk);
        EXPECT_LE(target.status().st_blocks * 512, 1 << 16);
    }
}

TEST(UdifExpander, MakesLargeEmptyDisksOfNothing) {
    udif::Parts parts;
    parts.sectorCount = std::uint64_t{1} << 30U;
    parts.tables.push_back({"",
                            0,
                            parts.sectorCount,
                            0,
                            0,
                            {{udif::typeOf(Kind::ignore), 0, parts.sectorCount, 0, 0}}});
    const DiskOfImage image(udif::imageOf(parts));
    const Target target;
    EXPECT_FALSE(expandUdif(*image.file, image.image, target.descriptor(), 2));
    EXPECT_EQ(target.status().st_size, std::int64_t{1} << 39U);
    EXPECT_EQ(target.status().st_blocks, 0);
}

TEST(UdifExpander, ForgetsWhatTheFileHeld) {
    const TemporaryFolder folder;
    const std::string path = folder.file("disk", std::string(99999, 'x'));
    const Target target(::open(path.c_str(), O_RDWR | O_CLOEXEC));
    const std::string disk = udif::sampleDisk(3) + std::string(61 * 512, '\0');
    const DiskOfImage image(udif::imageOf(disk));
    EXPECT_FALSE(expandUdif(*image.file, image.image, target.descriptor(), 1));
    EXPECT_EQ(target.bytes(), disk);
}

TEST(UdifExpander, SaysWhichChunkIsDamaged) {
    for (const Kind kind : {Kind::adc, Kind::zlib, Kind::bzip2, Kind::lzma}) {
        udif::Parts parts = udif::partsOf(udif::sampleDisk(80), {kind, Kind::zero, 4, 1});
        parts.tables.front().chunks[3].dataLength -= 1;
        const DiskOfImage image(udif::imageOf(parts));
        EXPECT_EQ(expanded(image, 1), "the chunk at sector 12 is damaged");
        EXPECT_EQ(expanded(image, 4), "the chunk at sector 12 is damaged");
    }
}

TEST(UdifExpander, SaysThatItCannotExpandLzfse) {
    const DiskOfImage image(udif::imageOf(udif::sampleDisk(4), {Kind::lzfse}));
    EXPECT_EQ(expanded(image, 1), "lzfse compression is not supported");
}

TEST(UdifExpander, SaysWhyTheSystemDoesNotWrite) {
    const DiskOfImage image(udif::imageOf(udif::sampleDisk(64), {Kind::zlib, Kind::zero, 4, 1}));
    const Target readOnly(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    const auto failure = expandUdif(*image.file, image.image, readOnly.descriptor(), 2).value();
    EXPECT_EQ(failure.reason, "Invalid argument");
    EXPECT_TRUE(failure.canGoOn);
    const Target sealed;
    ASSERT_EQ(::fcntl(sealed.descriptor(), F_ADD_SEALS, F_SEAL_WRITE), 0);
    EXPECT_EQ(expandUdif(*image.file, image.image, sealed.descriptor(), 2).value().reason,
              "Operation not permitted");
}

TEST(UdifExpander, SaysThatAFileHasChangedUnderIt) {
    const std::string bytes = udif::imageOf(udif::sampleDisk(8), {Kind::raw, Kind::zero, 4, 1});
    const DiskOfImage image(bytes);
    const MemorySource shorter(bytes.substr(0, 8 * 256 + 1));
    const Target target;
    const auto failure = expandUdif(shorter, image.image, target.descriptor(), 1).value();
    EXPECT_EQ(failure.reason, "the chunk at sector 4 is damaged");
    EXPECT_FALSE(failure.canGoOn);
}

// The disk so far, as far as that is said to be written.
std::string partOf(const Target& target, std::uint64_t written) {
    return target.bytes().substr(0, written);
}

TEST(UdifExpander, TellsOfNothingThatIsNotWritten) {
    const std::string disk = udif::sampleDisk(3000);
    for (const Kind kind : {Kind::raw, Kind::zlib}) {
        for (const unsigned threads : {1U, 4U}) {
            const DiskOfImage image(udif::imageOf(disk, {kind, Kind::zero, 64, 1}));
            const Target target;
            std::vector<std::uint64_t> told{0};
            const auto onWritten = [&](std::uint64_t written) {
                EXPECT_GT(written, told.back());
                told.push_back(written);
                EXPECT_TRUE(partOf(target, written) == disk.substr(0, written)) << written;
            };
            EXPECT_FALSE(
                expandUdif(*image.file, image.image, target.descriptor(), threads, {0, onWritten}));
            EXPECT_EQ(told.back(), disk.size());
            // Of several threads, one may keep all others waiting.
            EXPECT_GT(told.size(), threads == 1 ? 2U : 1U);
        }
    }
}

TEST(UdifExpander, GoesOnWhereItWasInterrupted) {
    const std::string disk = udif::sampleDisk(5000);
    for (const Kind kind : {Kind::raw, Kind::zlib}) {
        constexpr std::uint64_t chunkSize = std::uint64_t{2500} * 512;
        const DiskOfImage image(udif::imageOf(disk, {kind, Kind::zero, 2500, 1}));
        for (const std::uint64_t written : {512U, 2500U * 512, 2501U * 512, 5000U * 512}) {
            const TemporaryFolder folder;
            // Whatever was written is not looked at, and whatever follows it is not kept.
            const std::string path = folder.file("disk", std::string(disk.size() + 1, 'x'));
            const Target target(::open(path.c_str(), O_RDWR | O_CLOEXEC));
            EXPECT_FALSE(
                expandUdif(*image.file, image.image, target.descriptor(), 2, {written, {}}));
            // Compressed chunks are written as a whole.
            const std::uint64_t kept = kind == Kind::raw ? written : written - written % chunkSize;
            EXPECT_TRUE(target.bytes() == std::string(kept, 'x') + disk.substr(kept)) << written;
        }
    }
}

// An image after half of which nothing more can be written.
class StoppingSource final : public ByteSource {
public:
    StoppingSource(const ByteSource& whole, int target)
        : m_whole(whole)
        , m_target(target) {}
    [[nodiscard]] std::uint64_t size() const override { return m_whole.size(); }
    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> buffer) const override {
        if (offset >= size() / 2) {
            ::fcntl(m_target, F_ADD_SEALS, F_SEAL_WRITE);
        }
        return m_whole.read(offset, buffer);
    }

private:
    const ByteSource& m_whole;
    int m_target;
};

TEST(UdifExpander, StopsWhereTheSystemStopsItAndGoesOnLater) {
    const std::string disk = udif::sampleDisk(5000);
    for (const Kind kind : {Kind::raw, Kind::zlib}) {
        const DiskOfImage image(udif::imageOf(disk, {kind, Kind::zero, 64, 1}));
        const Target first;
        const StoppingSource file(*image.file, first.descriptor());
        std::uint64_t reached = 0;
        const auto failure = expandUdif(file, image.image, first.descriptor(), 4,
                                        {0, [&](std::uint64_t written) { reached = written; }});
        ASSERT_TRUE(failure && failure->canGoOn);
        ASSERT_LT(reached, disk.size());
        const TemporaryFolder folder;
        const std::string path = folder.file("disk", partOf(first, reached));
        const Target second(::open(path.c_str(), O_RDWR | O_CLOEXEC));
        EXPECT_FALSE(expandUdif(*image.file, image.image, second.descriptor(), 4, {reached, {}}));
        EXPECT_TRUE(second.bytes() == disk);
    }
}

} // namespace
