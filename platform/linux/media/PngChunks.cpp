// SPDX-License-Identifier: Apache-2.0
// The order and the form of chunks: PNG Specification, Second Edition (ISO/IEC 15948), section 5;
// "eXIf" and "acTL": its third edition.
#include "platform/linux/media/PngChunks.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"
#include "platform/linux/FourCharCode.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace platform::media {
namespace {

using namespace std::string_view_literals;

constexpr std::uint64_t signatureSize = 8;
constexpr std::uint64_t headSize = 8; // length and type
constexpr std::uint64_t sumSize = 4;
// Only chunks of image data come in numbers, and most of these are passed over at once.
constexpr int mostChunks = 1024;
constexpr std::uint32_t longestChunk = 16U << 20U;

constexpr std::array<std::byte, headSize> endOfStream{
    std::byte{0},   std::byte{0},   std::byte{0},   std::byte{0},
    std::byte{'I'}, std::byte{'D'}, std::byte{'A'}, std::byte{'T'}};

constexpr std::uint32_t headerType = fourCharCode("IHDR");
constexpr std::uint32_t dataType = fourCharCode("IDAT");
constexpr std::uint32_t endType = fourCharCode("IEND");
constexpr std::array plainTypes{headerType,           fourCharCode("PLTE"), fourCharCode("tRNS"),
                                fourCharCode("iCCP"), fourCharCode("sRGB"), fourCharCode("pHYs"),
                                fourCharCode("eXIf"), fourCharCode("acTL")};
constexpr std::array textTypes{fourCharCode("tEXt"), fourCharCode("zTXt"), fourCharCode("iTXt")};
// The keywords of texts that are looked at, each with the NUL behind it.
constexpr std::array keywords{"Software\0"sv,
                              "Copyright\0"sv,
                              "Raw profile type exif\0"sv,
                              "Raw profile type APP1\0"sv,
                              "Raw profile type iptc\0"sv,
                              "XML:com.adobe.xmp\0"sv};
constexpr std::size_t longestKeyword = 32;

// A number for a keyword that is looked at, so that it can be told from types; 0 for others.
std::uint32_t keywordOf(const OpenedFile& file, std::uint64_t offset) {
    std::array<std::byte, longestKeyword> buffer{};
    const DataView start = DataView(buffer).first(file.readSome(offset, buffer));
    const auto* const found = std::ranges::find_if(
        keywords, [start](std::string_view keyword) { return hasTextAt(start, 0, keyword); });
    return found == keywords.end() ? 0 : static_cast<std::uint32_t>(found - keywords.begin()) + 1;
}

} // namespace

PngChunks::PngChunks(const OpenedFile& file)
    : m_file(file)
    , m_stretches{{0, signatureSize}} {
    find();
}

bool PngChunks::isWanted(std::uint32_t type, std::uint64_t offset, std::uint32_t length) {
    if (length > longestChunk) {
        return false;
    }
    const bool isText = std::ranges::find(textTypes, type) != textTypes.end();
    const std::uint32_t kind = isText ? keywordOf(m_file, offset) : type;
    const bool isKnown =
        isText ? kind != 0 : std::ranges::find(plainTypes, type) != plainTypes.end();
    if (!isKnown || std::ranges::find(m_seen, kind) != m_seen.end()) {
        return false;
    }
    m_seen.push_back(kind);
    return true;
}

// Programs write image data in chunks of one size, so that what looks like one of them where one
// must be is taken for one, and those between are not looked at.
std::uint64_t PngChunks::lastOfRun(DataView head, std::uint64_t offset, std::uint64_t whole) const {
    const auto goesOn = [&](std::uint64_t steps) {
        std::array<std::byte, headSize> found{};
        return steps <= (m_file.size() - offset) / whole &&
               m_file.read(offset + steps * whole, found) && std::ranges::equal(found, head);
    };
    std::uint64_t steps = 1;
    while (goesOn(steps)) {
        offset += steps * whole;
        steps *= 2;
    }
    for (steps /= 2; steps > 0; steps /= 2) {
        offset += goesOn(steps) ? steps * whole : 0;
    }
    return offset;
}

void PngChunks::find() {
    std::uint64_t offset = signatureSize;
    for (int i = 0; i < mostChunks; ++i) {
        std::array<std::byte, headSize> head{};
        if (!m_file.read(offset, head)) {
            return;
        }
        const auto length = bigEndian<std::uint32_t>(head, 0);
        const auto type = bigEndian<std::uint32_t>(head, 4);
        const std::uint64_t whole = headSize + std::uint64_t{length} + sumSize;
        const bool isFirst = i == 0;
        if (type == endType || isFirst != (type == headerType) || whole > m_file.size() - offset) {
            return;
        }
        if (isWanted(type, offset + headSize, length)) {
            m_stretches.push_back({offset, whole});
        }
        offset = type == dataType ? lastOfRun(head, offset, whole) + whole : offset + whole;
    }
}

std::size_t PngChunks::readPiece(std::span<std::byte> buffer) {
    if (m_stretch == m_stretches.size()) {
        const auto rest = DataView(endOfStream).subspan(m_endDone);
        const std::size_t count = std::min(buffer.size(), rest.size());
        std::ranges::copy(rest.first(count), buffer.begin());
        m_endDone += count;
        return count;
    }
    const Stretch& stretch = m_stretches[m_stretch];
    const auto count =
        static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), stretch.length - m_done));
    if (!m_file.read(stretch.offset + m_done, buffer.first(count))) {
        return 0;
    }
    m_done += count;
    if (m_done == stretch.length) {
        ++m_stretch;
        m_done = 0;
    }
    return count;
}

bool PngChunks::read(std::span<std::byte> buffer) {
    while (!buffer.empty()) {
        const std::size_t count = readPiece(buffer);
        if (count == 0) {
            return false;
        }
        buffer = buffer.subspan(count);
    }
    return true;
}

} // namespace platform::media
