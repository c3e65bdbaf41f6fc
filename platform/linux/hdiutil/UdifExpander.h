// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/ByteSource.h"
#include "platform/linux/hdiutil/ExpansionFront.h"
#include "platform/linux/hdiutil/Udif.h"

#include <optional>
#include <string>

namespace platform::hdiutil {

/// Why a disk was not expanded to its end.
struct ExpansionFailure {
    /// One line for people.
    std::string reason;
    /// The system did not let it, which may be different later; otherwise the image is at fault.
    bool canGoOn = false;
    bool isForRoom = false; ///< the disk, or the user's share of it, is full

    /// The failure that the system gives this number (errno).
    [[nodiscard]] static ExpansionFailure ofSystem(int error);
};

/// Writes the bytes of the disk in `image`, which is what `readUdif` made of `file`, into the
/// regular file that is open for writing as `descriptor`. What the file held is lost, except for
/// what `start` says is written; its size becomes the disk's, and blocks of zeros become holes.
/// The descriptor's position does not count. Chunks are expanded on `threads` threads, at least
/// one and this one among them; each holds one chunk, packed and expanded, in memory, and raw
/// chunks pass through in pieces.
///
/// nullopt when all of it is written, which does not mean that it is on the disk: whoever closes
/// the descriptor has to look at errors once more. Otherwise the reason: the system's words, or
/// which chunk is damaged. Of the rest, the file then holds any part.
[[nodiscard]] std::optional<ExpansionFailure> expandUdif(const ByteSource& file,
                                                         const UdifImage& image, int descriptor,
                                                         unsigned threads,
                                                         const ExpansionStart& start = {});

} // namespace platform::hdiutil
