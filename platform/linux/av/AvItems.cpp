// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/av/AvItems.h"

#include "platform/Text.h"
#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"
#include "platform/linux/av/CodecCode.h"
#include "platform/linux/av/FFmpeg.h"
#include "platform/linux/av/Mp4Items.h"
#include "platform/linux/av/TaggedItems.h"
#include "platform/linux/av/VorbisComment.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace platform::av {
namespace {

using CommonKey = MediaAssetProperties::MetadataItem::CommonKey;

// What FFmpeg calls them, in any case; "author" stands in for the artist in AIFF.
struct Name {
    const char* name;
    CommonKey key;
};
constexpr std::array names{
    Name{"title", CommonKey::title},
    Name{"artist", CommonKey::artist},
    Name{"author", CommonKey::artist},
    Name{"album", CommonKey::albumName},
};

void appendDictionary(const AVDictionary* dictionary, Items& items) {
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = ::av_dict_get(dictionary, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
        const auto* const name = std::ranges::find_if(
            names, [entry](const Name& one) { return ::av_strcasecmp(one.name, entry->key) == 0; });
        if (name != names.end()) {
            items.push_back({name->key, itemText(bytesOf(entry->value))});
        }
    }
}

// Some formats keep them with the stream.
Items itemsOfContext(const AVFormatContext& context) {
    Items items;
    appendDictionary(context.metadata, items);
    if (items.empty()) {
        for (const AVStream* stream : std::span(context.streams, context.nb_streams)) {
            appendDictionary(stream->metadata, items);
        }
    }
    return items;
}

// The comments of a FLAC file, which begins at `start`: blocks with a byte for their kind and three
// for their size, the last one marked by a bit (RFC 9639, section 8).
Items itemsOfFlac(const OpenedFile& file, std::uint64_t start) {
    constexpr std::size_t headSize = 4;
    constexpr unsigned lastBlock = 0x80;
    constexpr unsigned comments = 4;
    constexpr int maximumBlocks = 1024;
    Items items;
    std::uint64_t offset = start + headSize;
    for (int block = 0; block < maximumBlocks; ++block) {
        std::array<std::byte, headSize> head{};
        if (!file.read(offset, head)) {
            break;
        }
        const auto kind = std::to_integer<unsigned>(head[0]);
        const std::uint64_t size = bigEndian<std::uint32_t>(head, 0) & 0xFFFFFFU;
        offset += headSize;
        if ((kind & ~lastBlock) == comments) {
            const auto bytes = file.bytes(offset, size, size);
            std::ranges::move(itemsOfVorbisComment(bytes.value_or(Data())),
                              std::back_inserter(items));
        }
        if ((kind & lastBlock) != 0) {
            break;
        }
        offset += size;
    }
    return items;
}

} // namespace

// ID3v2.4, section 3.1: "ID3", two bytes for the version, one of flags, and the size behind them in
// four times seven bits. A bit says that ten bytes follow.
std::uint64_t endOfLeadingTags(const OpenedFile& file) {
    constexpr std::size_t headSize = 10;
    constexpr int maximumTags = 8;
    constexpr auto footer = std::byte{0x10};
    constexpr unsigned bits = 7;
    std::uint64_t end = 0;
    for (int tag = 0; tag < maximumTags; ++tag) {
        std::array<std::byte, headSize> head{};
        if (!file.read(end, head) || !hasTextAt(head, 0, "ID3")) {
            break;
        }
        std::uint64_t size = 0;
        for (const std::byte byte : std::span(head).last<4>()) {
            size = (size << bits) | std::to_integer<std::uint64_t>(byte & std::byte{0x7F});
        }
        end += headSize + size + ((head[5] & footer) != std::byte{0} ? headSize : 0);
    }
    return std::min(end, file.size());
}

Items itemsOf(const OpenedFile& file, const AVFormatContext& context) {
    const std::string_view container = context.iformat->name;
    if (isOfMp4Family(container)) {
        return itemsOfMp4(file);
    }
    const std::uint64_t start = endOfLeadingTags(file);
    Items items = start > 0 ? itemsOfLeadingTag(file) : Items();
    if (container == "flac") {
        std::ranges::move(itemsOfFlac(file, start), std::back_inserter(items));
    } else if (container == "ogg") {
        items = itemsOfOgg(file);
    } else if (container == "wav" || container == "aiff") {
        items = itemsOfChunks(file, container == "aiff");
    }
    // A tag counts even if nothing of interest is in it.
    return items.empty() && start == 0 ? itemsOfContext(context) : items;
}

std::string itemText(DataView bytes) {
    bytes = bytes.first(
        static_cast<std::size_t>(std::ranges::find(bytes, std::byte{0}) - bytes.begin()));
    const auto text = Text::fromUTF8(bytes);
    return text ? *text : Text::fromISOLatin1(bytes);
}

} // namespace platform::av
