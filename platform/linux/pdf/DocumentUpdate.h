// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/pdf/Values.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace platform::pdf {

/// An update of a PDF (ISO 32000-2, 7.5.6), made piece by piece: objects and a table of them, which
/// belong behind the last byte of the file. The first that is said of an object counts. One thread.
class DocumentUpdate {
public:
    explicit DocumentUpdate(std::uint64_t fileSize)
        : m_fileSize(fileSize)
        , m_text("\n") {}

    [[nodiscard]] std::size_t size() const { return m_text.size(); }
    [[nodiscard]] std::size_t numberOfObjects() const { return m_objects.size(); }
    /// The number behind the largest of an object.
    [[nodiscard]] std::uint64_t endOfNumbers() const;

    /// Names an object that is at this offset in the file, of at most ten digits.
    void name(Reference object, std::uint64_t offset);
    /// Writes an object.
    void write(Reference object, std::string_view value);
    /// The update with its table, which has `trailer` in its trailer. Another table comes between
    /// it and an older one at the offset `previous`. It has nothing but a free entry for
    /// endOfNumbers(): a reader has room for more numbers than that as soon as it has read it,
    /// which means that it missed something.
    [[nodiscard]] std::string finish(std::uint64_t previous, std::string_view trailer);

private:
    struct Object {
        Reference reference;
        std::uint64_t offset;
    };

    void writeTable();
    void writeTrailer(std::uint64_t size, std::uint64_t previous, std::string_view entries);

    std::uint64_t m_fileSize;
    std::string m_text;
    std::vector<Object> m_objects;
    std::set<std::uint32_t> m_numbers;
};

} // namespace platform::pdf
