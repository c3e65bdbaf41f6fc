// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/UdifResources.h"

#include "platform/PropertyList.h"
#include "platform/linux/ByteOrder.h"
#include "platform/linux/hdiutil/ByteSource.h"

#include <cstdint>
#include <utility>

namespace platform::hdiutil {
namespace {

using Resources = std::vector<Data>;

constexpr std::uint32_t blockTableType = 0x626C6B78; // "blkx"

// Counts of resource maps are kept less one, so that 0xFFFF is none.
std::size_t countAt(DataView bytes, std::size_t offset) {
    return static_cast<std::uint16_t>(bigEndian<std::uint16_t>(bytes, offset) + 1);
}

std::optional<DataView> part(DataView whole, std::size_t offset, std::size_t length) {
    return isInside(offset, length, whole.size()) ? std::optional(whole.subspan(offset, length))
                                                  : std::nullopt;
}

// All of `whole` from `offset` on, when that is at least `length` bytes.
std::optional<DataView> rest(DataView whole, std::size_t offset, std::size_t length) {
    return part(whole, offset, length) ? std::optional(whole.subspan(offset)) : std::nullopt;
}

class ResourceFork {
public:
    explicit ResourceFork(DataView fork)
        : m_budget(fork.size()) {
        constexpr std::size_t headerSize = 16;
        if (fork.size() < headerSize) {
            return;
        }
        m_data = part(fork, bigEndian<std::uint32_t>(fork, 0), bigEndian<std::uint32_t>(fork, 8));
        m_map = part(fork, bigEndian<std::uint32_t>(fork, 4), bigEndian<std::uint32_t>(fork, 12));
    }

    std::optional<Resources> blockTables() {
        constexpr std::size_t mapHeaderSize = 28;
        if (!m_data || !m_map || m_map->size() < mapHeaderSize) {
            return std::nullopt;
        }
        const auto types = rest(*m_map, bigEndian<std::uint16_t>(*m_map, 24), 2);
        const auto entries = types ? part(*types, 2, countAt(*types, 0) * typeSize) : types;
        if (!entries) {
            return std::nullopt;
        }
        for (std::size_t offset = 0; offset < entries->size(); offset += typeSize) {
            if (bigEndian<std::uint32_t>(*entries, offset) == blockTableType) {
                return ofType(*types, entries->subspan(offset, typeSize));
            }
        }
        return Resources();
    }

private:
    static constexpr std::size_t typeSize = 8;
    static constexpr std::size_t referenceSize = 12;

    std::optional<Resources> ofType(DataView types, DataView entry) {
        const auto references =
            part(types, bigEndian<std::uint16_t>(entry, 6), countAt(entry, 4) * referenceSize);
        if (!references) {
            return std::nullopt;
        }
        Resources result;
        for (std::size_t offset = 0; offset < references->size(); offset += referenceSize) {
            auto resource = resourceOf(references->subspan(offset, referenceSize));
            if (!resource) {
                return std::nullopt;
            }
            result.push_back(*std::move(resource));
        }
        return result;
    }

    std::optional<Data> resourceOf(DataView reference) {
        // The upper byte holds attributes.
        const std::uint32_t place = bigEndian<std::uint32_t>(reference, 4) & 0xFFFFFFU;
        const auto length = part(*m_data, place, 4);
        const auto bytes =
            length ? part(*m_data, place + 4U, bigEndian<std::uint32_t>(*length, 0)) : length;
        // Resources that share their bytes would let a small fork grow large.
        if (!bytes || bytes->size() > m_budget) {
            return std::nullopt;
        }
        m_budget -= bytes->size();
        return Data(bytes->begin(), bytes->end());
    }

    std::optional<DataView> m_data;
    std::optional<DataView> m_map;
    std::size_t m_budget;
};

} // namespace

std::optional<Resources> blockTablesOfPropertyList(DataView bytes) {
    const auto root = PropertyList::parse(bytes);
    const PropertyList* fork = root ? root->valueForKey("resource-fork") : nullptr;
    const PropertyList* list = fork != nullptr ? fork->valueForKey("blkx") : nullptr;
    if (list == nullptr || list->array() == nullptr) {
        return std::nullopt;
    }
    Resources result;
    for (const PropertyList& entry : *list->array()) {
        const PropertyList* table = entry.valueForKey("Data");
        if (table == nullptr || table->data() == nullptr) {
            return std::nullopt;
        }
        result.push_back(*table->data());
    }
    return result;
}

std::optional<Resources> blockTablesOfResourceFork(DataView fork) {
    return ResourceFork(fork).blockTables();
}

} // namespace platform::hdiutil
