// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/ObjectValues.h"

#include "platform/linux/pdf/ObjectBytes.h"

namespace platform::pdf {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t mostStreams = 16;
constexpr std::size_t largestStream = std::size_t{4} << 20U;

} // namespace

std::optional<std::string_view> ObjectValues::valueOf(std::uint32_t number, const Place& place) {
    std::uint64_t offset = place.offset;
    switch (place.kind) {
    case Place::Kind::plain: return plainValueOf(number, offset, place.number);
    case Place::Kind::packed: return packedValueOf(number, place);
    default: return std::nullopt;
    }
}

std::optional<std::string_view>
ObjectValues::plainValueOf(std::uint32_t number, std::uint64_t& offset, std::uint32_t generation) {
    const Reference expected{number, generation};
    return takeObjectHeader(m_file, offset) == expected ? m_file.takeValue(offset) : std::nullopt;
}

std::optional<std::string_view> ObjectValues::packedValueOf(std::uint32_t number,
                                                            const Place& place) {
    const auto* const objects = place.offset <= largestNumber
                                    ? packedObjectsIn(static_cast<std::uint32_t>(place.offset))
                                    : nullptr;
    if (objects == nullptr || place.number >= objects->entries.size() ||
        objects->entries[place.number].number != number) {
        return std::nullopt;
    }
    std::string_view rest =
        std::string_view(objects->bytes).substr(objects->entries[place.number].start);
    return takeValue(rest);
}

const ObjectValues::PackedObjects* ObjectValues::packedObjectsIn(std::uint32_t stream) {
    const auto known = m_streams.find(stream);
    if (known != m_streams.end()) {
        return &known->second;
    }
    auto objects = m_streams.size() < mostStreams ? readStream(stream) : std::nullopt;
    return objects ? &m_streams.emplace(stream, std::move(*objects)).first->second : nullptr;
}

std::optional<ObjectValues::PackedObjects> ObjectValues::readStream(std::uint32_t stream) {
    const auto place = m_table.find(stream);
    std::uint64_t offset = place ? place->offset : 0;
    if (!place || place->kind != Place::Kind::plain) {
        return std::nullopt;
    }
    const std::string value(plainValueOf(stream, offset, place->number).value_or(""sv));
    const auto dictionary = Dictionary::of(value);
    if (!dictionary || !(*dictionary)["/DecodeParms"].empty()) {
        return std::nullopt;
    }
    auto bytes =
        streamData(m_file, offset, *dictionary, lengthOf((*dictionary)["/Length"]), largestStream);
    if (!bytes) {
        return std::nullopt;
    }
    PackedObjects objects{.bytes = std::move(*bytes), .entries = {}};
    objects.bytes += '\n'; // the last object may be a word
    return readEntries(objects, *dictionary) ? std::optional(std::move(objects)) : std::nullopt;
}

// Itself, or in an object of the old form.
std::optional<std::uint64_t> ObjectValues::lengthOf(std::string_view value) {
    const auto reference = referenceOf(value);
    const auto place = reference ? m_table.find(reference->number) : std::nullopt;
    if (!place || place->kind != Place::Kind::plain) {
        return integerOf(value);
    }
    std::uint64_t offset = place->offset;
    return integerOf(plainValueOf(reference->number, offset, place->number).value_or(""sv));
}

bool ObjectValues::readEntries(PackedObjects& objects, const Dictionary& stream) {
    const auto count = integerOf(stream["/N"]);
    const auto first = integerOf(stream["/First"]);
    std::string_view rest = objects.bytes;
    if (!count || !first || *count > rest.size() || *first > rest.size()) {
        return false;
    }
    while (objects.entries.size() < *count) {
        const auto number = integerOf(takeToken(rest).value_or(""sv));
        const auto start = integerOf(takeToken(rest).value_or(""sv));
        if (!number || !start || *start > objects.bytes.size() - *first) {
            return false;
        }
        objects.entries.push_back({*number, static_cast<std::size_t>(*first + *start)});
    }
    return true;
}

} // namespace platform::pdf
