// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/UdifBlockTable.h"

#include "platform/Format.h"
#include "platform/linux/ByteOrder.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>

namespace platform::hdiutil {
namespace {

using Kind = UdifChunk::Kind;

constexpr std::uint32_t tableSignature = 0x6D697368; // "mish"
constexpr std::uint32_t tableVersion = 1;
constexpr std::size_t headerSize = 204;
constexpr std::size_t recordSize = 40;

constexpr std::uint32_t commentType = 0x7FFFFFFE;
constexpr std::uint32_t endType = 0xFFFFFFFF;

struct Type {
    std::uint32_t number;
    Kind kind;
};
constexpr std::array<Type, 8> types{{{0, Kind::zero},
                                     {1, Kind::raw},
                                     {2, Kind::ignore},
                                     {0x80000004, Kind::adc},
                                     {0x80000005, Kind::zlib},
                                     {0x80000006, Kind::bzip2},
                                     {0x80000007, Kind::lzfse},
                                     {0x80000008, Kind::lzma}}};

bool hasData(Kind kind) {
    return kind != Kind::zero && kind != Kind::ignore;
}

UdifError damaged(std::string_view reason) {
    return {UdifError::Kind::damaged, std::string(reason)};
}

UdifError unsupported(std::string_view reason) {
    return {UdifError::Kind::unsupported, std::string(reason)};
}

// Whether the parts, laid one behind the other, end within `whole`.
bool fit(std::initializer_list<std::uint64_t> parts, std::uint64_t whole) {
    return std::ranges::all_of(parts, [&whole](std::uint64_t part) {
        const bool fits = part <= whole;
        whole -= fits ? part : 0;
        return fits;
    });
}

class Reader {
public:
    Reader(DataView table, const UdifLimits& limits, std::vector<UdifChunk>& chunks)
        : m_bytes(table)
        , m_limits(limits)
        , m_chunks(chunks) {}

    std::optional<UdifError> read() {
        if (auto error = readHeader()) {
            return error;
        }
        const DataView records = m_bytes.subspan(headerSize, m_count * recordSize);
        for (std::size_t offset = 0; offset < records.size(); offset += recordSize) {
            if (auto error = readChunk(records.subspan(offset, recordSize))) {
                return error;
            }
        }
        return std::nullopt;
    }

private:
    std::optional<UdifError> readHeader() {
        if (m_bytes.size() < headerSize || number(m_bytes, 0) != tableSignature) {
            return damaged("a block table is malformed");
        }
        if (number(m_bytes, 4) != tableVersion) {
            return unsupported(
                format("version {} of block tables is not known", number(m_bytes, 4)));
        }
        m_firstSector = longNumber(m_bytes, 8);
        m_sectorCount = longNumber(m_bytes, 16);
        m_dataOffset = longNumber(m_bytes, 24);
        m_count = number(m_bytes, 200);
        if (m_count > (m_bytes.size() - headerSize) / recordSize) {
            return damaged("a block table is cut off");
        }
        return std::nullopt;
    }

    std::optional<UdifError> readChunk(DataView record) {
        const std::uint32_t number = Reader::number(record, 0);
        const auto type = std::ranges::find(types, number, &Type::number);
        if (number == commentType || number == endType) {
            return std::nullopt;
        }
        if (type == types.end()) {
            return unsupported(format("chunks of the kind 0x{:x} are not known", number));
        }
        UdifChunk chunk{type->kind, longNumber(record, 8), longNumber(record, 16), 0, 0};
        auto error = place(chunk);
        if (!error && hasData(chunk.kind)) {
            chunk.dataOffset = longNumber(record, 24);
            chunk.dataLength = longNumber(record, 32);
            error = placeData(chunk);
        }
        if (!error && chunk.sectorCount > 0) {
            m_chunks.push_back(chunk);
        }
        return error;
    }

    // Makes the first sector count from the start of the disk.
    [[nodiscard]] std::optional<UdifError> place(UdifChunk& chunk) const {
        if (!fit({chunk.firstSector, chunk.sectorCount}, m_sectorCount)) {
            return damaged("a chunk lies beyond the end of its table");
        }
        if (!fit({m_firstSector, chunk.firstSector, chunk.sectorCount}, m_limits.sectorCount)) {
            return damaged("a chunk lies beyond the end of the disk");
        }
        chunk.firstSector += m_firstSector;
        return std::nullopt;
    }

    // Makes the data's offset count from the start of the file.
    [[nodiscard]] std::optional<UdifError> placeData(UdifChunk& chunk) const {
        if (!fit({m_limits.dataForkOffset, m_dataOffset, chunk.dataOffset, chunk.dataLength},
                 m_limits.fileSize)) {
            return damaged("the data of a chunk lies beyond the end of the file");
        }
        chunk.dataOffset += m_limits.dataForkOffset + m_dataOffset;
        const std::uint64_t size = chunk.sectorCount * udifSectorSize;
        if (chunk.kind == Kind::raw) {
            return chunk.dataLength < size ? std::optional(damaged("a chunk lacks data"))
                                           : std::nullopt;
        }
        if (size > maximumUdifChunkSize) {
            return unsupported("a compressed chunk is larger than 64 MiB");
        }
        // No compression makes data much larger. What claims to would only cost memory.
        constexpr std::uint64_t slack = 4096;
        return chunk.dataLength > 2 * size + slack
                   ? std::optional(damaged("the data of a chunk is larger than what it holds"))
                   : std::nullopt;
    }

    static std::uint32_t number(DataView bytes, std::size_t offset) {
        return bigEndian<std::uint32_t>(bytes, offset);
    }
    static std::uint64_t longNumber(DataView bytes, std::size_t offset) {
        return bigEndian<std::uint64_t>(bytes, offset);
    }

    DataView m_bytes;
    const UdifLimits& m_limits;
    std::vector<UdifChunk>& m_chunks;
    std::uint64_t m_firstSector = 0;
    std::uint64_t m_sectorCount = 0;
    std::uint64_t m_dataOffset = 0;
    std::size_t m_count = 0;
};

} // namespace

std::optional<UdifError> readUdifBlockTable(DataView table, const UdifLimits& limits,
                                            std::vector<UdifChunk>& chunks) {
    return Reader(table, limits, chunks).read();
}

} // namespace platform::hdiutil
