// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/ImageSource.h"
#include "platform/linux/media/PhotoTags.h"

#include <optional>

namespace platform::media {

/// Takes what the fields of a TIFF structure say of a photograph as the camera's sensor took it, as
/// in CR2, NEF, ARW and DNG files. nullopt when they are those of an ordinary TIFF file. `isCR2`
/// says that the file has the mark of that format. Any thread.
[[nodiscard]] std::optional<ImageProperties> rawPhotoOf(const PhotoTags& tags, bool isCR2);

} // namespace platform::media
