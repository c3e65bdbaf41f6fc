// SPDX-License-Identifier: Apache-2.0
// ISO/IEC 14496-12 for the boxes, 3GPP TS 26.244 for "titl" and its kin, and the "QuickTime File
// Format Specification" for texts and metadata.
#include "platform/linux/av/Mp4Items.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"
#include "platform/linux/IsoBoxes.h"
#include "platform/linux/Utf16.h"

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <string_view>

namespace platform::av {
namespace {

using CommonKey = MediaAssetProperties::MetadataItem::CommonKey;
using Keys = std::vector<std::optional<CommonKey>>;

constexpr std::array textNames{
    ItemName{"\xA9nam", CommonKey::title},
    ItemName{"\xA9"
             "ART",
             CommonKey::artist},
    ItemName{"\xA9"
             "alb",
             CommonKey::albumName},
};
constexpr std::array mobileNames{
    ItemName{"titl", CommonKey::title},
    ItemName{"perf", CommonKey::artist},
    ItemName{"albm", CommonKey::albumName},
};
constexpr std::array keyNames{
    ItemName{"com.apple.quicktime.title", CommonKey::title},
    ItemName{"com.apple.quicktime.artist", CommonKey::artist},
    ItemName{"com.apple.quicktime.album", CommonKey::albumName},
};

std::optional<CommonKey> find(std::span<const ItemName> table, std::uint32_t wanted) {
    const auto name = std::ranges::find_if(
        table, [wanted](const ItemName& one) { return fourCharCode(one.name) == wanted; });
    return name == table.end() ? std::nullopt : std::optional(name->key);
}

// What is read into memory at once: no text of interest is longer.
constexpr std::uint64_t maximumText = std::uint64_t{64} << 10U;

/// Goes along the boxes of one file and gathers what it finds.
class Walk {
public:
    explicit Walk(const OpenedFile& file)
        : m_file(file)
        , m_boxes(file) {}

    Items take() {
        forEach(m_boxes.whole(), [this](const IsoBox& box) {
            if (box.type == fourCharCode("moov")) {
                readMovie(box);
            }
        });
        return std::move(m_items);
    }

private:
    template <class Visit>
    void forEach(const IsoBox& parent, const Visit& visit) {
        m_boxes.forEach(parent, visit);
    }

    [[nodiscard]] Data bytesOf(const IsoBox& box) const {
        return m_file.bytes(box.start, box.size(), maximumText).value_or(Data());
    }

    void readMovie(const IsoBox& movie) {
        forEach(movie, [this](const IsoBox& box) {
            if (box.type == fourCharCode("udta")) {
                readUserData(box);
            } else if (box.type == fourCharCode("meta")) {
                readMetadata(box);
            }
        });
    }

    void readUserData(const IsoBox& data) {
        forEach(data, [this](const IsoBox& box) {
            if (box.type == fourCharCode("meta")) {
                readMetadata(box);
            } else if (const auto key = find(textNames, box.type)) {
                readTexts(*key, bytesOf(box));
            } else if (const auto mobileKey = find(mobileNames, box.type)) {
                readMobileText(*mobileKey, bytesOf(box));
            }
        });
    }

    // QuickTime's box has nothing before the boxes in it, the other one has four bytes.
    void readMetadata(IsoBox metadata) {
        constexpr std::uint64_t versionSize = 4;
        const auto first = m_boxes.at(metadata.start, metadata.end);
        if ((!first || first->type != fourCharCode("hdlr")) && metadata.size() > versionSize) {
            metadata.start += versionSize;
        }
        Keys keys;
        forEach(metadata, [this, &keys](const IsoBox& box) {
            if (box.type == fourCharCode("keys")) {
                keys = keysIn(bytesOf(box));
            } else if (box.type == fourCharCode("ilst")) {
                readList(box, keys);
            }
        });
    }

    // A count, and for each key a size of its own, a name space and a name.
    static Keys keysIn(DataView bytes) {
        constexpr std::size_t first = 8;
        constexpr std::size_t headSize = 8;
        Keys keys;
        bytes = bytes.subspan(std::min(first, bytes.size()));
        while (bytes.size() >= headSize) {
            const auto size = bigEndian<std::uint32_t>(bytes, 0);
            if (size < headSize || size > bytes.size()) {
                break;
            }
            const DataView name = bytes.subspan(headSize, size - headSize);
            const auto* const known = std::ranges::find_if(keyNames, [name](const ItemName& one) {
                return std::ranges::equal(name, platform::bytesOf(one.name));
            });
            keys.push_back(known == keyNames.end() ? std::nullopt : std::optional(known->key));
            bytes = bytes.subspan(size);
        }
        return keys;
    }

    // With keys, types of boxes are the keys' numbers from 1 on.
    void readList(const IsoBox& list, const Keys& keys) {
        forEach(list, [&](const IsoBox& item) {
            const bool isNumber = item.type >= 1 && item.type <= keys.size();
            const auto key = isNumber ? keys[item.type - 1] : find(textNames, item.type);
            if (key) {
                forEach(item, [&](const IsoBox& value) {
                    if (value.type == fourCharCode("data")) {
                        readValue(*key, bytesOf(value));
                    }
                });
            }
        });
    }

    // Four bytes for the kind of value and four for the language.
    void readValue(CommonKey key, DataView value) {
        constexpr std::size_t headSize = 8;
        constexpr std::uint32_t utf8 = 1;
        constexpr std::uint32_t utf16 = 2;
        if (value.size() < headSize) {
            return;
        }
        const auto kind = bigEndian<std::uint32_t>(value, 0);
        const DataView text = value.subspan(headSize);
        if (kind == utf16) {
            m_items.push_back({key, utf8FromUtf16(text, std::endian::big)});
        } else if (kind == utf8 || kind == 0) {
            m_items.push_back({key, itemText(text)});
        } else {
            m_items.push_back({key, std::nullopt}); // a number or a picture
        }
    }

    // The text in each language, with two bytes for its size and two for the language.
    void readTexts(CommonKey key, DataView bytes) {
        constexpr std::size_t headSize = 4;
        while (bytes.size() > headSize) {
            const std::size_t size = bigEndian<std::uint16_t>(bytes, 0);
            bytes = bytes.subspan(headSize);
            if (size > bytes.size()) {
                break;
            }
            m_items.push_back({key, itemText(bytes.first(size))});
            bytes = bytes.subspan(size);
        }
    }

    // Version and flags, two bytes for the language, and a text, in UTF-16 where that is marked.
    void readMobileText(CommonKey key, DataView bytes) {
        constexpr std::size_t headSize = 6;
        constexpr std::size_t markSize = 2;
        if (bytes.size() <= headSize) {
            return;
        }
        const DataView text = bytes.subspan(headSize);
        m_items.push_back({key, hasTextAt(text, 0, "\xFE\xFF")
                                    ? utf8FromUtf16(text.subspan(markSize), std::endian::big)
                                    : itemText(text)});
    }

    const OpenedFile& m_file;
    Items m_items;
    IsoBoxes m_boxes;
};

} // namespace

Items itemsOfMp4(const OpenedFile& file) {
    return Walk(file).take();
}

} // namespace platform::av
