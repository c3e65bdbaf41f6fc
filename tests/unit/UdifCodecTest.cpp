// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/UdifCodec.h"

#include "tests/unit/support/MemorySource.h"
#include "tests/unit/support/UdifWriter.h"

#include <cstring>

#include <gtest/gtest.h>
#include <sys/mman.h>

namespace {

using platform::hdiutil::canExpand;
using platform::hdiutil::expandChunk;
using platform::hdiutil::expandChunkOf;
using udif::Kind;

constexpr Kind compressions[] = {Kind::adc, Kind::zlib, Kind::bzip2, Kind::lzma};

// What `input` expands to when that is `length` bytes, or "-".
std::string expanded(Kind kind, std::string_view input, std::size_t length) {
    std::string output(length, '?');
    const auto bytes = std::as_writable_bytes(std::span(output));
    return expandChunk(kind, platform::bytesOf(input), bytes) ? output : "-";
}

std::string adc(std::initializer_list<int> bytes, std::size_t length) {
    std::string input;
    for (const int byte : bytes) {
        input.push_back(static_cast<char>(byte));
    }
    return expanded(Kind::adc, input, length);
}

TEST(UdifCodec, ExpandsEachCompression) {
    const std::string disk = udif::sampleDisk(100);
    for (const Kind kind : compressions) {
        EXPECT_TRUE(canExpand(kind));
        EXPECT_EQ(expanded(kind, udif::packed(kind, disk), disk.size()), disk);
    }
}

TEST(UdifCodec, ExpandsToTheLengthThatIsExpectedOnly) {
    const std::string disk = udif::sampleDisk(100);
    for (const Kind kind : compressions) {
        const std::string packed = udif::packed(kind, disk);
        EXPECT_EQ(expanded(kind, packed, disk.size() - 1), "-");
        EXPECT_EQ(expanded(kind, packed, disk.size() + 1), "-");
        EXPECT_EQ(expanded(kind, packed, 0), "-");
    }
}

TEST(UdifCodec, NeedsAllOfTheInput) {
    const std::string disk = udif::sampleDisk(4);
    for (const Kind kind : compressions) {
        const std::string packed = udif::packed(kind, disk);
        for (std::size_t length = 0; length < packed.size(); ++length) {
            ASSERT_EQ(expanded(kind, packed.substr(0, length), disk.size()), "-") << length;
        }
    }
}

TEST(UdifCodec, NoticesDamage) {
    const std::string disk = udif::sampleDisk(8);
    // ADC carries no checksum.
    for (const Kind kind : {Kind::zlib, Kind::bzip2, Kind::lzma}) {
        std::string packed = udif::packed(kind, disk);
        packed[packed.size() / 2] = static_cast<char>(packed[packed.size() / 2] ^ 1);
        EXPECT_EQ(expanded(kind, packed, disk.size()), "-");
    }
}

TEST(UdifCodec, IgnoresWhatFollowsAStream) {
    const std::string disk = udif::sampleDisk(4);
    for (const Kind kind : {Kind::zlib, Kind::bzip2, Kind::lzma}) {
        EXPECT_EQ(expanded(kind, udif::packed(kind, disk) + "more", disk.size()), disk);
    }
}

// bzip2's library counts in 32 bits.
TEST(UdifCodec, RefusesMoreThanBzip2CanCount) {
    constexpr std::size_t uncountable = std::size_t{1} << 32U;
    const std::string disk = udif::sampleDisk(4);
    const std::string packed = udif::packed(Kind::bzip2, disk);
    const std::size_t size = uncountable + packed.size();
    // Nothing but the pages that are written takes up memory.
    void* const memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE,
                                MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    std::memcpy(memory, packed.data(), packed.size());
    const std::string_view input(static_cast<const char*>(memory), size);
    EXPECT_EQ(expanded(Kind::bzip2, input.substr(0, packed.size()), disk.size()), disk);
    EXPECT_EQ(expanded(Kind::bzip2, input, disk.size()), "-");
    ::munmap(memory, size);
}

TEST(UdifCodec, LeavesOtherKindsAlone) {
    for (const Kind kind : {Kind::zero, Kind::raw, Kind::ignore, Kind::lzfse}) {
        EXPECT_EQ(expanded(kind, "abc", 3), "-");
        EXPECT_EQ(expanded(kind, "", 0), "-");
    }
    EXPECT_FALSE(canExpand(Kind::lzfse));
    EXPECT_TRUE(canExpand(Kind::raw));
}

// An xz stream that asks for a dictionary of 2 to the power of `bits` bytes. Only its header says
// so: to compress with one takes ten times as much memory.
std::string withDictionary(std::string stream, unsigned bits) {
    constexpr std::size_t block = 12;
    const std::size_t headerSize = (static_cast<std::size_t>(stream.at(block)) + 1) * 4;
    // The filter's number, the size of its properties, and then those.
    const std::size_t filter = stream.find("\x21\x01", block);
    stream.at(filter + 2) = static_cast<char>(2 * bits - 24);
    const std::size_t checksum = block + headerSize - 4;
    const std::uint32_t sum = udif::crc(std::string_view(stream).substr(block, checksum - block));
    for (unsigned i = 0; i < 4; ++i) {
        stream.at(checksum + i) = static_cast<char>((sum >> (8 * i)) & 0xFFU);
    }
    return stream;
}

TEST(UdifCodec, BoundsTheMemoryOfLzma) {
    const std::string disk = udif::sampleDisk(2);
    const std::string packed = udif::packed(Kind::lzma, disk);
    EXPECT_EQ(expanded(Kind::lzma, withDictionary(packed, 20), disk.size()), disk);
    EXPECT_EQ(expanded(Kind::lzma, withDictionary(packed, 26), disk.size()), disk);
    EXPECT_EQ(expanded(Kind::lzma, withDictionary(packed, 27), disk.size()), "-");
    EXPECT_EQ(expanded(Kind::lzma, withDictionary(packed, 30), disk.size()), "-");
}

TEST(UdifCodec, ExpandsRunsAndMatchesOfAdc) {
    EXPECT_EQ(adc({0x82, 'a', 'b', 'c'}, 3), "abc");
    // Short: 3 to 18 bytes, from 1 to 1,024 back.
    EXPECT_EQ(adc({0x82, 'a', 'b', 'c', 0x00, 0x02}, 6), "abcabc");
    EXPECT_EQ(adc({0x80, 'a', 0x3C, 0x00}, 19), std::string(19, 'a'));
    // Long: 4 to 67 bytes, from 1 to 65,536 back.
    EXPECT_EQ(adc({0x81, 'a', 'b', 0x40, 0x00, 0x01}, 6), "ababab");
    EXPECT_EQ(adc({0x80, 'a', 0x7F, 0x00, 0x00}, 68), std::string(68, 'a'));
    EXPECT_EQ(adc({}, 0), "");
}

TEST(UdifCodec, ReachesAllOfTheDistancesOfAdc) {
    const std::string start = "start" + std::string(65531, '.');
    const std::string packed = udif::packed(Kind::adc, start);
    EXPECT_EQ(expanded(Kind::adc, packed + std::string("\x41\xFF\xFF", 3), 65541), start + "start");
    const std::string near = start.substr(0, 1024);
    EXPECT_EQ(expanded(Kind::adc, udif::packed(Kind::adc, near) + "\x0B\xFF", 1029),
              near + "start");
}

TEST(UdifCodec, RefusesDamagedAdc) {
    EXPECT_EQ(adc({0x82, 'a', 'b'}, 3), "-") << "a run without its bytes";
    EXPECT_EQ(adc({0x82, 'a', 'b', 'c'}, 2), "-") << "a run that is too long";
    EXPECT_EQ(adc({0x80, 'a', 0x00, 0x01}, 4), "-") << "a match before the start";
    EXPECT_EQ(adc({0x80, 'a', 0x40, 0x00, 0x01}, 5), "-") << "a long match before the start";
    EXPECT_EQ(adc({0x80, 'a', 0x00, 0x00}, 3), "-") << "a match that is too long";
    EXPECT_EQ(adc({0x80, 'a', 0x40, 0x00, 0x00}, 4), "-") << "a long match that is too long";
    EXPECT_EQ(adc({0x80, 'a', 0x00}, 4), "-") << "a match without its distance";
    EXPECT_EQ(adc({0x80, 'a', 0x40, 0x00}, 5), "-") << "a long match without its distance";
    EXPECT_EQ(adc({0x80, 'a'}, 2), "-") << "too few bytes";
    EXPECT_EQ(adc({0x00, 0x00}, 3), "-") << "a match at the start";
}

TEST(UdifCodec, ReadsTheDataOfAChunk) {
    const std::string disk = udif::sampleDisk(2);
    const std::string packed = udif::packed(Kind::zlib, disk);
    const MemorySource file("junk" + packed);
    std::vector<std::byte> room;
    std::string output(disk.size(), '?');
    const auto bytes = std::as_writable_bytes(std::span(output));
    EXPECT_TRUE(expandChunkOf(file, {Kind::zlib, 0, 2, 4, packed.size()}, room, bytes));
    EXPECT_EQ(output, disk);
    EXPECT_FALSE(expandChunkOf(file, {Kind::zlib, 0, 2, 5, packed.size()}, room, bytes));
    EXPECT_FALSE(expandChunkOf(file, {Kind::zlib, 0, 2, 3, packed.size()}, room, bytes));
}

} // namespace
