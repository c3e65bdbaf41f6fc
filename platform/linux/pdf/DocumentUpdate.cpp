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

std::uint64_t DocumentUpdate::endOfNumbers() const {
    return m_numbers.empty() ? 0 : std::uint64_t{*m_numbers.rbegin()} + 1;
}

std::string DocumentUpdate::finish(std::uint64_t previous, std::string_view trailer) {
    const std::uint64_t end = endOfNumbers();
    const std::uint64_t between = m_fileSize + m_text.size();
    m_text += platform::format("xref\n{} 1\n0000000000 65535 f \n", end);
    writeTrailer(end + 1, previous, "");
    const std::uint64_t table = m_fileSize + m_text.size();
    m_text += "xref\n";
    writeTable();
    writeTrailer(end, between, trailer);
    m_text += platform::format("startxref\n{}\n%%EOF\n", table);
    return std::move(m_text);
}

void DocumentUpdate::writeTrailer(std::uint64_t size, std::uint64_t previous,
                                  std::string_view entries) {
    m_text += platform::format("trailer\n<</Size {}/Prev {}{}>>\n", size, previous, entries);
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
