// SPDX-License-Identifier: Apache-2.0
// Where the decoders' configurations are: ISO/IEC 23008-12, section 9.3; what is in them: ISO/IEC
// 14496-15, section 8.3.3 (HEVC), and "AV1 Codec ISO Media File Format Binding", section 2.3.
#include "platform/linux/media/HeifBoxes.h"

#include <array>

namespace platform::media {
namespace {

// Whether the byte at `index` of a configuration has the masked bits as `wanted`.
bool hasBits(const OpenedFile& file, const IsoBox& box, std::uint64_t index, unsigned mask,
             unsigned wanted) {
    std::array<std::byte, 1> byte{};
    return index < box.size() && file.read(box.start + index, byte) &&
           (std::to_integer<unsigned>(byte[0]) & mask) == wanted;
}

} // namespace

HeifDescription descriptionOfHeif(const OpenedFile& file) {
    constexpr std::uint64_t versionSize = 4;
    IsoBoxes boxes(file);
    HeifDescription description;
    std::uint64_t position = 0;
    boxes.forEach(boxes.whole(), [&](const IsoBox& box) {
        position = box.end;
        if (box.type != fourCharCode("mdat")) {
            description.end = position;
        }
        if (box.type == fourCharCode("meta") && box.size() >= versionSize && !description.meta) {
            description.meta = box;
            description.meta->start += versionSize;
        }
    });
    if (position != file.size()) {
        description.end = file.size();
    }
    return description;
}

bool isMonochromeHeif(const OpenedFile& file, const IsoBox& meta) {
    constexpr std::uint64_t chromaFormat = 16; // of HEVC: 0 in two bits for none
    constexpr std::uint64_t monochromeFlag = 2;
    IsoBoxes boxes(file);
    const auto properties = boxes.find(meta, fourCharCode("iprp"));
    const auto shared = properties ? boxes.find(*properties, fourCharCode("ipco")) : std::nullopt;
    bool isAny = false;
    bool areAll = true;
    boxes.forEach(shared.value_or(IsoBox()), [&](const IsoBox& box) {
        const bool isHevc = box.type == fourCharCode("hvcC");
        if (isHevc || box.type == fourCharCode("av1C")) {
            isAny = true;
            areAll = areAll && (isHevc ? hasBits(file, box, chromaFormat, 0x03, 0)
                                       : hasBits(file, box, monochromeFlag, 0x10, 0x10));
        }
    });
    return isAny && areAll;
}

} // namespace platform::media
