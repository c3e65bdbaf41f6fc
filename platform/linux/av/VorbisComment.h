// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/av/AvItems.h"

namespace platform::av {

/// The items of a block of comments as Ogg and FLAC files have them ("Ogg Vorbis I format
/// specification: comment field and header specification"), without what marks it as such: lengths
/// of 32 bits, least significant byte first, each with its text: that of the maker, then as many
/// as a number says, in the form "TITLE=text". What is cut off or damaged ends the list. (What
/// libraries make of such a block is sorted by names.) Any thread.
[[nodiscard]] Items itemsOfVorbisComment(DataView bytes);

} // namespace platform::av
