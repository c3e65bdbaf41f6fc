// SPDX-License-Identifier: Apache-2.0
// Reads bytes as the blocks of photographic data that several formats carry.
#include "fuzz/Fuzzing.h"
#include "platform/linux/media/MultiPicture.h"
#include "platform/linux/media/PhotoBlocks.h"
#include "platform/linux/media/PngProfileText.h"

#include <cmath>

using namespace platform::media;
using fuzzing::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isPrepared = (PhotoTags::prepare(), true);
    require(isPrepared);
    std::string block = fuzzing::textOf(data, size);
    platform::ImageProperties properties;
    addIptc(fuzzing::bytesOf(data, size), properties);
    addExif(std::as_writable_bytes(std::span(block)), properties);
    require(!properties.gps || !properties.gps->latitude || *properties.gps->latitude >= 0);
    block = fuzzing::textOf(data, size); // reading it changes it
    require(pictureCount(std::as_writable_bytes(std::span(block)), size) <= size / 16 + 1);
    const auto resource = imageResource(fuzzing::bytesOf(data, size), iptcResource);
    require(!resource || resource->size() <= size);
    require(bytesOfProfileText(fuzzing::textOf(data, size)).size() <= size / 2);
    return 0;
}
