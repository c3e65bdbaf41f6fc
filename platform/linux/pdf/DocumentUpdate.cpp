// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/DocumentUpdate.h"

#include "platform/Format.h"

#include <algorithm>

namespace platform::pdf {
namespace {

// With zeros before it; a number with more digits stays as it is.
std::string padded(std::uint64_t number, std::size_t digits) {
    const std::string text = platform::format("{}", number);
    return std::string(digits - std::min(digits, text.size()), '0') + text;
}

} // namespace

void DocumentUpdate::name(Reference object, std::uint64_t offset) {
    if (m_numbers.insert(object.number).second) {
        m_objects.push_back({object, offset});
    }
}

void DocumentUpdate::write(Reference object, std::string_view value) {
    if (m_numbers.insert(object.number).second) {
        m_objects.push_back({object, m_fileSize + m_text.size()});
        m_text += platform::format("{} {} obj\n", object.number, object.generation);
        m_text.append(value).append("\nendobj\n");
    }
}

std::string DocumentUpdate::finish(std::uint64_t previous, std::string_view trailer) {
    const std::uint64_t table = m_fileSize + m_text.size();
    // Readers keep room for all objects below this number.
    const std::uint64_t end = m_numbers.empty() ? 0 : std::uint64_t{*m_numbers.rbegin()} + 1;
    m_text += "xref\n";
    writeTable();
    m_text += platform::format("trailer\n<</Size {}/Prev {}", end, previous);
    m_text.append(trailer);
    m_text += platform::format(">>\nstartxref\n{}\n%%EOF\n", table);
    return std::move(m_text);
}

void DocumentUpdate::writeTable() {
    std::ranges::sort(m_objects, {}, [](const Object& object) { return object.reference.number; });
    for (auto first = m_objects.begin(); first != m_objects.end();) {
        auto end = first + 1;
        while (end != m_objects.end() && end->reference.number == (end - 1)->reference.number + 1) {
            ++end;
        }
        m_text += platform::format("{} {}\n", first->reference.number, end - first);
        for (; first != end; ++first) {
            m_text.append(padded(first->offset, 10)).append(" ");
            m_text.append(padded(first->reference.generation, 5)).append(" n \n");
        }
    }
}

} // namespace platform::pdf
