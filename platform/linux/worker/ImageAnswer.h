// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/ImageSource.h"

#include <optional>

/// Properties of images on their way from the process that reads them: CBOR, an object with a
/// member for each property that is there, named as in the struct. Any thread.
namespace platform::worker {

/// The bytes of `properties`. What `decodedImageProperties` refuses is left out: texts that are not
/// UTF-8 or have a NUL, numbers that are not finite, integers outside of 0 to 2^32-1, a colour
/// model of no known name.
[[nodiscard]] Data encodedImageProperties(const ImageProperties& properties);

/// Reads them back. The bytes are not trusted: nullopt for an unknown or repeated member, for a
/// value of another type, and for one that `encodedImageProperties` leaves out.
[[nodiscard]] std::optional<ImageProperties> decodedImageProperties(DataView bytes);

} // namespace platform::worker
