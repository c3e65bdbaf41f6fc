// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace platform::media {

/// How many pictures of one subject are in a JPEG file with that index: views from several places,
/// or the parts of a panorama (CIPA DC-007, "MP Index IFD"). 1 when its other pictures are smaller
/// copies, maps of depth or brightness, or not in the file, whose size is given, and for what is no
/// index. The bytes are changed on the way. Any thread.
[[nodiscard]] std::uint64_t pictureCount(std::span<std::byte> index, std::uint64_t fileSize);

} // namespace platform::media
