// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/PropertyList.h"
#include "platform/linux/hdiutil/Udif.h"

#include <algorithm>
#include <array>
#include <concepts>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <bzlib.h>
#include <lzma.h>
#include <zlib.h>

/// Makes UDIF images from the bytes of a disk. Other programs read them too. zlib writes what
/// another library reads, so that the two check each other.
namespace udif {

using Kind = platform::hdiutil::UdifChunk::Kind;

inline constexpr std::size_t sectorSize = 512;
inline constexpr std::size_t trailerSize = 512;
inline constexpr std::uint32_t commentType = 0x7FFFFFFE;
inline constexpr std::uint32_t endType = 0xFFFFFFFF;

/// A chunk as tables hold it: sectors count from the table's first, offsets from the table's data.
struct Chunk {
    std::uint32_t type = 0;
    std::uint64_t firstSector = 0;
    std::uint64_t sectorCount = 0;
    std::uint64_t dataOffset = 0;
    std::uint64_t dataLength = 0;
};

struct Table {
    std::string name;
    std::uint64_t firstSector = 0;
    std::uint64_t sectorCount = 0;
    std::uint64_t dataOffset = 0;
    std::uint32_t checksum = 0;
    std::vector<Chunk> chunks;
};

/// What an image is put together from; tests of damage change it before.
struct Parts {
    std::string dataFork;
    std::vector<Table> tables;
    std::uint64_t sectorCount = 0;
    /// The tables in a resource fork instead of a property list.
    bool oldStyle = false;
    /// The trailer before the data instead of at the end.
    bool trailerFirst = false;
};

struct Options {
    Kind kind = Kind::zlib;
    /// For chunks of zeros; `kind` to keep them like the others.
    Kind empty = Kind::zero;
    std::uint64_t sectorsPerChunk = 512;
    /// The sectors are divided evenly, whatever that does to chunks.
    std::uint64_t tables = 1;
};

template <std::unsigned_integral Number>
std::string bigEndian(Number number) {
    std::string bytes;
    for (std::size_t shift = sizeof(Number) * 8; shift > 0; shift -= 8) {
        bytes.push_back(static_cast<char>((std::uint64_t{number} >> (shift - 8)) & 0xFFU));
    }
    return bytes;
}

/// Overwrites the bytes at `offset`.
template <std::unsigned_integral Number>
void put(std::string& bytes, std::size_t offset, Number number) {
    bytes.replace(offset, sizeof(Number), bigEndian(number));
}

inline std::uint32_t typeOf(Kind kind) {
    constexpr std::array<std::uint32_t, 8> types{0,          1,          2,          0x80000004,
                                                 0x80000005, 0x80000006, 0x80000007, 0x80000008};
    return types.at(static_cast<std::size_t>(kind));
}

inline std::uint32_t crc(std::string_view bytes) {
    return static_cast<std::uint32_t>(
        ::crc32_z(0, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

inline std::string packedByAdc(std::string_view bytes) {
    std::string result;
    for (; !bytes.empty(); bytes.remove_prefix(std::min<std::size_t>(bytes.size(), 128))) {
        const std::string_view run = bytes.substr(0, 128);
        result.push_back(static_cast<char>(0x80U | (run.size() - 1)));
        result.append(run);
    }
    return result;
}

inline std::string packedByZlib(std::string_view bytes) {
    uLongf length = ::compressBound(bytes.size());
    std::string result(length, '\0');
    if (::compress2(reinterpret_cast<Bytef*>(result.data()), &length,
                    reinterpret_cast<const Bytef*>(bytes.data()), bytes.size(), 6) != Z_OK) {
        throw std::runtime_error("zlib");
    }
    result.resize(length);
    return result;
}

inline std::string packedByBzip2(std::string_view bytes) {
    std::string input(bytes);
    std::string result(bytes.size() + bytes.size() / 100 + 600, '\0');
    auto length = static_cast<unsigned>(result.size());
    if (::BZ2_bzBuffToBuffCompress(result.data(), &length, input.data(),
                                   static_cast<unsigned>(input.size()), 9, 0, 0) != BZ_OK) {
        throw std::runtime_error("bzip2");
    }
    result.resize(length);
    return result;
}

inline std::string packedByLzma(std::string_view bytes) {
    std::string result(::lzma_stream_buffer_bound(bytes.size()), '\0');
    std::size_t length = 0;
    if (::lzma_easy_buffer_encode(6, LZMA_CHECK_CRC32, nullptr,
                                  reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(),
                                  reinterpret_cast<std::uint8_t*>(result.data()), &length,
                                  result.size()) != LZMA_OK) {
        throw std::runtime_error("lzma");
    }
    result.resize(length);
    return result;
}

/// The data of a chunk of the kind. No library writes lzfse: those bytes stay as they are.
inline std::string packed(Kind kind, std::string_view bytes) {
    switch (kind) {
    case Kind::zero:
    case Kind::ignore: return {};
    case Kind::adc: return packedByAdc(bytes);
    case Kind::zlib: return packedByZlib(bytes);
    case Kind::bzip2: return packedByBzip2(bytes);
    case Kind::lzma: return packedByLzma(bytes);
    case Kind::raw:
    case Kind::lzfse: break;
    }
    return std::string(bytes);
}

/// A table of the disk's sectors from `first` on, whose chunks' data goes behind `dataFork`.
inline Table tableOf(std::string_view disk, std::uint64_t first, std::uint64_t count,
                     const Options& options, std::string& dataFork) {
    const std::string_view all = disk.substr(first * sectorSize, count * sectorSize);
    Table table{"sectors (Test : " + std::to_string(first) + ")", first, count, 0, crc(all), {}};
    for (std::uint64_t sector = 0; sector < count; sector += options.sectorsPerChunk) {
        const auto length = std::min(options.sectorsPerChunk, count - sector);
        const auto bytes = all.substr(sector * sectorSize, length * sectorSize);
        const bool isEmpty = bytes.find_first_not_of('\0') == std::string_view::npos;
        const Kind kind = isEmpty ? options.empty : options.kind;
        const std::string data = packed(kind, bytes);
        table.chunks.push_back({typeOf(kind), sector, length, dataFork.size(), data.size()});
        dataFork += data;
    }
    table.chunks.push_back({endType, count, 0, dataFork.size(), 0});
    return table;
}

/// The parts of an image of the disk; the last sector is filled up with zeros.
inline Parts partsOf(std::string disk, const Options& options = {}) {
    disk.resize((disk.size() + sectorSize - 1) / sectorSize * sectorSize);
    Parts parts;
    parts.sectorCount = disk.size() / sectorSize;
    const std::uint64_t perTable = (parts.sectorCount + options.tables - 1) / options.tables;
    for (std::uint64_t first = 0; first < parts.sectorCount; first += perTable) {
        const auto count = std::min(perTable, parts.sectorCount - first);
        parts.tables.push_back(tableOf(disk, first, count, options, parts.dataFork));
    }
    return parts;
}

/// A checksum's type, size and value.
inline std::string checksumField(std::uint32_t value) {
    return bigEndian(std::uint32_t{2}) + bigEndian(std::uint32_t{32}) + bigEndian(value) +
           std::string(124, '\0');
}

/// A block table as images hold it.
inline std::string bytesOf(const Table& table) {
    std::string bytes = "mish" + bigEndian(std::uint32_t{1}) + bigEndian(table.firstSector) +
                        bigEndian(table.sectorCount) + bigEndian(table.dataOffset) +
                        bigEndian(std::uint32_t{2056}) + bigEndian(std::uint32_t{0}) +
                        std::string(24, '\0') + checksumField(table.checksum) +
                        bigEndian(static_cast<std::uint32_t>(table.chunks.size()));
    for (const Chunk& chunk : table.chunks) {
        bytes += bigEndian(chunk.type) + std::string(4, '\0') + bigEndian(chunk.firstSector) +
                 bigEndian(chunk.sectorCount) + bigEndian(chunk.dataOffset) +
                 bigEndian(chunk.dataLength);
    }
    return bytes;
}

inline std::string propertyListOf(const std::vector<Table>& tables) {
    using platform::PropertyList;
    PropertyList::Array list;
    for (const Table& table : tables) {
        const std::string bytes = bytesOf(table);
        const auto view = platform::bytesOf(bytes);
        list.emplace_back(PropertyList::Dictionary{
            {"Attributes", "0x0050"},
            {"CFName", table.name},
            {"Data", platform::Data(view.begin(), view.end())},
            {"ID", std::to_string(list.size())},
            {"Name", table.name},
        });
    }
    const PropertyList root(PropertyList::Dictionary{
        {"resource-fork", PropertyList::Dictionary{{"blkx", std::move(list)}}}});
    const auto bytes = root.serialized(PropertyList::Format::xml);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// A classic resource fork with the tables as resources of the type "blkx", after one of another.
inline std::string resourceForkOf(const std::vector<Table>& tables) {
    std::string data = bigEndian(std::uint32_t{3}) + "one";
    std::string names;
    std::string references =
        bigEndian(std::uint16_t{0}) + bigEndian(std::uint16_t{0xFFFF}) + std::string(8, '\0');
    std::uint16_t number = 0;
    for (const Table& table : tables) {
        const std::string bytes = bytesOf(table);
        references += bigEndian(number++) + bigEndian(static_cast<std::uint16_t>(names.size())) +
                      bigEndian(static_cast<std::uint32_t>(0x50000000U | data.size())) +
                      std::string(4, '\0');
        names += bigEndian(static_cast<std::uint8_t>(table.name.size())) + table.name;
        data += bigEndian(static_cast<std::uint32_t>(bytes.size())) + bytes;
    }
    const auto last = static_cast<std::uint16_t>(number - 1);
    const std::string types = bigEndian(std::uint16_t{1}) + "plst" + bigEndian(std::uint16_t{0}) +
                              bigEndian(std::uint16_t{18}) + "blkx" + bigEndian(last) +
                              bigEndian(std::uint16_t{30}) + references;
    const std::size_t mapSize = 28 + types.size() + names.size();
    // Room for the system and for applications lies between the header and the data.
    const std::string header = bigEndian(std::uint32_t{256}) +
                               bigEndian(static_cast<std::uint32_t>(256 + data.size())) +
                               bigEndian(static_cast<std::uint32_t>(data.size())) +
                               bigEndian(static_cast<std::uint32_t>(mapSize));
    // The map starts with a copy of the header.
    return header + std::string(240, '\0') + data + header + std::string(8, '\0') +
           bigEndian(std::uint16_t{28}) + bigEndian(static_cast<std::uint16_t>(28 + types.size())) +
           types + names;
}

inline std::string trailerOf(const Parts& parts, std::uint64_t dataOffset,
                             std::uint64_t directoryLength) {
    std::string checksums;
    for (const Table& table : parts.tables) {
        checksums += bigEndian(table.checksum);
    }
    std::string trailer(trailerSize, '\0');
    trailer.replace(0, 4, "koly");
    put(trailer, 4, std::uint32_t{4});
    put(trailer, 8, std::uint32_t{trailerSize});
    put(trailer, 12, std::uint32_t{1});
    put(trailer, 24, dataOffset);
    put(trailer, 32, std::uint64_t{parts.dataFork.size()});
    put(trailer, 56, std::uint32_t{1});
    put(trailer, 60, std::uint32_t{1});
    trailer.replace(80, 136, checksumField(crc(parts.dataFork)));
    const std::size_t directory = parts.oldStyle ? 40 : 216;
    put(trailer, directory, dataOffset + parts.dataFork.size());
    put(trailer, directory + 8, directoryLength);
    trailer.replace(352, 136, checksumField(crc(checksums)));
    put(trailer, 488, std::uint32_t{1});
    put(trailer, 492, parts.sectorCount);
    return trailer;
}

/// The bytes of the image's file.
inline std::string imageOf(const Parts& parts) {
    const std::string directory =
        parts.oldStyle ? resourceForkOf(parts.tables) : propertyListOf(parts.tables);
    const std::string body = parts.dataFork + directory;
    const std::string trailer =
        trailerOf(parts, parts.trailerFirst ? trailerSize : 0, directory.size());
    return parts.trailerFirst ? trailer + body : body + trailer;
}

inline std::string imageOf(std::string disk, const Options& options = {}) {
    return imageOf(partsOf(std::move(disk), options));
}

/// A disk of so many sectors with something of everything: text that compresses, noise that does
/// not, and stretches of zeros.
inline std::string sampleDisk(std::uint64_t sectors) {
    std::string disk;
    std::uint32_t noise = 1;
    for (std::uint64_t sector = 0; sector < sectors; ++sector) {
        const auto mood = sector / 8 % 5;
        for (std::size_t i = 0; i < sectorSize; ++i) {
            noise = noise * 1664525 + 1013904223;
            const auto letter = static_cast<char>('a' + (sector * 7 + i) % 26);
            disk.push_back(mood == 0 ? letter : mood < 3 ? static_cast<char>(noise >> 24U) : '\0');
        }
    }
    return disk;
}

} // namespace udif
