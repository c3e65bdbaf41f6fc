// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/UdifSource.h"

#include "tests/unit/support/DiskOfImage.h"
#include "tests/unit/support/UdifWriter.h"

#include <array>
#include <atomic>
#include <limits>
#include <thread>

#include <gtest/gtest.h>

namespace {

using udif::Kind;
using udif::Options;

constexpr Kind everyKind[] = {Kind::raw, Kind::adc, Kind::zlib, Kind::bzip2, Kind::lzma};

TEST(UdifSource, HasTheBytesOfTheDisk) {
    const std::string disk = udif::sampleDisk(101);
    for (const Kind kind : everyKind) {
        for (const Kind empty : {Kind::zero, Kind::ignore, kind}) {
            for (const std::uint64_t tables : {1U, 3U}) {
                const DiskOfImage image(udif::imageOf(disk, {kind, empty, 8, tables}));
                EXPECT_EQ(image.bytes(), disk);
            }
        }
    }
}

TEST(UdifSource, HasTheBytesOfOldImages) {
    const std::string disk = udif::sampleDisk(50);
    for (const bool trailerFirst : {false, true}) {
        udif::Parts parts = udif::partsOf(disk, {Kind::adc, Kind::zero, 8, 2});
        parts.oldStyle = true;
        parts.trailerFirst = trailerFirst;
        EXPECT_EQ(DiskOfImage(udif::imageOf(parts)).bytes(), disk);
    }
}

TEST(UdifSource, MayBeEmpty) {
    const DiskOfImage image(udif::imageOf(""));
    EXPECT_EQ(image.disk->size(), 0U);
    EXPECT_EQ(image.bytesAt(0, 0), "");
    EXPECT_EQ(image.bytesAt(0, 1), "-");
}

TEST(UdifSource, IsReadAtAnyPlace) {
    const std::string disk = udif::sampleDisk(60);
    for (const Kind kind : everyKind) {
        const DiskOfImage image(udif::imageOf(disk, {kind, Kind::zero, 7, 2}));
        std::uint32_t noise = 7;
        for (int i = 0; i < 300; ++i) {
            noise = noise * 1664525 + 1013904223;
            const std::size_t offset = (noise >> 8U) % disk.size();
            const std::size_t length = (noise >> 4U) % (disk.size() - offset + 1);
            ASSERT_EQ(image.bytesAt(offset, length), disk.substr(offset, length))
                << offset << " " << length;
        }
    }
}

TEST(UdifSource, ReadsNothingBeyondTheEnd) {
    const DiskOfImage image(udif::imageOf(udif::sampleDisk(9)));
    EXPECT_EQ(image.disk->size(), 9U * 512);
    EXPECT_EQ(image.bytesAt(9 * 512, 0), "");
    EXPECT_EQ(image.bytesAt(9 * 512, 1), "-");
    EXPECT_EQ(image.bytesAt(9 * 512 - 1, 2), "-");
    EXPECT_EQ(image.bytesAt(std::numeric_limits<std::uint64_t>::max(), 2), "-");
}

TEST(UdifSource, ReadsZerosWhereThereIsNoChunk) {
    std::string disk(512 * 6, 'a');
    udif::Parts parts = udif::partsOf(disk, {Kind::zlib, Kind::zero, 1, 1});
    auto& chunks = parts.tables.front().chunks;
    // The first, the fourth and the last: before, between and behind what is there.
    for (const std::ptrdiff_t index : {5, 3, 0}) {
        chunks.erase(chunks.begin() + index);
        disk.replace(static_cast<std::size_t>(index) * 512, 512, 512, '\0');
    }
    const DiskOfImage image(udif::imageOf(parts));
    EXPECT_EQ(image.bytes(), disk);
    EXPECT_EQ(image.bytesAt(500, 1500), disk.substr(500, 1500));
    EXPECT_EQ(image.bytesAt(100, 200), std::string(200, '\0'));
    EXPECT_EQ(image.bytesAt(2900, 100), std::string(100, '\0'));
}

TEST(UdifSource, ReadsWhatIsNotDamaged) {
    const std::string disk = udif::sampleDisk(8);
    for (const Kind kind : {Kind::adc, Kind::zlib, Kind::bzip2, Kind::lzma}) {
        udif::Parts parts = udif::partsOf(disk, {kind, Kind::zero, 2, 1});
        parts.tables.front().chunks[1].dataLength -= 1;
        const DiskOfImage image(udif::imageOf(parts));
        EXPECT_EQ(image.bytesAt(0, 1024), disk.substr(0, 1024));
        EXPECT_EQ(image.bytesAt(1023, 2), "-");
        EXPECT_EQ(image.bytesAt(2047, 1), "-");
        EXPECT_EQ(image.bytesAt(2048, 2048), disk.substr(2048));
    }
}

TEST(UdifSource, CannotReadLzfse) {
    std::string disk = udif::sampleDisk(4);
    disk.replace(0, 1024, 1024, '\0');
    const DiskOfImage image(udif::imageOf(disk, {Kind::lzfse, Kind::zero, 2, 1}));
    EXPECT_EQ(image.bytesAt(0, 1024), disk.substr(0, 1024));
    EXPECT_EQ(image.bytesAt(1024, 1), "-");
}

TEST(UdifSource, ReadsOnAfterMoreChunksThanItKeeps) {
    const std::string disk = udif::sampleDisk(400);
    const DiskOfImage image(udif::imageOf(disk, {Kind::zlib, Kind::zlib, 4, 1}));
    EXPECT_EQ(image.bytes(), disk);
    EXPECT_EQ(image.bytesAt(5, 100), disk.substr(5, 100));
    EXPECT_EQ(image.bytes(), disk);
}

// Counts how often somebody reads.
class CountingSource final : public platform::hdiutil::ByteSource {
public:
    explicit CountingSource(std::shared_ptr<const ByteSource> source)
        : m_source(std::move(source)) {}
    [[nodiscard]] std::uint64_t size() const override { return m_source->size(); }
    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> buffer) const override {
        ++m_reads;
        return m_source->read(offset, buffer);
    }
    [[nodiscard]] int reads() const { return m_reads; }

private:
    std::shared_ptr<const ByteSource> m_source;
    mutable std::atomic<int> m_reads = 0;
};

