// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/PropertyListGuard.h"

#include "platform/linux/ByteOrder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

// The binary format, as its reader in the open-source CoreFoundation describes it: a header
// "bplist00", the objects, a table of their offsets, and a trailer of 32 bytes.
namespace platform::PropertyListGuard {
namespace {

constexpr std::string_view header = "bplist00";
constexpr std::size_t trailerSize = 32;
constexpr std::uint64_t maximumExpandedSize = std::uint64_t{128} << 20;
constexpr std::uint64_t valueOverhead = 16;

struct Object {
    bool isContainer = false;
    std::uint64_t references = 0; // of a container
    std::size_t place = 0;        // of its references or its bytes in the file
    std::uint64_t size = 0;       // of any other value, in bytes
    std::size_t unit = 0;         // bytes per character of a text, 0 for what is no text
};

class BinaryChecker {
public:
    explicit BinaryChecker(DataView bytes)
        : m_bytes(bytes) {}

    bool check() {
        if (!readTrailer()) {
            return false;
        }
        m_states.resize(static_cast<std::size_t>(m_count));
        return walk(static_cast<std::size_t>(m_top));
    }

private:
    enum class Progress : std::uint8_t { unseen, open, done };
    struct State {
        Progress progress = Progress::unseen;
        std::uint64_t expanded = 0; // size of the value with everything below it
        std::size_t height = 0;     // levels below it, itself included
    };
    struct Frame {
        std::size_t index;
        Object object;
        std::uint64_t next = 0; // the next reference to follow
    };

    bool readTrailer();
    [[nodiscard]] std::optional<Object> objectAt(std::size_t index) const;
    [[nodiscard]] std::optional<Object> sizedObject(std::size_t at) const;
    [[nodiscard]] bool holdsNul(const Object& object) const;
    bool walk(std::size_t top);
    bool open(std::size_t index);
    bool follow(Frame& frame);
    bool close(const Frame& frame);
    bool absorb(std::size_t parent, std::size_t child);

