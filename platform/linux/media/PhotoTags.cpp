// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/PhotoTags.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include <exiv2/exiv2.hpp>

namespace platform::media {

// The library looks for a field by comparing the names of all, so they are noted once.
struct PhotoTags::Fields {
    Exiv2::ExifData exif;
    Exiv2::IptcData iptc;
    std::map<std::string, const Exiv2::Value*, std::less<>> values;
    std::set<std::string, std::less<>> directories;

    void note() {
        for (const Exiv2::Exifdatum& field : exif) {
            directories.insert(field.groupName());
            if (field.count() > 0) {
                values.emplace(field.key(), &field.value());
            }
        }
    }

    [[nodiscard]] const Exiv2::Value* value(const std::string& name) const {
        const auto field = values.find(name);
        return field == values.end() ? nullptr : field->second;
    }
};

namespace {

// The library counts in 32 bits.
constexpr std::size_t maximumSize = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t headerSize = 8;

const Exiv2::byte* libraryBytes(DataView bytes) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes as bytes
    return reinterpret_cast<const Exiv2::byte*>(bytes.data());
}

// Changes what the first directory of a TIFF structure has that the library should not see. The tag
// of XMP becomes one that means nothing: the library would parse the packet whenever it sees it,
// and follow its elements as deep as they are nested. Fields of many megabytes, in which Photoshop
// keeps layers and converters whole files, become empty: the library would copy them twice. There
// are as many bytes as a header has.
void hideFields(std::span<std::byte> bytes) {
    constexpr std::size_t entrySize = 12;
    constexpr std::size_t countOffset = 4;
    constexpr std::size_t countSize = 4;
    constexpr std::uint64_t mostElements = 4U << 20U;
    constexpr std::uint16_t xmpTag = 700;
    const bool isBig = hasTextAt(bytes, 0, "MM");
    const auto shortAt = [bytes, isBig](std::size_t offset) {
        return isBig ? bigEndian<std::uint16_t>(bytes, offset)
                     : littleEndian<std::uint16_t>(bytes, offset);
    };
    const auto longAt = [bytes, isBig](std::size_t offset) {
        return isBig ? bigEndian<std::uint32_t>(bytes, offset)
                     : littleEndian<std::uint32_t>(bytes, offset);
    };
    const std::uint64_t directory = longAt(4);
    if (directory > bytes.size() - 2) {
        return;
    }
    const std::size_t first = directory + 2;
    const std::size_t room = (bytes.size() - first) / entrySize;
    const std::size_t count = std::min<std::size_t>(shortAt(directory), room);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t entry = first + i * entrySize;
        if (shortAt(entry) == xmpTag) {
            std::ranges::fill(bytes.subspan(entry, 2), std::byte{0xFE});
        }
        if (longAt(entry + countOffset) > mostElements) {
            std::ranges::fill(bytes.subspan(entry + countOffset, countSize), std::byte{0});
        }
    }
}

template <class Ratio>
std::optional<double> quotient(const Ratio& ratio) {
    return ratio.second == 0 ? std::nullopt
                             : std::optional(static_cast<double>(ratio.first) /
                                             static_cast<double>(ratio.second));
}

template <class Value>
const auto* elementOf(const Exiv2::Value& value, std::size_t index) {
    const auto* const list = dynamic_cast<const Value*>(&value);
    return list == nullptr || index >= list->value_.size() ? nullptr : &list->value_[index];
}

bool isInteger(const Exiv2::Value& value) {
    switch (value.typeId()) {
    case Exiv2::unsignedByte:
    case Exiv2::unsignedShort:
    case Exiv2::unsignedLong:
    case Exiv2::signedByte:
    case Exiv2::signedShort:
    case Exiv2::signedLong: return true;
    default: return false;
    }
}

std::optional<double> numberOf(const Exiv2::Value& value, std::size_t index) {
    if (const auto* const ratio = elementOf<Exiv2::URationalValue>(value, index)) {
        return quotient(*ratio);
    }
    if (const auto* const ratio = elementOf<Exiv2::RationalValue>(value, index)) {
        return quotient(*ratio);
    }
    const auto position = static_cast<long>(index);
    return isInteger(value) && position < value.count()
               ? std::optional(static_cast<double>(value.toLong(position)))
               : std::nullopt;
}

