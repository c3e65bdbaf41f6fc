// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/Udif.h"

#include <cstddef>
#include <span>
#include <vector>

namespace platform::hdiutil {

/// Whether `expandChunk` knows the kind. Images with chunks of another kind can be described but
/// not expanded.
[[nodiscard]] bool canExpand(UdifChunk::Kind kind);

/// Expands `input`, compressed as `kind` says, into `output`. True only when it expands to exactly
/// as many bytes as `output` has; otherwise `output` is in any state. Bytes that follow the end of
/// a zlib, bzip2 or xz stream are ignored. False for the kinds that are not compressed, and for
/// lzfse, for which there is no library. The bytes may be hostile: memory beyond the output is
/// bounded (80 MiB for lzma, less than 8 MiB otherwise). Any thread.
[[nodiscard]] bool expandChunk(UdifChunk::Kind kind, std::span<const std::byte> input,
                               std::span<std::byte> output);

/// Reads a compressed chunk of `file` and expands it into `output`, which has the chunk's size.
/// `packed` is room for its data, to be used again for the next.
[[nodiscard]] bool expandChunkOf(const ByteSource& file, const UdifChunk& chunk,
                                 std::vector<std::byte>& packed, std::span<std::byte> output);

} // namespace platform::hdiutil
