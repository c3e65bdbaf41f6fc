// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Digest.h"
#include "platform/linux/FileIdentity.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>

namespace platform::hdiutil {

/// Stands for all that an image's bytes are read from, as it was at one moment. Two are the same
/// only when nothing was written in between.
struct ImageState {
    std::array<std::byte, Digest::sha256Length> digest{};

    friend bool operator==(const ImageState&, const ImageState&) = default;
};

/// The state of an image that is one file, seen before the first of its bytes was read. nullopt
/// for none, as of a device, and for a file written to within the last seconds or in the future:
/// what is written next might leave the same times.
[[nodiscard]] std::optional<ImageState> imageStateOf(const std::optional<FileIdentity>& file);

/// The same for the sparse bundle at `path`: its description and all of its bands. nullopt also
/// when it cannot be looked at, or has more bands than is reasonable to look at.
[[nodiscard]] std::optional<ImageState> bundleStateAt(const std::string& path);

} // namespace platform::hdiutil
