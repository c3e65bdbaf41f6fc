// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Digest.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

struct stat;

namespace platform::hdiutil {

/// What tells a file from others, and its contents from what they were before.
struct FileState {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;    ///< in bytes
    std::int64_t modified = 0; ///< nanoseconds since 1970: the last writing to it
    std::int64_t changed = 0;  ///< the same: the last change of anything, which nobody can set
    bool isRegular = false;    ///< a file, and not a device, whose times say nothing

    friend bool operator==(const FileState&, const FileState&) = default;
};

[[nodiscard]] FileState fileStateOf(const struct stat& status);

/// Stands for all that an image's bytes are read from, as it was at one moment. Two are the same
/// only when nothing was written in between.
struct ImageState {
    std::array<std::byte, Digest::sha256Length> digest{};

    friend bool operator==(const ImageState&, const ImageState&) = default;
};

/// The state of an image that is one file, seen before the first of its bytes was read. nullopt
/// for a device, and for a file written to within the last seconds or in the future: what is
/// written next might leave the same times.
[[nodiscard]] std::optional<ImageState> imageStateOf(const FileState& file);

/// The same for the sparse bundle at `path`: its description and all of its bands. nullopt also
/// when it cannot be looked at, or has more bands than is reasonable to look at.
[[nodiscard]] std::optional<ImageState> bundleStateAt(const std::string& path);

} // namespace platform::hdiutil
