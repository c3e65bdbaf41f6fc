// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/DiskFile.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <thread>
#include <vector>

#include <unistd.h>

namespace platform::hdiutil {
namespace {

bool isZero(std::span<const std::byte> bytes) {
    return std::ranges::all_of(bytes, [](std::byte byte) { return byte == std::byte{0}; });
}

bool writeAt(int descriptor, std::uint64_t offset, std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t count =
            ::pwrite(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count < 0 && errno != EINTR) {
            return false;
        }
        const auto written = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        bytes = bytes.subspan(written);
        offset += written;
    }
    return true;
}

// Copies the rest of a disk, leaving out what is zero.
std::optional<ExpansionFailure> copyDisk(const ByteSource& disk, int descriptor,
                                         const ExpansionStart& start) {
    constexpr std::size_t pieceSize = std::size_t{1} << 20;
    if (::ftruncate(descriptor, static_cast<off_t>(start.written)) != 0 ||
        ::ftruncate(descriptor, static_cast<off_t>(disk.size())) != 0) {
        return ExpansionFailure::ofSystem(errno);
    }
    std::vector<std::byte> piece(pieceSize);
    for (std::uint64_t offset = start.written; offset < disk.size(); offset += piece.size()) {
        piece.resize(
            static_cast<std::size_t>(std::min<std::uint64_t>(pieceSize, disk.size() - offset)));
        if (!disk.read(offset, piece)) {
            return ExpansionFailure{"the image is damaged"};
        }
        if (!isZero(piece) && !writeAt(descriptor, offset, piece)) {
            return ExpansionFailure::ofSystem(errno);
        }
        start.onWritten(offset + piece.size());
    }
    return std::nullopt;
}

std::optional<ExpansionFailure> writeDisk(const DiskImage& image, PartialDisk& disk) {
    const ExpansionStart start{disk.written(),
                               [&disk](std::uint64_t written) { disk.reached(written); }};
    return image.udif ? expandUdif(*image.file, *image.udif, disk.descriptor(),
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
