// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/media/ImageFile.h"

namespace platform::media {

/// Whether the pictures of a HEIF file have shades alone, by what their decoders are told: all of
/// them, as the transparency of a coloured picture is a picture of shades. False for what cannot be
/// read. libheif tells this only of decoded pictures. Any thread.
[[nodiscard]] bool isMonochromeHeif(const ImageFile& file);

} // namespace platform::media
