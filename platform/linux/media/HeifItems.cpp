// SPDX-License-Identifier: Apache-2.0
// Items and where their data are: ISO/IEC 14496-12, sections 8.11.3 ("iloc") and 8.11.6 ("iinf");
// how pictures are coded: ISO/IEC 23008-12, annex B, and "AV1 Image File Format", section 2.1.
#include "platform/linux/media/HeifItems.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"

#include <algorithm>
#include <array>
#include <optional>

namespace platform::media {
namespace {

// Whoever reads the data of a picture that is made of others needs their few bytes.
constexpr std::uint64_t fewBytes = 4096;

using ItemId = std::uint32_t;

// The number of an item that is a picture; nullopt for one of another kind.
std::optional<ItemId> pictureIn(const OpenedFile& file, const IsoBox& entry) {
    constexpr std::size_t shortEntry = 12; // version and flags, number, protection, type
    constexpr std::size_t longEntry = 14;
    std::array<std::byte, longEntry> bytes{};
    if (entry.size() < shortEntry || file.readSome(entry.start, bytes) < shortEntry) {
        return std::nullopt;
    }
    constexpr auto longVersion = std::byte{3};
    const bool isLong = bytes[0] == longVersion && entry.size() >= longEntry;
    const std::size_t type = (isLong ? longEntry : shortEntry) - 4;
    if (!hasTextAt(bytes, type, "hvc1") && !hasTextAt(bytes, type, "av01")) {
        return std::nullopt;
    }
    return isLong ? bigEndian<std::uint32_t>(bytes, 4) : ItemId{bigEndian<std::uint16_t>(bytes, 4)};
}

// The numbers of the items that are pictures, in order.
std::vector<ItemId> picturesOf(const OpenedFile& file, IsoBoxes& boxes, const IsoBox& meta) {
    std::vector<ItemId> pictures;
    std::array<std::byte, 1> version{};
    auto items = boxes.find(meta, fourCharCode("iinf"));
    if (!items || items->size() < 8 || !file.read(items->start, version)) {
        return pictures;
    }
    // Version and flags, and how many there are.
    items->start += version[0] == std::byte{0} ? 6U : 8U;
    boxes.forEach(*items, [&](const IsoBox& entry) {
        const auto picture =
            entry.type == fourCharCode("infe") ? pictureIn(file, entry) : std::nullopt;
        if (picture) {
            pictures.push_back(*picture);
        }
    });
    std::ranges::sort(pictures);
    return pictures;
}

/// Reads numbers one after another; zeros behind the end.
class Numbers {
public:
    explicit Numbers(DataView bytes)
        : m_bytes(bytes) {}

    std::uint64_t next(std::size_t size) {
        const DataView rest = m_bytes.subspan(m_position);
        const DataView number = rest.first(std::min(size, rest.size()));
        m_position += number.size();
        return bigEndian(number);
    }
    [[nodiscard]] std::size_t position() const { return m_position; }
    [[nodiscard]] bool isAtEnd() const { return m_position == m_bytes.size(); }

private:
    DataView m_bytes;
    std::size_t m_position = 0;
};

/// How the places of items are written.
struct Widths {
    std::size_t version;
    std::size_t offset;
    std::size_t length;
    std::size_t base;
    std::size_t index;

    explicit Widths(Numbers& numbers)
        : version(numbers.next(1)) {
        constexpr std::size_t flagsSize = 3;
        static_cast<void>(numbers.next(flagsSize));
        const std::uint64_t first = numbers.next(1);
        const std::uint64_t second = numbers.next(1);
        offset = first >> 4U;
        length = first & 0x0FU;
        base = second >> 4U;
        index = version == 0 ? 0 : second & 0x0FU;
    }
    [[nodiscard]] std::size_t number() const { return version < 2 ? 2 : 4; }
    [[nodiscard]] bool areSound() const {
        return version <= 2 && std::max({offset, length, base, index}) <= 8;
    }
};

// Reads where one item is, and adds its lengths when it is one of `pictures`.
void addLengths(Numbers& numbers, const Widths& widths, const std::vector<ItemId>& pictures,
                std::vector<HeifNumber>& lengths) {
    constexpr std::uint64_t inFile = 0;
    const auto item = static_cast<ItemId>(numbers.next(widths.number()));
    const std::uint64_t method = widths.version == 0 ? inFile : numbers.next(2) & 0x0FU;
    const bool isPicture =
        method == inFile && std::ranges::binary_search(pictures, item) && widths.length > 0;
    constexpr std::size_t referenceSize = 2;
    static_cast<void>(numbers.next(referenceSize + widths.base));
    for (std::uint64_t parts = numbers.next(2); parts > 0 && !numbers.isAtEnd(); --parts) {
        static_cast<void>(numbers.next(widths.index + widths.offset));
        const std::size_t position = numbers.position();
        if (numbers.next(widths.length) > fewBytes && isPicture) {
            lengths.push_back({position, numbers.position() - position});
        }
    }
}

} // namespace

std::vector<HeifNumber> lengthsOfHeifPictures(const OpenedFile& file, const IsoBox& meta) {
    constexpr std::uint64_t mostBytes = 1U << 20U;
    std::vector<HeifNumber> lengths;
    IsoBoxes boxes(file);
    const auto places = boxes.find(meta, fourCharCode("iloc"));
    const auto bytes = places ? file.bytes(places->start, places->size(), mostBytes) : std::nullopt;
    if (!bytes) {
        return lengths;
    }
    const auto pictures = picturesOf(file, boxes, meta);
    Numbers numbers(*bytes);
    const Widths widths(numbers);
    for (auto items = widths.areSound() ? numbers.next(widths.number()) : 0;
         items > 0 && !numbers.isAtEnd(); --items) {
        addLengths(numbers, widths, pictures, lengths);
    }
    for (HeifNumber& length : lengths) {
        length.offset += places->start;
    }
    return lengths;
}

void hideNumbers(std::span<const HeifNumber> numbers, std::uint64_t offset,
                 std::span<std::byte> bytes) {
    const auto isBefore = [offset](const HeifNumber& number) {
        return number.offset + number.size <= offset;
    };
    const std::uint64_t end = offset + bytes.size();
    for (const HeifNumber& number :
         std::span(std::ranges::partition_point(numbers, isBefore), numbers.end())) {
        if (number.offset >= end) {
            break;
        }
        const std::uint64_t first = std::max(number.offset, offset);
        const std::uint64_t last = std::min(number.offset + number.size, end);
        std::ranges::fill(bytes.subspan(first - offset, last - first), std::byte{0});
    }
}

} // namespace platform::media
