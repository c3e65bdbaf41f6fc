// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/pdf/ObjectTable.h"

#include <map>

namespace platform::pdf {

/// Values of objects, wherever the table says that they are. Streams of objects (ISO
/// 32000-2, 7.5.7) are expanded once. One thread at a time.
class ObjectValues {
public:
    /// Both must outlive this.
    ObjectValues(FileBytes& file, ObjectTable& table)
        : m_file(file)
        , m_table(table) {}

    /// The value of the object at `place`: of a stream its dictionary. It is there until the next
    /// call. nullopt when another object is there, or none that can be told.
    [[nodiscard]] std::optional<std::string_view> valueOf(std::uint32_t number, const Place& place);

private:
    struct PackedObjects {
        struct Entry {
            std::uint64_t number;
            std::size_t start;
        };

        std::string bytes;
        std::vector<Entry> entries;
    };

    std::optional<std::string_view> plainValueOf(std::uint32_t number, std::uint64_t& offset,
                                                 std::uint32_t generation);
    std::optional<std::string_view> packedValueOf(std::uint32_t number, const Place& place);
    const PackedObjects* packedObjectsIn(std::uint32_t stream);
    std::optional<PackedObjects> readStream(std::uint32_t stream);
    std::optional<std::uint64_t> lengthOf(std::string_view value);
    static bool readEntries(PackedObjects& objects, const Dictionary& stream);

    FileBytes& m_file;
    ObjectTable& m_table;
    std::map<std::uint32_t, PackedObjects> m_streams;
};

} // namespace platform::pdf
