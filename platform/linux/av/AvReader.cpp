// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/av/AvReader.h"

#include "platform/linux/OpenedFile.h"
#include "platform/linux/av/AvInput.h"
#include "platform/linux/av/AvItems.h"
#include "platform/linux/av/AvTracks.h"
#include "platform/linux/av/FFmpeg.h"
#include "platform/linux/av/MidiFile.h"
#include "platform/linux/av/Mp4Tables.h"

#include <cstddef>
#include <ctime>
#include <exception>
#include <memory>
#include <utility>

namespace platform::av {
namespace {

// Long films have long tables, which are read only where the samples are needed.
std::unique_ptr<AvInput> opened(const OpenedFile& file) {
    // Behind tags, which can be larger than what is looked at to tell the format.
    const std::uint64_t start = endOfLeadingTags(file);
    auto hidden = placesOfSampleTables(file);
    const bool isHiding = !hidden.empty();
    auto input = AvInput::open(file, start, std::move(hidden));
    return isHiding && (input == nullptr || lacksFacts(input->context()))
               ? AvInput::open(file, start, {})
               : std::move(input);
}

MediaAssetProperties propertiesOf(AvInput& input) {
    MediaAssetProperties asset;
    asset.duration = durationOf(input.context());
    if (lacksFacts(input.context())) {
        input.probeStreams();
        // What the file says goes before what its streams look like.
        if (asset.duration.value_or(0) <= 0) {
            asset.duration = probedDurationOf(input.context());
        }
    }
    appendTracks(input.context(), asset);
    return asset;
}

} // namespace

void prepareReader() {
    constexpr std::size_t largestAllocation = std::size_t{256} << 20U;
    ::tzset(); // dates in files are taken apart
    ::av_log_set_level(AV_LOG_QUIET);
    ::av_max_alloc(largestAllocation);
}

std::optional<MediaAssetProperties> readMediaAsset(int descriptor, bool wantsMetadata) {
    const auto file = OpenedFile::of(descriptor);
    if (!file) {
        return std::nullopt;
    }
    try {
        MediaAssetProperties asset;
        // Notes, no sound: nothing but their length is known, and FFmpeg does not know them.
        asset.duration = durationOfMidi(*file);
        if (asset.duration) {
            return asset;
        }
        const auto input = opened(*file);
        if (input == nullptr) {
            return std::nullopt;
        }
        asset = propertiesOf(*input);
        if (wantsMetadata) {
            asset.commonMetadata = itemsOf(*file, input->context());
        }
        return asset;
    } catch (const std::exception&) { // no memory
        return std::nullopt;
    }
}

} // namespace platform::av
