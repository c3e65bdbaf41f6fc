// SPDX-License-Identifier: Apache-2.0
// Reads bytes as an XMP packet.
#include "fuzz/Fuzzing.h"
#include "platform/linux/media/PhotoBlocks.h"
#include "platform/linux/media/XmpPacket.h"

#include <cmath>

using namespace platform::media;
using fuzzing::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = fuzzing::textOf(data, size);
    const XmpPacket packet(bytes);
    for (const char* const name : {"tiff:Make", "exif:FNumber", "dc:rights"}) {
        const auto text = packet.text(name);
        require(!text || text->size() <= size);
    }
    platform::ImageProperties properties;
    addXmp(fuzzing::bytesOf(data, size), properties);
    require(!properties.gps || (*properties.gps->latitude >= 0 && *properties.gps->longitude >= 0));
    require(!properties.exif || std::isfinite(properties.exif->fNumber.value_or(0)));
    const platform::ImageProperties once = properties;
    addXmp(fuzzing::bytesOf(data, size), properties);
    require(properties == once);
    return 0;
}
