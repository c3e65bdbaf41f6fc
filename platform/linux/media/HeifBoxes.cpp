// SPDX-License-Identifier: Apache-2.0
// Boxes: ISO/IEC 14496-12, section 4.2; where the decoders' configurations are: ISO/IEC 23008-12,
// section 9.3; what is in them: ISO/IEC 14496-15, section 8.3.3 (HEVC), and "AV1 Codec ISO Media
// File Format Binding", section 2.3.
#include "platform/linux/media/HeifBoxes.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"

namespace platform::media {
namespace {

constexpr int mostBoxes = 4096;

// Where the properties of the pictures are.
std::optional<HeifContent> propertiesOf(const OpenedFile& file) {
    const auto content = metaOfHeif(file);
    const auto properties = content ? HeifBoxes(file, *content).find("iprp") : std::nullopt;
    return properties ? HeifBoxes(file, *properties).find("ipco") : std::nullopt;
}

// Whether the byte at `index` of a configuration has the masked bits as `wanted`.
bool hasBits(const OpenedFile& file, const HeifContent& content, std::size_t index, unsigned mask,
             unsigned wanted) {
    std::array<std::byte, 1> byte{};
    return index < content.length && file.read(content.offset + index, byte) &&
           (std::to_integer<unsigned>(byte[0]) & mask) == wanted;
}

} // namespace

HeifBoxes::HeifBoxes(const OpenedFile& file, const HeifContent& where)
    : m_file(file)
    , m_next(where.offset)
    , m_end(where.offset + where.length) {}

std::optional<HeifContent> HeifBoxes::next() {
    constexpr std::uint64_t shortHead = 8;
    constexpr std::uint64_t longHead = 16;
    std::array<std::byte, longHead> head{};
    const std::uint64_t room = m_end - m_next;
    if (room < shortHead || m_file.readSome(m_next, head) < shortHead) {
        return std::nullopt;
    }
    std::uint64_t size = bigEndian<std::uint32_t>(head, 0);
    const std::uint64_t headSize = size == 1 ? longHead : shortHead;
    if (size <= 1) { // 1: a longer number follows; 0: to the end
        size = size == 1 ? bigEndian<std::uint64_t>(head, shortHead) : room;
    }
    if (size < headSize || size > room) {
        return std::nullopt;
    }
    m_type = {head[4], head[5], head[6], head[7]};
    const HeifContent content{m_next + headSize, size - headSize};
    m_next += size;
    return content;
}

bool HeifBoxes::isOf(std::string_view type) const {
    return hasTextAt(m_type, 0, type);
}

std::optional<HeifContent> HeifBoxes::find(std::string_view type) {
    for (int i = 0; i < mostBoxes; ++i) {
        const auto content = next();
        if (!content || isOf(type)) {
            return content;
        }
    }
    return std::nullopt;
}

std::optional<HeifContent> metaOfHeif(const OpenedFile& file) {
    constexpr std::uint64_t versionSize = 4;
    const auto content = HeifBoxes(file, {0, file.size()}).find("meta");
    return content && content->length >= versionSize
               ? std::optional(
                     HeifContent{content->offset + versionSize, content->length - versionSize})
               : std::nullopt;
}

bool isMonochromeHeif(const OpenedFile& file) {
    constexpr std::size_t chromaFormat = 16; // of HEVC: 0 in two bits for none
    constexpr std::size_t monochromeFlag = 2;
    const auto properties = propertiesOf(file);
    if (!properties) {
        return false;
    }
    bool isFound = false;
    HeifBoxes boxes(file, *properties);
    for (int i = 0; i < mostBoxes; ++i) {
        const auto content = boxes.next();
        if (!content) {
            break;
        }
        const bool isHevc = boxes.isOf("hvcC");
        if (!isHevc && !boxes.isOf("av1C")) {
            continue;
        }
        isFound = isHevc ? hasBits(file, *content, chromaFormat, 0x03, 0)
                         : hasBits(file, *content, monochromeFlag, 0x10, 0x10);
        if (!isFound) {
            return false;
        }
    }
    return isFound;
}

std::uint64_t endOfHeifDescription(const OpenedFile& file) {
    HeifBoxes boxes(file, {0, file.size()});
    std::uint64_t end = 0;
    for (int i = 0; i < mostBoxes; ++i) {
        if (!boxes.next()) {
            break;
        }
        if (!boxes.isOf("mdat")) {
            end = boxes.position();
        }
    }
    return boxes.position() == file.size() ? end : file.size();
}

} // namespace platform::media
