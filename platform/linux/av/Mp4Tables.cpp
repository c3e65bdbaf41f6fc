// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/av/Mp4Tables.h"

#include "platform/linux/IsoBoxes.h"

#include <algorithm>
#include <array>
#include <span>

namespace platform::av {
namespace {

// The way to the tables (ISO/IEC 14496-12, section 6.2.3), and those of them that are meant. The
// one of times stays: it is short unless the rate varies, and the rate is in it.
constexpr std::array way{fourCharCode("moov"), fourCharCode("trak"), fourCharCode("mdia"),
                         fourCharCode("minf"), fourCharCode("stbl")};
constexpr std::array tables{fourCharCode("stsz"), fourCharCode("stz2"), fourCharCode("stco"),
                            fourCharCode("co64"), fourCharCode("stsc"), fourCharCode("stss"),
                            fourCharCode("ctts"), fourCharCode("sdtp"), fourCharCode("sbgp")};

void follow(IsoBoxes& boxes, const IsoBox& parent, std::span<const std::uint32_t> rest,
            std::vector<std::uint64_t>& places) {
    constexpr std::uint64_t sizeOfSize = 4;
    boxes.forEach(parent, [&](const IsoBox& box) {
        if (!rest.empty() && box.type == rest.front()) {
            follow(boxes, box, rest.subspan(1), places); // five deep at most
        } else if (rest.empty() && std::ranges::find(tables, box.type) != tables.end()) {
            places.push_back(box.head + sizeOfSize);
        }
    });
}

} // namespace

std::vector<std::uint64_t> placesOfSampleTables(const OpenedFile& file) {
    IsoBoxes boxes(file);
    std::vector<std::uint64_t> places;
    follow(boxes, boxes.whole(), way, places);
    return places;
}

} // namespace platform::av
