// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/av/Mp4Tables.h"

#include "platform/linux/av/Mp4Boxes.h"

#include <span>

namespace platform::av {
namespace {

// The way to the tables (ISO/IEC 14496-12, section 6.2.3), and those of them that are meant. The
// one of times stays: it is short unless the rate varies, and the rate is in it.
constexpr std::array way{boxType("moov"), boxType("trak"), boxType("mdia"), boxType("minf"),
                         boxType("stbl")};
constexpr std::array tables{boxType("stsz"), boxType("stz2"), boxType("stco"),
                            boxType("co64"), boxType("stsc"), boxType("stss"),
                            boxType("ctts"), boxType("sdtp"), boxType("sbgp")};

void follow(Mp4Boxes& boxes, const Mp4Box& parent, std::span<const BoxType> rest,
            std::vector<std::uint64_t>& places) {
    constexpr std::uint64_t sizeOfSize = 4;
    boxes.forEach(parent, [&](const Mp4Box& box) {
        if (!rest.empty() && box.type == rest.front()) {
            follow(boxes, box, rest.subspan(1), places); // five deep at most
        } else if (rest.empty() && std::ranges::find(tables, box.type) != tables.end()) {
            places.push_back(box.head + sizeOfSize);
        }
    });
}

} // namespace

std::vector<std::uint64_t> placesOfSampleTables(const OpenedFile& file) {
    Mp4Boxes boxes(file);
    std::vector<std::uint64_t> places;
    follow(boxes, boxes.whole(), way, places);
    return places;
}

} // namespace platform::av
