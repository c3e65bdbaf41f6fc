// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/av/AvItems.h"

/// Items of formats in which TagLib finds its way. Files that are damaged have fewer. Any thread.
namespace platform::av {

/// Those of the ID3v2 tag that the file begins with.
[[nodiscard]] Items itemsOfLeadingTag(const OpenedFile& file);

/// Those of a WAVE file, or of an AIFF file, whose numbers have the most significant byte first:
/// ID3v2 tags in chunks of their own, and for AIFF the chunks for name and author.
[[nodiscard]] Items itemsOfChunks(const OpenedFile& file, bool isAiff);

/// Those of the comments at the beginning of an Ogg file.
[[nodiscard]] Items itemsOfOgg(const OpenedFile& file);

} // namespace platform::av
