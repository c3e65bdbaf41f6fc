// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/MediaAsset.h"
#include "platform/linux/OpenedFile.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct AVFormatContext;

/// Titles, artists and albums. Any thread.
namespace platform::av {

using Items = std::vector<MediaAssetProperties::MetadataItem>;

/// What a container calls an item. A row of the tables of the readers.
struct ItemName {
    std::string_view name;
    MediaAssetProperties::MetadataItem::CommonKey key;
};

/// Where the ID3v2 tags at the beginning of a file end; 0 when there is none.
[[nodiscard]] std::uint64_t endOfLeadingTags(const OpenedFile& file);

/// All items of a file, in the order in which they are stored. `context` is what FFmpeg has opened,
/// which joins or drops those that are there twice, so that it is asked last.
[[nodiscard]] Items itemsOf(const OpenedFile& file, const AVFormatContext& context);

/// The text that `bytes` are up to the first NUL: in UTF-8, or in ISO 8859-1 when they are not
/// that.
[[nodiscard]] std::string itemText(DataView bytes);

} // namespace platform::av
