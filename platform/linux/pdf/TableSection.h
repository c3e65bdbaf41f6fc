// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/pdf/FileBytes.h"
#include "platform/linux/pdf/Values.h"

#include <vector>

namespace platform::pdf {

/// More objects than are dealt with here.
inline constexpr std::uint64_t mostObjects = 8U << 20U;

/// Where an object is.
struct Place {
    enum class Kind : std::uint8_t {
        none,  ///< the table says nothing of it
        free,  ///< nowhere
        plain, ///< at an offset in the file
        packed ///< in a stream of objects
    };

    Kind kind = Kind::none;
    std::uint64_t offset = 0; ///< in the file, or the number of the stream
    std::uint32_t number = 0; ///< the generation, or which of the objects in the stream it is
};

/// A section of the table of objects: a table in the old form (ISO 32000-2, 7.5.4), entries of
/// which are read when they are asked for, or a stream (7.5.8), which is expanded as a whole.
/// Anything unusual is taken for damage. Any thread.
class TableSection {
public:
    /// The section at `offset`; nullopt where there is none.
    [[nodiscard]] static std::optional<TableSection> at(FileBytes& file, std::uint64_t offset);

    /// What its trailer says, which is a dictionary.
    [[nodiscard]] const std::string& trailer() const { return m_trailer; }
    /// Where it says that an object is; nullopt when it cannot be told.
    [[nodiscard]] std::optional<Place> find(FileBytes& file, std::uint32_t number) const;

private:
    /// Entries of objects with consecutive numbers.
    struct Range {
        std::uint64_t first;
        std::uint64_t count;
        std::uint64_t start; ///< an offset in the file, or among the entries of a stream
    };

    bool readTable(FileBytes& file, std::uint64_t offset);
    bool readRange(FileBytes& file, std::uint64_t& offset);
    bool readStream(FileBytes& file, std::uint64_t offset);
    bool readWidths(std::string_view value);
    bool readRanges(std::string_view index, std::string_view size);
    bool undoPredictorOf(const Dictionary& stream);
    [[nodiscard]] std::optional<Place> placeInStream(std::uint64_t index) const;
    [[nodiscard]] std::size_t entrySize() const;

    std::string m_trailer;
    std::vector<Range> m_ranges;
    std::vector<std::size_t> m_widths; ///< of a stream's fields, in bytes
    std::string m_entries;             ///< of a stream
};

} // namespace platform::pdf
