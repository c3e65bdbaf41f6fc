// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/av/VorbisComment.h"

#include "platform/linux/Ascii.h"
#include "platform/linux/ByteOrder.h"

#include <algorithm>
#include <array>
#include <optional>

namespace platform::av {
namespace {

using CommonKey = MediaAssetProperties::MetadataItem::CommonKey;

// In any case.
constexpr std::array names{
    ItemName{"TITLE=", CommonKey::title},
    ItemName{"ARTIST=", CommonKey::artist},
    ItemName{"ALBUM=", CommonKey::albumName},
};

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
        const auto* const name = std::ranges::find_if(names, [&comment](const ItemName& one) {
            return startsWithIgnoringCase(charactersOf(*comment), one.name);
        });
        if (name != names.end()) {
            items.push_back({name->key, itemText(comment->subspan(name->name.size()))});
        }
    }
    return items;
}

} // namespace platform::av
