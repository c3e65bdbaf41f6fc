// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/av/VorbisComment.h"

#include "platform/linux/ByteOrder.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace platform::av {
namespace {

using CommonKey = MediaAssetProperties::MetadataItem::CommonKey;

constexpr std::array names{
    ItemName{"TITLE=", CommonKey::title},
    ItemName{"ARTIST=", CommonKey::artist},
    ItemName{"ALBUM=", CommonKey::albumName},
};

// Names are ASCII in any case.
bool startsWith(DataView comment, std::string_view mark) {
    constexpr unsigned caseBit = 0x20;
    return comment.size() >= mark.size() &&
           std::ranges::equal(comment.first(mark.size()), bytesOf(mark),
                              [](std::byte found, std::byte wanted) {
                                  const auto character = std::to_integer<unsigned>(found);
                                  const bool isSmall = character >= 'a' && character <= 'z';
                                  return (isSmall ? character & ~caseBit : character) ==
                                         std::to_integer<unsigned>(wanted);
                              });
}

/// Numbers and texts one after the other.
class Reader {
public:
    explicit Reader(DataView bytes)
        : m_rest(bytes) {}

    std::optional<std::uint32_t> number() {
        if (m_rest.size() < sizeof(std::uint32_t)) {
            return std::nullopt;
        }
        const auto value = littleEndian<std::uint32_t>(m_rest, 0);
        m_rest = m_rest.subspan(sizeof value);
        return value;
    }

    std::optional<DataView> text() {
        const auto length = number();
        if (!length || *length > m_rest.size()) {
            return std::nullopt;
        }
        const DataView bytes = m_rest.first(*length);
        m_rest = m_rest.subspan(*length);
        return bytes;
    }

private:
    DataView m_rest;
};

} // namespace

Items itemsOfVorbisComment(DataView bytes) {
    Reader reader(bytes);
    Items items;
    if (!reader.text()) {
        return items;
    }
    const std::uint32_t count = reader.number().value_or(0);
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto comment = reader.text();
        if (!comment) {
            break;
        }
        const auto* const name = std::ranges::find_if(
            names, [&comment](const ItemName& one) { return startsWith(*comment, one.name); });
        if (name != names.end()) {
            items.push_back({name->key, itemText(comment->subspan(name->name.size()))});
        }
    }
    return items;
}

} // namespace platform::av
