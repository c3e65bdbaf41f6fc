// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/ByteSource.h"
#include "platform/linux/hdiutil/Udif.h"

#include <optional>
#include <string>

namespace platform::hdiutil {

/// Writes the bytes of the disk in `image`, which is what `readUdif` made of `file`, into the
/// regular file that is open for writing as `descriptor`. What the file held before is lost; its
/// size becomes the disk's, and blocks of zeros become holes. The descriptor's position does not
/// count. Chunks are expanded on `threads` threads, at least one and this one among them; each
/// holds one chunk, packed and expanded, in memory, and raw chunks pass through in pieces.
///
/// nullopt when all of it is written, which does not mean that it is on the disk: whoever closes
/// the descriptor has to look at errors once more. Otherwise one line that says why not: the
/// system's words, or which chunk is damaged. The file then holds any part of the disk.
[[nodiscard]] std::optional<std::string> expandUdif(const ByteSource& file, const UdifImage& image,
                                                    int descriptor, unsigned threads);

} // namespace platform::hdiutil
