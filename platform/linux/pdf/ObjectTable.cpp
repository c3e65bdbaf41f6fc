// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/ObjectTable.h"

#include <algorithm>

namespace platform::pdf {
namespace {

using namespace std::string_view_literals;

// What the end of the file says of where the table is.
std::optional<std::uint64_t> startOfTable(FileBytes& file) {
    constexpr std::uint64_t furthest = 1024; // from the end, as readers agree
    constexpr auto mark = "startxref"sv;
    const std::string_view end = file.at(file.size() - std::min(file.size(), furthest), furthest);
    const auto place = end.rfind(mark);
    if (place == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view rest = end.substr(place);
    return takeToken(rest) == mark ? integerOf(takeToken(rest).value_or(""sv)) : std::nullopt;
}

} // namespace

std::optional<ObjectTable> ObjectTable::of(FileBytes& file) {
    const auto start = startOfTable(file);
    if (!start) {
        return std::nullopt;
    }
    ObjectTable table(file);
    table.m_start = *start;
    return table.readSections() ? std::optional(std::move(table)) : std::nullopt;
}

bool ObjectTable::readSections() {
    constexpr std::size_t most = 32;
    std::optional<std::uint64_t> next = m_start;
    while (next && m_sections.size() < most) {
        auto section = TableSection::at(*m_file, *next);
        const auto trailer = section ? Dictionary::of(section->trailer()) : std::nullopt;
        if (!trailer || !(*trailer)["/XRefStm"].empty()) {
            return false;
        }
        const std::string_view previous = (*trailer)["/Prev"];
        if (previous.empty()) {
            m_sections.push_back(std::move(*section));
            return true;
        }
        next = integerOf(previous);
        m_sections.push_back(std::move(*section));
    }
    return false;
}

std::optional<Place> ObjectTable::find(std::uint32_t number) {
    for (const TableSection& section : m_sections) {
        const auto place = section.find(*m_file, number);
        if (!place || place->kind != Place::Kind::none) {
            return place;
        }
    }
    return Place();
}

} // namespace platform::pdf
