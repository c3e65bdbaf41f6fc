// SPDX-License-Identifier: Apache-2.0
// Reads bytes as a sparse image: the first 256 are the beginning of its header, the others what
// follows that. What is read in one piece, in several and without its holes has to agree.
#include "fuzz/Fuzzing.h"
#include "platform/linux/hdiutil/SparseImage.h"
#include "tests/unit/support/MemorySource.h"

#include <algorithm>
#include <memory>
#include <span>
#include <string>
#include <vector>

using namespace platform::hdiutil;
using fuzzing::require;

namespace {

constexpr std::size_t headerSize = 4096;
constexpr std::uint64_t maximumSize = 1U << 20U;

std::string fileOf(const std::string& input) {
    constexpr std::size_t shownOfHeader = 256;
    std::string file = input.substr(0, shownOfHeader);
    file.resize(headerSize);
    return file.append(input.substr(std::min(shownOfHeader, input.size())));
}

// All of the disk; nothing when a part of it cannot be read.
std::vector<std::byte> readInSteps(const ByteSource& disk, std::size_t step) {
    std::vector<std::byte> bytes(disk.size());
    for (std::size_t offset = 0; offset < bytes.size(); offset += step) {
        const auto piece = std::span(bytes).subspan(offset, std::min(step, bytes.size() - offset));
        if (!disk.read(offset, piece)) {
            return {};
        }
    }
    return bytes;
}

// The same, without reading what is said to be no data.
std::vector<std::byte> readData(const ByteSource& disk) {
    constexpr std::size_t step = 512;
    std::vector<std::byte> bytes(disk.size());
    std::uint64_t offset = disk.nextData(0);
    while (offset < bytes.size()) {
        const auto piece =
            std::span(bytes).subspan(offset, std::min<std::size_t>(step, bytes.size() - offset));
        if (!disk.read(offset, piece)) {
            return {};
        }
        const std::uint64_t next = disk.nextData(offset + piece.size());
        require(next >= offset + piece.size());
        offset = next;
    }
    require(offset == disk.size());
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto file = std::make_shared<MemorySource>(fileOf(fuzzing::textOf(data, size)));
    const auto opened = SparseImage::open(file);
    const auto* image = std::get_if<std::shared_ptr<const SparseImage>>(&opened);
    require(image == nullptr || SparseImage::isSparseImage(*file));
    if (image != nullptr && (*image)->size() <= maximumSize) {
        const auto whole = readInSteps(**image, maximumSize);
        require(whole == readInSteps(**image, 3001));
        require(whole == readData(**image));
    }
    return 0;
}
