// SPDX-License-Identifier: Apache-2.0
// Boxes: ISO/IEC 14496-12, section 4.2; where the decoders' configurations are: ISO/IEC 23008-12,
// section 9.3; what is in them: ISO/IEC 14496-15, section 8.3.3 (HEVC), and "AV1 Codec ISO Media
// File Format Binding", section 2.3.
#include "platform/linux/media/HeifBoxes.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"

#include <array>
#include <optional>
#include <string_view>

namespace platform::media {
namespace {

constexpr int mostBoxes = 4096;

// What is in a box.
struct Content {
    std::uint64_t offset;
    std::uint64_t length;
};

// Goes from box to box in some part of a file.
class Boxes {
public:
    Boxes(const ImageFile& file, const Content& where)
        : m_file(file)
        , m_next(where.offset)
        , m_end(where.offset + where.length) {}

    // The content of the next box; nullopt at the end, or where sizes make no sense.
    std::optional<Content> next() {
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
        const Content content{m_next + headSize, size - headSize};
        m_next += size;
        return content;
    }
    // Whether the box that was found last is of that type.
    [[nodiscard]] bool isOf(std::string_view type) const { return hasTextAt(m_type, 0, type); }

    std::optional<Content> find(std::string_view type) {
        for (int i = 0; i < mostBoxes; ++i) {
            const auto content = next();
            if (!content || isOf(type)) {
                return content;
            }
        }
        return std::nullopt;
    }

private:
    const ImageFile& m_file;
    std::uint64_t m_next;
    std::uint64_t m_end;
    std::array<std::byte, 4> m_type{};
};

// Where the properties of the pictures are.
std::optional<Content> propertiesOf(const ImageFile& file) {
    constexpr std::uint64_t versionSize = 4;
    auto content = Boxes(file, {0, file.size()}).find("meta");
    if (!content || content->length < versionSize) {
        return std::nullopt;
    }
    content =
        Boxes(file, {content->offset + versionSize, content->length - versionSize}).find("iprp");
    return content ? Boxes(file, *content).find("ipco") : std::nullopt;
}

// Whether the byte at `index` of a configuration has the masked bits as `wanted`.
bool hasBits(const ImageFile& file, const Content& content, std::size_t index, unsigned mask,
             unsigned wanted) {
    std::array<std::byte, 1> byte{};
    return index < content.length && file.read(content.offset + index, byte) &&
           (std::to_integer<unsigned>(byte[0]) & mask) == wanted;
}

} // namespace

bool isMonochromeHeif(const ImageFile& file) {
    constexpr std::size_t chromaFormat = 16; // of HEVC: 0 in two bits for none
    constexpr std::size_t monochromeFlag = 2;
    const auto properties = propertiesOf(file);
    if (!properties) {
        return false;
    }
    bool isFound = false;
    Boxes boxes(file, *properties);
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

} // namespace platform::media