    DataView m_bytes;
    std::uint64_t m_offsetSize = 0;
    std::uint64_t m_referenceSize = 0;
    std::uint64_t m_count = 0;
    std::uint64_t m_top = 0;
    std::uint64_t m_table = 0;
    std::vector<State> m_states;
    std::vector<Frame> m_open;
};

bool BinaryChecker::readTrailer() {
    if (m_bytes.size() < header.size() + trailerSize) {
        return false;
    }
    const DataView trailer = m_bytes.last(trailerSize);
    const std::uint64_t end = m_bytes.size() - trailerSize;
    m_offsetSize = bigEndian(trailer.subspan(6, 1));
    m_referenceSize = bigEndian(trailer.subspan(7, 1));
    m_count = bigEndian(trailer.subspan(8, 8));
    m_top = bigEndian(trailer.subspan(16, 8));
    m_table = bigEndian(trailer.subspan(24, 8));
    const auto isIntegerSize = [](std::uint64_t size) { return size >= 1 && size <= 8; };
    return isIntegerSize(m_offsetSize) && isIntegerSize(m_referenceSize) && m_table <= end &&
           m_count <= (end - m_table) / m_offsetSize && m_top < m_count;
}

// An object whose length stands in the low half of its marker, or, when that is 15, in the
// integer behind the marker. All of it lies before the table.
std::optional<Object> BinaryChecker::sizedObject(std::size_t at) const {
    const DataView objects = m_bytes.first(static_cast<std::size_t>(m_table));
    const auto marker = std::to_integer<unsigned>(objects[at]);
    std::uint64_t length = marker & 0x0FU;
    std::size_t begin = at + 1;
    if (length == 0x0F) {
        if (begin >= objects.size()) {
            return std::nullopt;
        }
        const auto integer = std::to_integer<unsigned>(objects[begin]);
        const std::size_t width = std::size_t{1} << (integer & 0x0FU);
        if (integer >> 4U != 1 || width > 8 || width > objects.size() - begin - 1) {
            return std::nullopt;
        }
        length = bigEndian(objects.subspan(begin + 1, width));
        begin += 1 + width;
    }
    const unsigned kind = marker >> 4U;
    const bool isContainer = kind >= 0xA;
    const std::uint64_t unit = isContainer ? m_referenceSize : (kind == 0x6 ? 2 : 1);
    const std::uint64_t factor = kind == 0xD ? 2 : 1; // keys, then values
    if (length > (objects.size() - begin) / unit / factor) {
        return std::nullopt;
    }
    const bool isText = kind == 0x5 || kind == 0x6;
    return Object{isContainer, isContainer ? length * factor : 0, begin, length * unit,
                  isText ? static_cast<std::size_t>(unit) : 0};
}

std::optional<Object> BinaryChecker::objectAt(std::size_t index) const {
    const auto entry = static_cast<std::size_t>(m_table + index * m_offsetSize);
    const std::uint64_t at =
        bigEndian(m_bytes.subspan(entry, static_cast<std::size_t>(m_offsetSize)));
    if (at < header.size() || at >= m_table) {
        return std::nullopt;
    }
    const auto place = static_cast<std::size_t>(at);
    switch (std::to_integer<unsigned>(m_bytes[place]) >> 4U) {
    case 0x4: // data
    case 0x5: // ASCII text
    case 0x6: // UTF-16 text
    case 0xA: // array
    case 0xB: // ordered set
    case 0xC: // set
    case 0xD: // dictionary
        return sizedObject(place);
    default: return Object{}; // numbers, dates, references: at most 16 bytes
    }
}

// Whether the object is a text with a NUL in it. libplist ends the process over one.
bool BinaryChecker::holdsNul(const Object& object) const {
    const DataView text =
        m_bytes.subspan(object.place, object.unit == 0 ? 0 : static_cast<std::size_t>(object.size));
    for (std::size_t at = 0; at < text.size(); at += object.unit) {
        if (bigEndian(text.subspan(at, object.unit)) == 0) {
            return true;
        }
    }
    return false;
}

bool BinaryChecker::open(std::size_t index) {
    const auto object = objectAt(index);
    if (!object || m_open.size() >= maximumDepth || holdsNul(*object)) {
        return false;
    }
    m_states[index] = {Progress::open, valueOverhead + object->size, 1};
    m_open.push_back({index, *object});
    return true;
}

bool BinaryChecker::absorb(std::size_t parent, std::size_t child) {
    State& state = m_states[parent];
    state.expanded += m_states[child].expanded;
    state.height = std::max(state.height, m_states[child].height + 1);
    return state.expanded <= maximumExpandedSize && state.height <= maximumDepth;
}

bool BinaryChecker::follow(Frame& frame) {
    const std::size_t parent = frame.index;
    const auto width = static_cast<std::size_t>(m_referenceSize);
    const std::size_t at = frame.object.place + static_cast<std::size_t>(frame.next) * width;
    const std::uint64_t child = bigEndian(m_bytes.subspan(at, width));
    ++frame.next;
    if (child >= m_count) {
        return false;
    }
    const auto index = static_cast<std::size_t>(child);
    if (m_states[index].progress == Progress::unseen) {
        return open(index);
    }
    // Otherwise it is a cycle.
    return m_states[index].progress == Progress::done && absorb(parent, index);
}

bool BinaryChecker::close(const Frame& frame) {
    const std::size_t index = frame.index;
    m_states[index].progress = Progress::done;
    m_open.pop_back();
    return m_open.empty() || absorb(m_open.back().index, index);
}

bool BinaryChecker::walk(std::size_t top) {
    bool sound = open(top);
    while (sound && !m_open.empty()) {
        Frame& frame = m_open.back();
        const bool hasMore = frame.object.isContainer && frame.next < frame.object.references;
        sound = hasMore ? follow(frame) : close(frame);
    }
    return sound;
}

// What the markup at the start of `text` holds between its brackets; nullopt where it has no end,
// or readers could differ on it: only comments and CDATA sections may hold brackets of others. What
// one reader skips and another does not could close, for the latter alone, what stays open.
std::optional<std::string_view> contentOfMarkup(std::string_view text) {
    constexpr std::string_view comment = "<!--";
    constexpr std::string_view verbatim = "<![CDATA[";
    const bool isComment = text.starts_with(comment);
    const bool isVerbatim = text.starts_with(verbatim);
    const auto end = isComment    ? text.find("-->", comment.size())
                     : isVerbatim ? text.find("]]>", verbatim.size())
                                  : text.find('>');
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view content = text.substr(1, end - 1);
    const bool isPlain =
        content.find_first_of("<[") == std::string_view::npos &&
        std::ranges::count(content, '"') % 2 == 0 &&
        (!content.starts_with('?') || (content.size() > 1 && content.ends_with('?')));
    return isComment || isVerbatim || isPlain ? std::optional(content) : std::nullopt;
}

} // namespace

bool isBinary(DataView bytes) {
    const DataView magic = bytesOf(std::string_view("bplist"));
    return bytes.size() >= magic.size() && std::ranges::equal(bytes.first(magic.size()), magic);
}

bool isSafeBinary(DataView bytes) {
    return bytes.size() <= maximumSize && BinaryChecker(bytes).check();
}

bool isSafeXML(DataView bytes) {
    if (bytes.size() > maximumSize || std::ranges::find(bytes, std::byte{0}) != bytes.end()) {
        return false;
    }
    const std::string_view text = charactersOf(bytes);
    std::size_t depth = 0;
    std::size_t length = 0;
    for (auto at = text.find('<'); at != std::string_view::npos; at = text.find('<', at + length)) {
        const auto content = contentOfMarkup(text.substr(at));
        if (!content) {
            return false;
        }
        length = content->size() + 1;
        const bool closes = content->starts_with('/');
        const std::string_view name = content->substr(closes ? 1 : 0, 5);
        if (!name.starts_with("dict") && name != "array") {
            continue;
        }
        if (closes && depth > 0) {
            --depth;
        } else if (!closes && !content->ends_with('/') && ++depth > maximumDepth) {
            return false;
        }
    }
    return true;
}

} // namespace platform::PropertyListGuard
