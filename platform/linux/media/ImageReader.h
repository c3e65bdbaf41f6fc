// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/ImageSource.h"

#include <optional>

/// Reading what image files say of themselves, for the process that untrusted media are read in.
namespace platform::media {

/// Does what the libraries would otherwise do when they are first used, so that readImage() needs
/// no file but its own, and silences them. Call it once, before other threads exist.
void prepareImageReaders();

/// Reads the image in the regular file that `descriptor` is open for, by its content alone, without
/// decoding pixels. The descriptor stays the caller's; its position does not matter and may change.
/// The file is read and perhaps mapped, nothing else is opened or written. nullopt when it is no
/// image that is known here, or too damaged to tell even its size; what else is damaged is left
/// out. Images are counted only for `wantsImageCount`. After prepareImageReaders(), any thread.
[[nodiscard]] std::optional<ImageProperties> readImage(int descriptor, bool wantsImageCount);

} // namespace platform::media
