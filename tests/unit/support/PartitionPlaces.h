// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/PartitionMap.h"

#include <cstdint>
#include <ostream>
#include <vector>

/// Where a partition lies.
struct Place {
    unsigned number;
    std::uint64_t firstByte;
    std::uint64_t byteLength;
    bool operator==(const Place&) const = default;
};

inline std::ostream& operator<<(std::ostream& stream, const Place& place) {
    return stream << place.number << ": " << place.firstByte << " + " << place.byteLength;
}

/// Those of all partitions, in the order of the map.
inline std::vector<Place> places(const platform::hdiutil::PartitionMap& map) {
    std::vector<Place> result;
    for (const auto& partition : map.partitions) {
        result.push_back({partition.number, partition.firstByte, partition.byteLength});
    }
    return result;
}
