// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/TableSection.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/pdf/ObjectBytes.h"
#include "platform/linux/pdf/Predictor.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace platform::pdf {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t lineSize = 20; // of an entry in the old form
constexpr std::size_t largestEntries = std::size_t{64} << 20U;

// Whether a parameter is left out, or says what it would mean then.
bool isUsual(std::string_view value, std::string_view usual) {
    return value.empty() || value == usual;
}

bool isEndOfLine(std::string_view end) {
    return end == " \n"sv || end == " \r"sv || end == "\r\n"sv;
}

// An entry in the old form: "0000000017 00000 n" and two characters.
std::optional<Place> placeInLine(std::string_view line) {
    constexpr std::size_t offsetSize = 10;
    constexpr std::size_t generationSize = 5;
    if (line.size() != lineSize || line[offsetSize] != ' ' || line[16] != ' ' ||
        !isEndOfLine(line.substr(18))) {
        return std::nullopt;
    }
    const auto offset = integerOf(line.substr(0, offsetSize));
    const auto generation = integerOf(line.substr(offsetSize + 1, generationSize));
    const char kind = line[17];
    if (!offset || !generation || (kind != 'n' && kind != 'f')) {
        return std::nullopt;
    }
    return Place{.kind = kind == 'n' ? Place::Kind::plain : Place::Kind::free,
                 .offset = *offset,
                 .number = static_cast<std::uint32_t>(*generation)};
}

} // namespace

std::optional<TableSection> TableSection::at(FileBytes& file, std::uint64_t offset) {
    TableSection section;
    std::uint64_t end = offset;
    const auto word = file.takeValue(end);
    const bool isGood = word && (*word == "xref"sv ? section.readTable(file, end)
                                                   : section.readStream(file, offset));
    return isGood ? std::optional(std::move(section)) : std::nullopt;
}

bool TableSection::readTable(FileBytes& file, std::uint64_t offset) {
    constexpr std::size_t mostRanges = 1000;
    while (m_ranges.size() < mostRanges) {
        std::uint64_t next = offset;
        if (file.takeValue(next) == "trailer"sv) {
            const auto trailer = file.takeValue(next);
            m_trailer = trailer.value_or(""sv);
            return trailer && isDictionary(m_trailer);
        }
        if (!readRange(file, offset)) {
            return false;
        }
    }
    return false;
}

// Two numbers, and as many lines as the second says. Some writers number them from 1 in spite of
// the one for 0 at their beginning; that is left to others.
bool TableSection::readRange(FileBytes& file, std::uint64_t& offset) {
    const auto first = integerOf(file.takeValue(offset).value_or(""sv));
    const auto count = integerOf(file.takeValue(offset).value_or(""sv));
    if (!first || !count || *first > mostObjects || *count > mostObjects || offset > file.size() ||
        (file.size() - offset) / lineSize < *count) {
        return false;
    }
    const std::string_view blanks = file.at(offset, lineSize);
    offset += std::min(blanks.find_first_not_of(" \r\n"), blanks.size());
    m_ranges.push_back({*first, *count, offset});
    offset += *count * lineSize;
    const auto place =
        *count > 0 ? find(file, static_cast<std::uint32_t>(*first)) : std::optional(Place());
    return place && (*first != 1 || place->kind == Place::Kind::plain);
}

bool TableSection::readStream(FileBytes& file, std::uint64_t offset) {
    if (!takeObjectHeader(file, offset)) {
        return false;
    }
    m_trailer = file.takeValue(offset).value_or(""sv);
    const auto trailer = Dictionary::of(m_trailer);
    if (!trailer || (*trailer)["/Type"] != "/XRef"sv || !readWidths((*trailer)["/W"]) ||
        !readRanges((*trailer)["/Index"], (*trailer)["/Size"])) {
        return false;
    }
    auto data =
        streamData(file, offset, *trailer, integerOf((*trailer)["/Length"]), largestEntries);
    if (!data) {
        return false;
    }
    m_entries = std::move(*data);
    return undoPredictorOf(*trailer) &&
           m_entries.size() / entrySize() >= m_ranges.back().start + m_ranges.back().count;
}

bool TableSection::readWidths(std::string_view value) {
    constexpr std::array<std::uint64_t, 3> widest{4, 8, 4};
    if (!isArray(value)) {
        return false;
    }
    ValueReader reader(value);
    while (const auto item = reader.next()) {
        const auto width = integerOf(*item);
        if (!width || m_widths.size() == widest.size() || *width > widest[m_widths.size()]) {
            return false;
        }
        m_widths.push_back(static_cast<std::size_t>(*width));
    }
    return m_widths.size() == widest.size() && m_widths[1] > 0;
}

std::size_t TableSection::entrySize() const {
    return std::accumulate(m_widths.begin(), m_widths.end(), std::size_t{0});
}

bool TableSection::readRanges(std::string_view index, std::string_view size) {
    const std::string all = std::string("[0 ").append(size).append("]");
    ValueReader reader(index.empty() ? std::string_view(all) : index);
    std::uint64_t start = 0;
    while (const auto item = reader.next()) {
        const auto first = integerOf(*item);
        const auto count = integerOf(reader.next().value_or(""sv));
        if (!first || !count || *first > mostObjects || *count > mostObjects - start) {
            return false;
        }
        m_ranges.push_back({*first, *count, start});
        start += *count;
    }
    return start > 0;
}

bool TableSection::undoPredictorOf(const Dictionary& stream) {
    const std::string_view parameters = stream["/DecodeParms"];
    if (parameters.empty()) {
        return true;
    }
    const auto values = Dictionary::of(parameters);
    const auto predictor = values ? integerOf((*values)["/Predictor"]) : std::nullopt;
    const bool isBytes = values && isUsual((*values)["/Colors"], "1") &&
                         isUsual((*values)["/BitsPerComponent"], "8");
    return predictor && *predictor >= 10 && *predictor <= 15 && isBytes &&
           integerOf((*values)["/Columns"]) == entrySize() && undoPredictor(m_entries, entrySize());
}

std::optional<Place> TableSection::find(FileBytes& file, std::uint32_t number) const {
    const auto found = std::ranges::find_if(m_ranges, [number](const Range& range) {
        return number >= range.first && number - range.first < range.count;
    });
    if (found == m_ranges.end()) {
        return Place();
    }
    const std::uint64_t index = number - found->first;
    return m_widths.empty() ? placeInLine(file.at(found->start + index * lineSize, lineSize))
                            : placeInStream(found->start + index);
}

std::optional<Place> TableSection::placeInStream(std::uint64_t index) const {
    std::string_view bytes = std::string_view(m_entries).substr(
        static_cast<std::size_t>(index) * entrySize(), entrySize());
    const auto take = [&bytes](std::size_t width) {
        const std::uint64_t number = bigEndian(bytesOf(bytes.substr(0, width)));
        bytes.remove_prefix(width);
        return number;
    };
    const std::uint64_t kind = m_widths[0] == 0 ? 1 : take(m_widths[0]);
    const std::uint64_t second = take(m_widths[1]);
    const auto third = static_cast<std::uint32_t>(take(m_widths[2]));
    switch (kind) {
    case 0: return Place{.kind = Place::Kind::free};
    case 1: return Place{.kind = Place::Kind::plain, .offset = second, .number = third};
    case 2: return Place{.kind = Place::Kind::packed, .offset = second, .number = third};
    default: return std::nullopt;
    }
}

} // namespace platform::pdf
