// SPDX-License-Identifier: Apache-2.0
// WebP (RFC 9649), with libwebpdemux.
#include "platform/linux/media/ColorProfile.h"
#include "platform/linux/media/ImageFormats.h"
#include "platform/linux/media/MappedFile.h"
#include "platform/linux/media/PhotoBlocks.h"

#include <limits>
#include <memory>

#include <webp/demux.h>

namespace platform::media {
namespace {

// The format counts its bytes in 32 bits.
constexpr std::uint64_t longestFile = std::numeric_limits<std::uint32_t>::max();

struct DeleteDemuxer {
    void operator()(WebPDemuxer* demuxer) const { ::WebPDemuxDelete(demuxer); }
};
using Demuxer = std::unique_ptr<WebPDemuxer, DeleteDemuxer>;

Demuxer open(DataView bytes) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes as bytes
    const WebPData data{reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
    WebPDemuxState state = WEBP_DEMUX_PARSE_ERROR;
    Demuxer demuxer(::WebPDemuxPartial(&data, &state));
    const bool hasHeader = state == WEBP_DEMUX_PARSED_HEADER || state == WEBP_DEMUX_DONE;
    return hasHeader ? std::move(demuxer) : nullptr;
}

// A copy of the first chunk of that kind; empty without one or when it is too large.
Data chunk(const Demuxer& demuxer, const char* name, std::size_t maximum) {
    WebPChunkIterator found{};
    if (::WebPDemuxGetChunk(demuxer.get(), name, 1, &found) == 0) {
        return {};
    }
    Data bytes;
    if (found.chunk.size <= maximum) {
        const auto all = std::as_bytes(std::span(found.chunk.bytes, found.chunk.size));
        bytes.assign(all.begin(), all.end());
    }
    ::WebPDemuxReleaseChunkIterator(&found);
    return bytes;
}

} // namespace

std::optional<ImageProperties> readWebP(const OpenedFile& file, bool wantsImageCount) {
    const MappedFile mapped(file, longestFile);
    const Demuxer demuxer = open(mapped.bytes());
    if (demuxer == nullptr) {
        return std::nullopt;
    }
    const auto fact = [&demuxer](WebPFormatFeature feature) {
        return ::WebPDemuxGetI(demuxer.get(), feature);
    };
    ImageProperties properties;
    properties.pixelWidth = fact(WEBP_FF_CANVAS_WIDTH);
    properties.pixelHeight = fact(WEBP_FF_CANVAS_HEIGHT);
    properties.depth = 8;
    properties.colorModel = "RGB";
    properties.hasAlpha = (fact(WEBP_FF_FORMAT_FLAGS) & ALPHA_FLAG) != 0;
    properties.profileName = nameOfProfile(chunk(demuxer, "ICCP", maximumProfileSize));
    if (Data block = chunk(demuxer, "EXIF", maximumBlockSize); !block.empty()) {
        addExif(block, properties);
    }
    addXmp(chunk(demuxer, "XMP ", maximumBlockSize), properties);
    if (wantsImageCount) {
        properties.imageCount = fact(WEBP_FF_FRAME_COUNT);
    }
    return *properties.pixelWidth > 0 && *properties.pixelHeight > 0 ? std::optional(properties)
                                                                     : std::nullopt;
}

} // namespace platform::media