TEST(UdifSource, ExpandsAChunkOnceForReadsNearby) {
    const DiskOfImage image(udif::imageOf(udif::sampleDisk(64), {Kind::zlib, Kind::zlib, 4, 1}));
    const auto file = std::make_shared<CountingSource>(image.file);
    const platform::hdiutil::UdifSource disk(file, image.image);
    const auto readAt = [&](std::uint64_t sector) {
        std::array<std::byte, 100> buffer{};
        EXPECT_TRUE(disk.read(sector * 512, buffer));
    };
    for (int i = 0; i < 10; ++i) {
        readAt(0);
        readAt(3);
        readAt(62);
    }
    EXPECT_EQ(file->reads(), 2);
    // Those that were not used for the longest time go first.
    for (const std::uint64_t sector : {8U, 12U, 16U, 20U, 0U, 24U, 28U, 32U}) {
        readAt(sector);
    }
    EXPECT_EQ(file->reads(), 9);
    readAt(0);
    EXPECT_EQ(file->reads(), 9);
    readAt(62);
    EXPECT_EQ(file->reads(), 10);
}

TEST(UdifSource, ReadsChunksThatAreLargerThanWhatItKeeps) {
    std::string disk = udif::sampleDisk(64);
    disk.resize(std::size_t{80} << 20U, 'x');
    const Options options{Kind::zlib, Kind::zero, (std::uint64_t{40} << 20U) / 512, 1};
    const DiskOfImage image(udif::imageOf(disk, options));
    for (const std::size_t offset : {std::size_t{7}, disk.size() - 700, std::size_t{512}}) {
        EXPECT_EQ(image.bytesAt(offset, 600), disk.substr(offset, 600));
    }
}

TEST(UdifSource, IsReadByThreadsAtOnce) {
    const std::string disk = udif::sampleDisk(300);
    const DiskOfImage image(udif::imageOf(disk, {Kind::zlib, Kind::zero, 4, 2}));
    std::atomic<int> wrong = 0;
    {
        std::vector<std::jthread> threads;
        for (std::size_t thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&, thread] {
                for (std::size_t i = 0; i < 500; ++i) {
                    const std::size_t offset = (i * 4099 + thread * 31) % (disk.size() - 3000);
                    wrong += image.bytesAt(offset, 3000) == disk.substr(offset, 3000) ? 0 : 1;
                }
            });
        }
    }
    EXPECT_EQ(wrong, 0);
}

} // namespace