bool isText(const Exiv2::Value& value) {
    switch (value.typeId()) {
    case Exiv2::asciiString:
    case Exiv2::string:
    case Exiv2::undefined:
    case Exiv2::unsignedByte: return true;
    default: return false;
    }
}

std::string storedBytes(const Exiv2::Value& value) {
    std::vector<Exiv2::byte> bytes(static_cast<std::size_t>(std::max(value.size(), 0L)));
    value.copy(bytes.data(), Exiv2::bigEndian);
    return {bytes.begin(), bytes.end()};
}

std::optional<std::string> copyrightNoticeOf(const Exiv2::IptcData& record) {
    const auto field = record.findKey(Exiv2::IptcKey("Iptc.Application2.Copyright"));
    return field == record.end() ? std::nullopt : std::optional(storedBytes(field->value()));
}

} // namespace

void PhotoTags::prepare() {
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    // The first error makes the library look for the translations of errors.
    std::array<std::byte, headerSize> noStructure{};
    std::ignore = decode(noStructure);
}

PhotoTags::PhotoTags(std::unique_ptr<Fields> fields)
    : m_fields(std::move(fields)) {}
PhotoTags::PhotoTags(PhotoTags&& other) noexcept = default;
PhotoTags& PhotoTags::operator=(PhotoTags&& other) noexcept = default;
PhotoTags::~PhotoTags() = default;

std::optional<PhotoTags> PhotoTags::decode(std::span<std::byte> bytes) {
    bytes = bytes.first(std::min(bytes.size(), maximumSize));
    if (bytes.size() < headerSize) {
        return std::nullopt;
    }
    hideFields(bytes);
    auto fields = std::make_unique<Fields>();
    Exiv2::XmpData ignored;
    try {
        const auto order =
            Exiv2::TiffParser::decode(fields->exif, fields->iptc, ignored, libraryBytes(bytes),
                                      static_cast<std::uint32_t>(bytes.size()));
        if (order == Exiv2::invalidByteOrder) {
            return std::nullopt;
        }
        fields->note();
        return PhotoTags(std::move(fields));
    } catch (const Exiv2::AnyError&) {
        return std::nullopt;
    }
}

bool PhotoTags::hasDirectory(std::string_view name) const {
    return m_fields->directories.contains(name);
}

bool PhotoTags::hasField(const std::string& name) const {
    return m_fields->value(name) != nullptr;
}

std::optional<std::string> PhotoTags::text(const std::string& name) const {
    const Exiv2::Value* const value = m_fields->value(name);
    return value == nullptr || !isText(*value) ? std::nullopt : std::optional(storedBytes(*value));
}

std::optional<double> PhotoTags::number(const std::string& name, std::size_t index) const {
    const Exiv2::Value* const value = m_fields->value(name);
    return value == nullptr ? std::nullopt : numberOf(*value, index);
}

bool PhotoTags::isLeftOut(const std::string& name, std::size_t index) const {
    const Exiv2::Value* const value = m_fields->value(name);
    if (value == nullptr || static_cast<long>(index) >= value->count()) {
        return true;
    }
    const auto* const ratio = elementOf<Exiv2::URationalValue>(*value, index);
    return ratio != nullptr && ratio->first == 0 && ratio->second == 0;
}

std::vector<std::int64_t> PhotoTags::integers(const std::string& name) const {
    constexpr long mostNumbers = 16;
    std::vector<std::int64_t> numbers;
    const Exiv2::Value* const value = m_fields->value(name);
    if (value != nullptr && isInteger(*value)) {
        for (long i = 0; i < std::min(value->count(), mostNumbers); ++i) {
            numbers.push_back(value->toLong(i));
        }
    }
    return numbers;
}

std::optional<std::string> PhotoTags::xmpPacket() const {
    return text("Exif.Image.0xfefe");
}

std::optional<std::string> PhotoTags::copyrightNotice() const {
    return copyrightNoticeOf(m_fields->iptc);
}

std::optional<std::string> copyrightNoticeOfIptc(DataView record) {
    Exiv2::IptcData fields;
    try {
        const auto size = static_cast<std::uint32_t>(std::min(record.size(), maximumSize));
        if (Exiv2::IptcParser::decode(fields, libraryBytes(record), size) != 0) {
            return std::nullopt;
        }
    } catch (const Exiv2::AnyError&) {
        return std::nullopt;
    }
    return copyrightNoticeOf(fields);
}

} // namespace platform::media
