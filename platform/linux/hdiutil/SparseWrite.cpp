// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/SparseWrite.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace platform::hdiutil {
namespace {

// Holes are made of whole blocks of the file system, which rarely has others than these.
constexpr std::uint64_t blockSize = 4096;

using Bytes = std::span<const std::byte>;

// How many of the bytes, which belong to `offset` of the file, make up whole blocks of zeros, or,
// with `zero` false, blocks of which none is all zeros.
std::size_t runLength(std::uint64_t offset, Bytes bytes, bool zero) {
    std::size_t length = 0;
    while (length < bytes.size()) {
        const auto toBoundary = static_cast<std::size_t>(blockSize - (offset + length) % blockSize);
        const Bytes block = bytes.subspan(length, std::min(toBoundary, bytes.size() - length));
        if (isZero(block) != zero) {
            break;
        }
        length += block.size();
    }
    return length;
}

} // namespace

bool isZero(Bytes bytes) {
    return bytes.empty() || (bytes.front() == std::byte{0} &&
                             std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0);
}

bool writeAt(int descriptor, std::uint64_t offset, Bytes bytes) {
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

bool writeSparsely(int descriptor, std::uint64_t offset, Bytes bytes) {
    while (!bytes.empty()) {
        const std::size_t zeros = runLength(offset, bytes, true);
        const std::size_t length = runLength(offset + zeros, bytes.subspan(zeros), false);
        if (!writeAt(descriptor, offset + zeros, bytes.subspan(zeros, length))) {
            return false;
        }
        bytes = bytes.subspan(zeros + length);
        offset += zeros + length;
    }
    return true;
}

bool resizeWithHole(int descriptor, std::uint64_t kept, std::uint64_t size) {
    return ::ftruncate(descriptor, static_cast<off_t>(kept)) == 0 &&
           ::ftruncate(descriptor, static_cast<off_t>(size)) == 0;
}

} // namespace platform::hdiutil
