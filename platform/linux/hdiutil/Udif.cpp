// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/Udif.h"

#include "platform/Format.h"
#include "platform/linux/ByteOrder.h"
#include "platform/linux/Hexadecimal.h"
#include "platform/linux/PropertyListGuard.h"
#include "platform/linux/hdiutil/UdifBlockTable.h"
#include "platform/linux/hdiutil/UdifResources.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

namespace platform::hdiutil {
namespace {

constexpr std::size_t trailerSize = 512;
constexpr std::uint32_t trailerSignature = 0x6B6F6C79; // "koly"
constexpr std::uint32_t trailerVersion = 4;
// What a property list may be at most; a resource fork, which holds the same, is held to it too.
constexpr std::uint64_t maximumDirectorySize = PropertyListGuard::maximumSize;
constexpr std::uint64_t maximumSectorCount =
    std::numeric_limits<std::int64_t>::max() / udifSectorSize;

using Trailer = std::array<std::byte, trailerSize>;

std::optional<Trailer> trailerOf(const ByteSource& file) {
    if (file.size() < trailerSize) {
        return std::nullopt;
    }
    Trailer trailer{};
    for (const std::uint64_t offset : {file.size() - trailerSize, std::uint64_t{0}}) {
        if (file.read(offset, trailer) &&
            bigEndian<std::uint32_t>(trailer, 0) == trailerSignature) {
            return trailer;
        }
    }
    return std::nullopt;
}

std::string hexadecimal(DataView bytes) {
    std::string text;
    for (const std::byte byte : bytes) {
        appendHexadecimal(text, std::to_integer<unsigned>(byte), 2);
    }
    return text;
}

// One pass over an image. Each step answers whether the next one makes sense.
class Reader {
public:
    Reader(const ByteSource& file, const Trailer& trailer)
        : m_file(file)
        , m_trailer(trailer) {}

    std::variant<UdifImage, UdifError> read() {
        if (readTrailer() && readChecksum() && readTables() && sortChunks()) {
            return std::move(m_image);
        }
        return std::move(m_error);
    }

private:
    bool fail(UdifError::Kind kind, std::string_view reason) {
        m_error = {kind, std::string(reason)};
        return false;
    }
    bool damaged(std::string_view reason) { return fail(UdifError::Kind::damaged, reason); }

    [[nodiscard]] std::uint32_t number(std::size_t offset) const {
        return bigEndian<std::uint32_t>(m_trailer, offset);
    }
    [[nodiscard]] std::uint64_t longNumber(std::size_t offset) const {
        return bigEndian<std::uint64_t>(m_trailer, offset);
    }

    bool isKnownTrailer() {
        if (number(4) != trailerVersion) {
            return fail(UdifError::Kind::unsupported,
                        format("version {} of the format is not known", number(4)));
        }
        if (number(56) > 1 || number(60) > 1) {
            return fail(UdifError::Kind::unsupported, "the image consists of several files");
        }
        return number(8) == trailerSize || damaged("the trailer has a wrong size");
    }

    bool readTrailer() {
        if (!isKnownTrailer()) {
            return false;
        }
        m_image.dataForkOffset = longNumber(24);
        m_image.sectorCount = longNumber(492);
        if (!isInside(m_image.dataForkOffset, longNumber(32), m_file.size())) {
            return damaged("the data fork lies beyond the end of the file");
        }
        return m_image.sectorCount <= maximumSectorCount ||
               damaged("the disk is larger than any can be");
    }

    bool readChecksum() {
        constexpr std::size_t valueOffset = 88;
        constexpr std::size_t valueSize = 128;
        const std::uint64_t bits = number(84);
        if (bits > valueSize * 8) {
            return damaged("the checksum is longer than its field");
        }
        m_image.checksumType = number(80);
        m_image.checksumValue =
            hexadecimal(DataView(m_trailer).subspan(valueOffset, (bits + 7) / 8));
        return true;
    }

    // The bytes that the trailer places with an offset and a length from `field` on.
    std::optional<Data> directoryAt(std::size_t field) {
        const std::uint64_t offset = longNumber(field);
        const std::uint64_t length = longNumber(field + 8);
        if (!isInside(offset, length, m_file.size())) {
            damaged("the list of block tables lies beyond the end of the file");
            return std::nullopt;
        }
        if (length > maximumDirectorySize) {
            fail(UdifError::Kind::unsupported, "the list of block tables is larger than 16 MiB");
            return std::nullopt;
        }
        Data bytes(static_cast<std::size_t>(length));
        if (!m_file.read(offset, bytes)) {
            damaged("the list of block tables cannot be read");
            return std::nullopt;
        }
        return bytes;
    }

    std::optional<std::vector<Data>> tables() {
        constexpr std::size_t resourceFork = 40;
        constexpr std::size_t propertyList = 216;
        const bool hasPropertyList = longNumber(propertyList + 8) != 0;
        const auto bytes = directoryAt(hasPropertyList ? propertyList : resourceFork);
        if (!bytes) {
            return std::nullopt;
        }
        if (bytes->empty()) {
            damaged("there is no list of block tables");
            return std::nullopt;
        }
        auto found =
            hasPropertyList ? blockTablesOfPropertyList(*bytes) : blockTablesOfResourceFork(*bytes);
        if (!found) {
            damaged("the list of block tables is malformed");
        }
        return found;
    }

    bool readTables() {
        const auto found = tables();
        if (!found) {
            return false;
        }
        const UdifLimits limits{m_file.size(), m_image.dataForkOffset, m_image.sectorCount};
        for (const Data& table : *found) {
            if (auto error = readUdifBlockTable(table, limits, m_image.chunks)) {
                m_error = *std::move(error);
                return false;
            }
        }
        return !found->empty() || m_image.sectorCount == 0 || damaged("there are no block tables");
    }

    bool sortChunks() {
        auto& chunks = m_image.chunks;
        std::ranges::sort(chunks, {}, &UdifChunk::firstSector);
        const auto overlap =
            std::ranges::adjacent_find(chunks, [](const UdifChunk& one, const UdifChunk& next) {
                return one.sectorCount > next.firstSector - one.firstSector;
            });
        return overlap == chunks.end() ||
               damaged(format("two chunks hold the sector {}", std::next(overlap)->firstSector));
    }

    const ByteSource& m_file;
    const Trailer& m_trailer;
    UdifImage m_image;
    UdifError m_error;
};

} // namespace

std::variant<UdifImage, UdifError> readUdif(const ByteSource& file) {
    const auto trailer = trailerOf(file);
    return trailer ? Reader(file, *trailer).read() : UdifError();
}

} // namespace platform::hdiutil
