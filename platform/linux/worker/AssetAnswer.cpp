// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/AssetAnswer.h"

#include "platform/linux/Cbor.h"
#include "platform/linux/Utf8.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>
#include <variant>

namespace platform::worker {
namespace {

using VideoTrack = MediaAssetProperties::VideoTrack;
using Transform = VideoTrack::Transform;
using AudioTrack = MediaAssetProperties::AudioTrack;
using FormatDescription = MediaAssetProperties::FormatDescription;
using StreamDescription = AudioTrack::StreamDescription;
using Item = MediaAssetProperties::MetadataItem;
using CommonKey = Item::CommonKey;

// What may pass. Both sides ask the same.
bool isQuantity(double number) {
    return std::isfinite(number) && number >= 0;
}
bool isAllowed(const Transform& transform) {
    return std::ranges::all_of(std::array{transform.a, transform.b, transform.c, transform.d},
                               [](double number) { return std::isfinite(number); });
}
bool isAllowed(const VideoTrack& track) {
    return isQuantity(track.naturalWidth) && isQuantity(track.naturalHeight) &&
           isAllowed(track.preferredTransform) && isQuantity(track.nominalFrameRate);
}
bool isAllowed(const AudioTrack& track) {
    return !track.streamDescription || isQuantity(track.streamDescription->sampleRate);
}
bool isAllowed(const Item& item) {
    return !item.stringValue || isUTF8WithoutNul(*item.stringValue);
}

Json::Array list(std::initializer_list<Json> elements) {
    return {elements};
}

Json jsonOf(const std::optional<FormatDescription>& format) {
    if (!format) {
        return {nullptr};
    }
    const auto& code = format->mediaSubType;
    return list({code ? Json(std::int64_t{*code}) : Json(nullptr)});
}

Json jsonOf(const VideoTrack& track) {
    const Transform& turn = track.preferredTransform;
    return list({track.naturalWidth, track.naturalHeight, list({turn.a, turn.b, turn.c, turn.d}),
                 double{track.nominalFrameRate}, jsonOf(track.formatDescription)});
}

Json jsonOf(const AudioTrack& track) {
    const auto& stream = track.streamDescription;
    return list({jsonOf(track.formatDescription),
                 stream ? Json(list({stream->sampleRate, std::int64_t{stream->channels},
                                     std::int64_t{stream->bitsPerChannel}}))
                        : Json(nullptr)});
}

Json jsonOf(const Item& item) {
    return list({static_cast<std::int64_t>(item.commonKey),
                 item.stringValue ? Json(*item.stringValue) : Json(nullptr)});
}

template <class Element>
Json arrayOf(const std::vector<Element>& elements, std::size_t maximum) {
    Json::Array array;
    for (const Element& element : elements) {
        if (array.size() == maximum) {
            break;
        }
        // A track that may not pass keeps its place, with nothing in it.
        array.push_back(jsonOf(isAllowed(element) ? element : Element{}));
    }
    return array;
}

std::size_t sizeOf(const Item& item) {
    return item.stringValue ? item.stringValue->size() : 0;
}

// The first ones that there is room for.
std::vector<Item> itemsThatFit(const std::vector<Item>& items) {
    std::vector<Item> fitting;
    std::size_t room = maximumTextSize;
    for (const Item& item : items) {
        if (isAllowed(item) && sizeOf(item) <= room) {
            room -= sizeOf(item);
            fitting.push_back(item);
        }
    }
    return fitting;
}

/// The elements of a list, one after the other. Once one is not what was asked for, all is lost.
class Elements {
public:
    Elements(const Json& list, std::size_t count)
        : m_list(std::get_if<Json::Array>(&list.value()))
        , m_isSound(m_list != nullptr && m_list->size() == count) {}

    [[nodiscard]] bool isSound() const { return m_isSound; }

