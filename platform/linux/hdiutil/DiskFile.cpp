// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/DiskFile.h"

#include "platform/linux/hdiutil/SparseWrite.h"

#include <algorithm>
#include <cerrno>
#include <thread>
#include <vector>

#include <unistd.h>

namespace platform::hdiutil {
namespace {

// Copies the rest of a disk, leaving out what is zero: a disk that grows as it is used may be
// larger by far than what was ever written to it.
std::optional<ExpansionFailure> copyDisk(const ByteSource& disk, int descriptor,
                                         const ExpansionStart& start) {
    constexpr std::size_t pieceSize = std::size_t{1} << 20;
    if (!resizeWithHole(descriptor, start.written, disk.size())) {
        return ExpansionFailure::ofSystem(errno);
    }
    std::vector<std::byte> piece(pieceSize);
    for (std::uint64_t offset = disk.nextData(start.written); offset < disk.size();
         offset = disk.nextData(offset + piece.size())) {
        piece.resize(
            static_cast<std::size_t>(std::min<std::uint64_t>(pieceSize, disk.size() - offset)));
        if (!disk.read(offset, piece)) {
            return ExpansionFailure{"the image is damaged"};
        }
        if (!writeSparsely(descriptor, offset, piece)) {
            return ExpansionFailure::ofSystem(errno);
        }
        start.onWritten(offset + piece.size());
    }
    return std::nullopt;
}

std::optional<ExpansionFailure> writeDisk(const DiskImage& image, PartialDisk& disk) {
    const ExpansionStart start{disk.written(),
                               [&disk](std::uint64_t written) { disk.reached(written); }};
    return image.udif ? expandUdif(*image.file, image.udif->image(), disk.descriptor(),
                                   std::max(1U, std::thread::hardware_concurrency()), start)
                      : copyDisk(*image.disk, disk.descriptor(), start);
}

} // namespace

bool isWritable(const std::string& path) {
    return ::access(path.c_str(), W_OK) == 0;
}

std::optional<ExpansionFailure> expandDisk(const DiskImage& image, PartialDisk& disk) {
    auto failure = writeDisk(image, disk);
    if (failure && failure->canGoOn) {
        disk.pause();
    }
    if (failure) {
        return failure;
    }
    if (!image.isUnchanged()) {
        return ExpansionFailure{"the image was changed meanwhile"};
    }
    // What was taken but could not be kept is not to be built upon.
    return disk.finish()
               ? std::nullopt
               : std::optional(ExpansionFailure{ExpansionFailure::ofSystem(errno).reason});
}

} // namespace platform::hdiutil
