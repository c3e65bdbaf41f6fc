// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "fuzz/Fuzzing.h"
#include "platform/linux/media/ImageReader.h"
#include "tests/unit/support/MemoryFile.h"

#include <cmath>
#include <string>
#include <string_view>

namespace fuzzing {

/// Reads the bytes behind `mark`, which makes them files of one format, and checks what must hold
/// of every image.
inline void readAsImage(std::string_view mark, const std::uint8_t* data, std::size_t size) {
    static const bool isPrepared = (platform::media::prepareImageReaders(), true);
    require(isPrepared);
    const MemoryFile file(std::string(mark).append(textOf(data, size)));
    auto counted = platform::media::readImage(file.descriptor(), true);
    const auto uncounted = platform::media::readImage(file.descriptor(), false);
    require(counted.has_value() == uncounted.has_value());
    if (!counted) {
        return;
    }
    require(counted->pixelWidth > 0 && counted->pixelHeight > 0);
    require(counted->dpiWidth.has_value() == counted->dpiHeight.has_value());
    require(!counted->dpiWidth || (std::isfinite(*counted->dpiWidth) && *counted->dpiWidth >= 0));
    require(counted->imageCount.has_value() && !uncounted->imageCount.has_value());
    counted->imageCount.reset();
    require(counted == uncounted);
}

} // namespace fuzzing
