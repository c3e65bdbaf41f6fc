// SPDX-License-Identifier: Apache-2.0
// Reads bytes as a UDIF image, checks what its chunks promise, and expands what is small in two
// ways that have to agree.
#include "fuzz/Fuzzing.h"
#include "platform/linux/hdiutil/UdifExpander.h"
#include "platform/linux/hdiutil/UdifSource.h"
#include "tests/unit/support/MemorySource.h"

#include <algorithm>
#include <memory>
#include <optional>

#include <unistd.h>

#include <sys/mman.h>

using namespace platform::hdiutil;
using fuzzing::require;

namespace {

constexpr std::uint64_t maximumOutput = 1U << 20U;

void checkChunks(const UdifImage& image, std::uint64_t fileSize) {
    std::uint64_t free = 0;
    for (const UdifChunk& chunk : image.chunks) {
        require(chunk.sectorCount > 0 && chunk.firstSector >= free);
        require(chunk.firstSector <= image.sectorCount);
        require(chunk.sectorCount <= image.sectorCount - chunk.firstSector);
        require(chunk.dataOffset <= fileSize && chunk.dataLength <= fileSize - chunk.dataOffset);
        free = chunk.firstSector + chunk.sectorCount;
    }
}

// What the expander writes; nullopt when it does not.
std::optional<std::string> expanded(const ByteSource& file, const UdifImage& image) {
    static const int target = ::memfd_create("disk", MFD_CLOEXEC);
    if (expandUdif(file, image, target, 1)) {
        return std::nullopt;
    }
    std::string bytes(image.sectorCount * udifSectorSize, '?');
    require(::lseek(target, 0, SEEK_END) == static_cast<off_t>(bytes.size()));
    require(::pread(target, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()));
    return bytes;
}

// The same by reading, in pieces that fit neither chunks nor sectors.
std::optional<std::string> read(const ByteSource& disk) {
    std::string bytes(disk.size(), '?');
    const auto all = std::as_writable_bytes(std::span(bytes));
    constexpr std::size_t step = 3001;
    for (std::size_t offset = 0; offset < all.size(); offset += step) {
        if (!disk.read(offset, all.subspan(offset, std::min(step, all.size() - offset)))) {
            return std::nullopt;
        }
    }
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto file = std::make_shared<MemorySource>(fuzzing::textOf(data, size));
    auto result = readUdif(*file);
    auto* image = std::get_if<UdifImage>(&result);
    if (image == nullptr) {
        return 0;
    }
    checkChunks(*image, size);
    const bool isSmall = image->sectorCount <= maximumOutput / udifSectorSize;
    const bool isReadable = std::ranges::none_of(
        image->chunks, [](const UdifChunk& chunk) { return chunk.kind == UdifChunk::Kind::lzfse; });
    if (isSmall && isReadable) {
        const auto written = expanded(*file, *image);
        require(written == read(UdifSource(file, std::move(*image))));
    }
    return 0;
}