    void take(double& number) {
        if (const auto* found = next<double>()) {
            number = *found;
        }
    }
    void take(float& number) {
        double wide = 0;
        take(wide);
        number = static_cast<float>(wide);
        m_isSound = m_isSound && double{number} == wide;
    }
    void take(std::uint32_t& number) {
        const auto* found = next<std::int64_t>();
        m_isSound = m_isSound && std::in_range<std::uint32_t>(*found);
        if (m_isSound) {
            number = static_cast<std::uint32_t>(*found);
        }
    }
    void take(CommonKey& key) {
        std::uint32_t number = 0;
        take(number);
        m_isSound = m_isSound && number <= static_cast<std::uint32_t>(CommonKey::albumName);
        key = m_isSound ? static_cast<CommonKey>(number) : key;
    }
    void take(std::string& text) {
        if (const auto* found = next<std::string>()) {
            text = *found;
        }
    }
    void take(Transform& turn) {
        takeList(4, [&](Elements& elements) {
            elements.take(turn.a);
            elements.take(turn.b);
            elements.take(turn.c);
            elements.take(turn.d);
        });
    }
    void take(FormatDescription& format) {
        takeList(1, [&](Elements& elements) { elements.take(format.mediaSubType); });
    }
    void take(StreamDescription& stream) {
        takeList(3, [&](Elements& elements) {
            elements.take(stream.sampleRate);
            elements.take(stream.channels);
            elements.take(stream.bitsPerChannel);
        });
    }
    void take(VideoTrack& track) {
        takeList(5, [&](Elements& elements) {
            elements.take(track.naturalWidth);
            elements.take(track.naturalHeight);
            elements.take(track.preferredTransform);
            elements.take(track.nominalFrameRate);
            elements.take(track.formatDescription);
        });
        m_isSound = m_isSound && isAllowed(track);
    }
    void take(AudioTrack& track) {
        takeList(2, [&](Elements& elements) {
            elements.take(track.formatDescription);
            elements.take(track.streamDescription);
        });
        m_isSound = m_isSound && isAllowed(track);
    }
    void take(Item& item) {
        takeList(2, [&](Elements& elements) {
            elements.take(item.commonKey);
            elements.take(item.stringValue);
        });
        m_isSound = m_isSound && isAllowed(item);
    }
    template <class Value>
    void take(std::optional<Value>& value) {
        if (m_isSound && std::holds_alternative<std::nullptr_t>(m_list->at(m_next).value())) {
            ++m_next;
        } else {
            value = Value{};
            take(*value);
        }
    }
    template <class Element>
    void take(std::vector<Element>& values, std::size_t maximum) {
        const auto* found = next<Json::Array>();
        m_isSound = m_isSound && found->size() <= maximum;
        if (!m_isSound) {
            return;
        }
        Elements elements(m_list->at(m_next - 1), found->size());
        while (elements.m_isSound && elements.m_next < found->size()) {
            elements.take(values.emplace_back());
        }
        m_isSound = elements.m_isSound;
    }

private:
    template <class Work>
    void takeList(std::size_t count, const Work& work) {
        if (!m_isSound) {
            return;
        }
        Elements elements(m_list->at(m_next++), count);
        work(elements);
        m_isSound = elements.m_isSound;
    }

    // Null, and no longer sound, when there is nothing of the kind. No list is read beyond the
    // count that it was checked for.
    template <class Value>
    const Value* next() {
        const auto* found = m_isSound ? std::get_if<Value>(&m_list->at(m_next++).value()) : nullptr;
        m_isSound = found != nullptr;
        return found;
    }

    const Json::Array* m_list;
    std::size_t m_next = 0;
    bool m_isSound;
};

std::size_t sizeOf(const std::vector<Item>& items) {
    std::size_t size = 0;
    for (const Item& item : items) {
        size += sizeOf(item);
    }
    return size;
}

} // namespace

Data encodedMediaAsset(const MediaAssetProperties& asset) {
    const bool hasDuration = asset.duration && isQuantity(*asset.duration);
    // Four levels, so it never fails.
    return Cbor::encoded(Json(list({hasDuration ? Json(*asset.duration) : Json(nullptr),
                                    arrayOf(asset.videoTracks, maximumTracks),
                                    arrayOf(asset.audioTracks, maximumTracks),
                                    arrayOf(itemsThatFit(asset.commonMetadata), maximumItems)})))
        .value_or(Data());
}

std::optional<MediaAssetProperties> decodedMediaAsset(DataView bytes) {
    constexpr std::size_t members = 4;
    const auto json = Cbor::decoded(bytes);
    if (!json) {
        return std::nullopt;
    }
    MediaAssetProperties asset;
    Elements elements(*json, members);
    elements.take(asset.duration);
    elements.take(asset.videoTracks, maximumTracks);
    elements.take(asset.audioTracks, maximumTracks);
    elements.take(asset.commonMetadata, maximumItems);
    const bool isSound = elements.isSound() && (!asset.duration || isQuantity(*asset.duration)) &&
                         sizeOf(asset.commonMetadata) <= maximumTextSize;
    return isSound ? std::optional(std::move(asset)) : std::nullopt;
}

} // namespace platform::worker
