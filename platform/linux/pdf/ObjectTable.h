// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/pdf/TableSection.h"

namespace platform::pdf {

/// The table of objects of a PDF (ISO 32000-2, 7.5.4 to 7.5.8), as it is named at the end of the
/// file, without those that writers made for readers who know no streams. Nothing is repaired. One
/// thread at a time.
class ObjectTable {
public:
    /// nullopt when there is none, when it has more than 32 sections or when anything about it is
    /// unusual. `file` must outlive this.
    [[nodiscard]] static std::optional<ObjectTable> of(FileBytes& file);

    /// Where the newest section is.
    [[nodiscard]] std::uint64_t start() const { return m_start; }
    /// The dictionary that the newest section has for a trailer.
    [[nodiscard]] const std::string& trailer() const { return m_sections.front().trailer(); }
    /// Where an object is; nullopt when it cannot be told.
    [[nodiscard]] std::optional<Place> find(std::uint32_t number);

private:
    explicit ObjectTable(FileBytes& file)
        : m_file(&file) {}

    bool readSections();

    FileBytes* m_file;
    std::uint64_t m_start = 0;
    std::vector<TableSection> m_sections; ///< newest first
};

} // namespace platform::pdf
