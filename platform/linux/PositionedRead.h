// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

#include <unistd.h>

namespace platform {

/// Reads the bytes from `offset` of a file on, whatever the descriptor's position, and answers how
/// many of them there were: fewer than fit only at the end of the file or where it cannot be read.
[[nodiscard]] inline std::size_t readAt(int descriptor, std::uint64_t offset,
                                        std::span<std::byte> buffer) {
    constexpr auto furthest = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
    std::size_t done = 0;
    while (done < buffer.size() && offset <= furthest - done) {
        const ssize_t count = ::pread(descriptor, buffer.data() + done, buffer.size() - done,
                                      static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        done += static_cast<std::size_t>(count);
    }
    return done;
}

} // namespace platform
