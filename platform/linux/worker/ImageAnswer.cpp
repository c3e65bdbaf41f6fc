// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/ImageAnswer.h"

#include "platform/linux/Cbor.h"
#include "platform/linux/Utf8.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>
#include <variant>

namespace platform::worker {
namespace {

using Exif = ImageProperties::Exif;
using Tiff = ImageProperties::Tiff;
using Gps = ImageProperties::Gps;
using Iptc = ImageProperties::Iptc;

template <class Block>
struct Field {
    std::string_view name;
    std::variant<std::optional<std::string> Block::*, std::optional<double> Block::*,
                 std::optional<std::int64_t> Block::*, std::optional<std::uint64_t> Block::*,
                 std::optional<bool> Block::*, std::vector<std::int64_t> Block::*,
                 std::optional<Exif> Block::*, std::optional<Tiff> Block::*,
                 std::optional<Gps> Block::*, std::optional<Iptc> Block::*>
        member;
};

template <class Block>
constexpr std::array<Field<Block>, 0> fields{};

template <>
constexpr std::array<Field<Exif>, 7> fields<Exif>{{
    {"lensModel", &Exif::lensModel},
    {"exposureTime", &Exif::exposureTime},
    {"fNumber", &Exif::fNumber},
    {"isoSpeedRatings", &Exif::isoSpeedRatings},
    {"focalLength", &Exif::focalLength},
    {"focalLenIn35mmFilm", &Exif::focalLenIn35mmFilm},
    {"dateTimeOriginal", &Exif::dateTimeOriginal},
}};

template <>
constexpr std::array<Field<Tiff>, 4> fields<Tiff>{{
    {"make", &Tiff::make},
    {"model", &Tiff::model},
    {"software", &Tiff::software},
    {"copyright", &Tiff::copyright},
}};

template <>
constexpr std::array<Field<Gps>, 4> fields<Gps>{{
    {"latitude", &Gps::latitude},
    {"latitudeRef", &Gps::latitudeRef},
    {"longitude", &Gps::longitude},
    {"longitudeRef", &Gps::longitudeRef},
}};

template <>
constexpr std::array<Field<Iptc>, 1> fields<Iptc>{{
    {"copyrightNotice", &Iptc::copyrightNotice},
}};

template <>
constexpr std::array<Field<ImageProperties>, 13> fields<ImageProperties>{{
    {"pixelWidth", &ImageProperties::pixelWidth},
    {"pixelHeight", &ImageProperties::pixelHeight},
    {"depth", &ImageProperties::depth},
    {"colorModel", &ImageProperties::colorModel},
    {"profileName", &ImageProperties::profileName},
    {"dpiWidth", &ImageProperties::dpiWidth},
    {"dpiHeight", &ImageProperties::dpiHeight},
    {"hasAlpha", &ImageProperties::hasAlpha},
    {"exif", &ImageProperties::exif},
    {"tiff", &ImageProperties::tiff},
    {"gps", &ImageProperties::gps},
    {"iptc", &ImageProperties::iptc},
    {"imageCount", &ImageProperties::imageCount},
}};

// What may pass. Sizes and counts of the formats have 32 bits at most.
bool isAllowed(const std::string& text) {
    return isUTF8WithoutNul(text);
}
bool isAllowed(double number) {
    return std::isfinite(number);
}
bool isAllowed(std::int64_t number) {
    return number >= 0 && number <= std::numeric_limits<std::uint32_t>::max();
}
bool isAllowed(std::uint64_t /*number*/) {
    return true;
}
bool isAllowed(bool /*value*/) {
    return true;
}

bool isColorModel(std::string_view name) {
    return name == "RGB" || name == "Gray" || name == "CMYK" || name == "Lab";
}

template <class Block>
Json::Object objectOf(const Block& block);

// Each answers the value that stands for a property, nullopt for one that is left out.
template <class Value>
std::optional<Json> jsonOf(const std::optional<Value>& value) {
    if constexpr (std::is_constructible_v<Json, Value>) {
        return value && isAllowed(*value) ? std::optional<Json>(*value) : std::nullopt;
    } else {
        return value ? std::optional<Json>(objectOf(*value)) : std::nullopt;
    }
}

std::optional<Json> jsonOf(const std::vector<std::int64_t>& numbers) {
    Json::Array array;
    for (const std::int64_t number : numbers) {
        if (isAllowed(number)) {
            array.emplace_back(number);
        }
    }
    return array.empty() ? std::nullopt : std::optional<Json>(std::move(array));
}

template <class Block>
Json::Object objectOf(const Block& block) {
    Json::Object object;
    for (const Field<Block>& field : fields<Block>) {
        auto value = std::visit([&](auto member) { return jsonOf(block.*member); }, field.member);
        if (value) {
            object.emplace_back(field.name, *std::move(value));
        }
    }
    return object;
}

template <class Block>
bool readBlock(const Json& json, Block& block);

// Each takes over a value; false for one that is not allowed or when there is one already.
template <class Value>
bool take(const Json& json, std::optional<Value>& value) {
    if (value) {
        return false;
    }
    if constexpr (std::is_constructible_v<Json, Value>) {
        const auto* content = std::get_if<Value>(&json.value());
        if (content == nullptr || !isAllowed(*content)) {
            return false;
        }
        value = *content;
        return true;
    } else {
        return readBlock(json, value.emplace());
    }
}

// Integers come as signed ones wherever that is possible.
bool take(const Json& json, std::optional<std::uint64_t>& value) {
    const auto* positive = std::get_if<std::int64_t>(&json.value());
    const auto* large = std::get_if<std::uint64_t>(&json.value());
    if (value || (large == nullptr && (positive == nullptr || *positive < 0))) {
        return false;
    }
    value = large != nullptr ? *large : static_cast<std::uint64_t>(*positive);
    return true;
}

bool take(const Json& json, std::vector<std::int64_t>& numbers) {
    const auto* array = std::get_if<Json::Array>(&json.value());
    if (array == nullptr || array->empty() || !numbers.empty()) {
        return false;
    }
    return std::ranges::all_of(*array, [&](const Json& element) {
        const auto* number = std::get_if<std::int64_t>(&element.value());
        if (number == nullptr || !isAllowed(*number)) {
            return false;
        }
        numbers.push_back(*number);
        return true;
    });
}

template <class Block>
bool readMember(const Json::Object::value_type& member, Block& block) {
    const auto field = std::ranges::find(fields<Block>, member.first, &Field<Block>::name);
    return field != fields<Block>.end() &&
           std::visit([&](auto place) { return take(member.second, block.*place); }, field->member);
}

template <class Block>
bool readBlock(const Json& json, Block& block) {
    const auto* object = std::get_if<Json::Object>(&json.value());
    return object != nullptr && std::ranges::all_of(*object, [&](const auto& member) {
               return readMember(member, block);
           });
}

} // namespace

Data encodedImageProperties(const ImageProperties& properties) {
    Json::Object object = objectOf(properties);
    std::erase_if(object, [&](const auto& member) {
        return member.first == "colorModel" && !isColorModel(*properties.colorModel);
    });
    // Two levels, so it never fails.
    return Cbor::encoded(Json(std::move(object))).value_or(Data());
}

std::optional<ImageProperties> decodedImageProperties(DataView bytes) {
    const auto json = Cbor::decoded(bytes);
    ImageProperties properties;
    if (!json || !readBlock(*json, properties) ||
        (properties.colorModel && !isColorModel(*properties.colorModel))) {
        return std::nullopt;
    }
    return properties;
}

} // namespace platform::worker
