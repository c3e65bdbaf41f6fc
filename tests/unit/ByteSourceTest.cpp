// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/ByteSource.h"

#include "platform/linux/ByteOrder.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <array>
#include <filesystem>
#include <limits>
#include <string_view>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using platform::bigEndian;
using platform::littleEndian;
using platform::hdiutil::ByteSource;
using platform::hdiutil::FileSource;
using platform::hdiutil::PartSource;

constexpr auto farAway = std::numeric_limits<std::uint64_t>::max();

// The bytes as text, or "-" when they cannot be had.
std::string bytesAt(const ByteSource& source, std::uint64_t offset, std::size_t length) {
    std::vector<std::byte> buffer(length);
    if (!source.read(offset, buffer)) {
        return "-";
    }
    return {reinterpret_cast<const char*>(buffer.data()), buffer.size()};
}

TEST(FileSource, ReadsWhatIsInside) {
    const TemporaryFolder folder;
    const auto source = FileSource::open(folder.file("f", "0123456789"));
    ASSERT_TRUE(source);
    EXPECT_EQ(source->size(), 10U);
    EXPECT_EQ(bytesAt(*source, 0, 10), "0123456789");
    EXPECT_EQ(bytesAt(*source, 7, 3), "789");
    EXPECT_EQ(bytesAt(*source, 10, 0), "");
}

TEST(FileSource, ReadsNothingBeyondTheEnd) {
    const TemporaryFolder folder;
    const auto source = FileSource::open(folder.file("f", "0123456789"));
    ASSERT_TRUE(source);
    EXPECT_EQ(bytesAt(*source, 8, 3), "-");
    EXPECT_EQ(bytesAt(*source, 11, 0), "-");
    EXPECT_EQ(bytesAt(*source, farAway, 2), "-");
    std::filesystem::resize_file(folder.path("f"), 5);
    EXPECT_EQ(bytesAt(*source, 4, 3), "-");
}

TEST(FileSource, TellsWhyThereIsNone) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
    std::string reason;
    EXPECT_FALSE(FileSource::open(folder.path("none"), &reason));
    EXPECT_EQ(reason, "No such file or directory");
    EXPECT_FALSE(FileSource::open(folder.path("fifo"), &reason));
    EXPECT_EQ(reason, "Invalid argument");
    EXPECT_FALSE(FileSource::open("/dev/null", &reason));
    EXPECT_FALSE(FileSource::open(folder.path()));
}

TEST(PartSource, IsAStretchOfAnother) {
    const TemporaryFolder folder;
    const std::shared_ptr<const ByteSource> whole =
        FileSource::open(folder.file("f", "0123456789"));
    const PartSource part(whole, 2, 5);
    EXPECT_EQ(part.size(), 5U);
    EXPECT_EQ(bytesAt(part, 0, 5), "23456");
    EXPECT_EQ(bytesAt(part, 4, 2), "-");
    EXPECT_EQ(bytesAt(part, farAway, 1), "-");
}

TEST(PartSource, EndsWithTheOther) {
    const TemporaryFolder folder;
    const std::shared_ptr<const ByteSource> whole =
        FileSource::open(folder.file("f", "0123456789"));
    EXPECT_EQ(PartSource(whole, 8, 5).size(), 2U);
    EXPECT_EQ(PartSource(whole, 8, farAway).size(), 2U);
    EXPECT_EQ(PartSource(whole, 10, 1).size(), 0U);
    EXPECT_EQ(PartSource(whole, farAway, 1).size(), 0U);
}

TEST(ByteOrder, IsReadEitherWay) {
    const std::array<std::byte, 5> bytes{std::byte{0}, std::byte{0x12}, std::byte{0x34},
                                         std::byte{0x56}, std::byte{0xFF}};
    EXPECT_EQ(bigEndian<std::uint32_t>(bytes, 1), 0x123456FFU);
    EXPECT_EQ(littleEndian<std::uint32_t>(bytes, 1), 0xFF563412U);
    EXPECT_EQ(bigEndian<std::uint16_t>(bytes, 0), 0x12U);
    EXPECT_EQ(littleEndian<std::uint8_t>(bytes, 4), 0xFFU);
}

} // namespace
