// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/DiskFile.h"

#include "platform/Format.h"
#include "platform/linux/hdiutil/UdifExpander.h"
#include "platform/linux/hdiutil/WorkFolders.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <sys/random.h>
#include <sys/statvfs.h>

namespace platform::hdiutil {
namespace {

Failure systemFailure(int error) {
    return {std::generic_category().message(error)};
}

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

// Copies a disk, leaving out what is zero.
std::optional<Failure> copyDisk(const ByteSource& disk, int descriptor) {
    constexpr std::size_t pieceSize = std::size_t{1} << 20;
    if (::ftruncate(descriptor, static_cast<off_t>(disk.size())) != 0) {
        return systemFailure(errno);
    }
    std::vector<std::byte> piece(pieceSize);
    for (std::uint64_t offset = 0; offset < disk.size(); offset += pieceSize) {
        const auto length =
            static_cast<std::size_t>(std::min<std::uint64_t>(pieceSize, disk.size() - offset));
        const auto bytes = std::span(piece).first(length);
        if (!disk.read(offset, bytes)) {
            return Failure{"the image is damaged"};
        }
        if (!isZero(bytes) && !writeAt(descriptor, offset, bytes)) {
            return systemFailure(errno);
        }
    }
    return std::nullopt;
}

std::optional<Failure> writeDisk(const DiskImage& image, int descriptor) {
    if (!image.udif) {
        return copyDisk(*image.disk, descriptor);
    }
    auto reason = expandUdif(*image.file, *image.udif, descriptor,
                             std::max(1U, std::thread::hardware_concurrency()));
    return reason ? std::optional(Failure{*std::move(reason)}) : std::nullopt;
}

} // namespace

bool isWritable(const std::string& path) {
    return ::access(path.c_str(), W_OK) == 0;
}

std::optional<std::string> newDiskFilePath() {
    const auto folder = WorkFolders::expandedDisks();
    if (!folder) {
        return std::nullopt;
    }
    std::uint64_t number = 0;
    if (::getrandom(&number, sizeof number, 0) != sizeof number) {
        return std::nullopt;
    }
    return format("{}/{:x}.disk", *folder, number);
}

std::optional<Failure> expandDisk(const DiskImage& image, const std::string& path) {
    constexpr mode_t privateMode = 0600;
    const int descriptor =
        ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, privateMode);
    if (descriptor < 0) {
        return systemFailure(errno);
    }
    auto failure = writeDisk(image, descriptor);
    ::close(descriptor);
    return failure;
}

} // namespace platform::hdiutil
