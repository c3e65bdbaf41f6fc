// SPDX-License-Identifier: Apache-2.0
// XMP (ISO 16684-1, section 7: the forms of RDF/XML that a property may have).
#include "platform/linux/media/XmpPacket.h"

#include "platform/linux/Utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <utility>

namespace platform::media {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t mostProperties = 256;
constexpr std::string_view blanks = " \t\r\n";
// "xap" is what "xmp" was called at first.
constexpr std::array prefixes{"tiff"sv, "exif"sv, "exifEX"sv, "aux"sv, "dc"sv, "xmp"sv, "xap"sv};

std::string_view prefixOf(std::string_view name) {
    return name.substr(0, std::min(name.find(':'), name.size()));
}

// Takes what comes before the first of `ends` off the text.
std::string_view takeUntil(std::string_view& text, std::string_view ends) {
    const auto taken = text.substr(0, text.find_first_of(ends));
    text.remove_prefix(taken.size());
    return taken;
}

void skipBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
}

// Goes behind `end`; false without one.
bool skipBehind(std::string_view& text, std::string_view end) {
    const auto place = text.find(end);
    text.remove_prefix(place == std::string_view::npos ? text.size() : place + end.size());
    return place != std::string_view::npos;
}

// A tag, from behind its "<" to before its ">", which may stand between quotation marks as well.
std::optional<std::string_view> takeTag(std::string_view& text) {
    std::string_view rest = text;
    for (takeUntil(rest, "\"'>"); !rest.empty(); takeUntil(rest, "\"'>")) {
        const char found = rest.front();
        rest.remove_prefix(1);
        if (found == '>') {
            const auto tag = text.substr(0, text.size() - rest.size() - 1);
            text = rest;
            return tag;
        }
        if (!skipBehind(rest, {&found, 1})) {
            break;
        }
    }
    return std::nullopt;
}

// The character that a reference stands for, without its "&" and ";".
std::optional<char32_t> characterOf(std::string_view reference) {
    constexpr std::array<std::pair<std::string_view, char32_t>, 5> names{
        {{"amp", U'&'}, {"lt", U'<'}, {"gt", U'>'}, {"quot", U'"'}, {"apos", U'\''}}};
    const auto* const named =
        std::ranges::find(names, reference, [](const auto& name) { return name.first; });
    if (named != names.end()) {
        return named->second;
    }
    if (!reference.starts_with('#')) {
        return std::nullopt;
    }
    reference.remove_prefix(1);
    const bool isHexadecimal = reference.starts_with('x');
    reference.remove_prefix(isHexadecimal ? 1 : 0);
    std::uint32_t number = 0;
    const char* const end = reference.data() + reference.size();
    const auto result = std::from_chars(reference.data(), end, number, isHexadecimal ? 16 : 10);
    const bool isCharacter = number < 0xD800 || (number > 0xDFFF && number <= 0x10FFFF);
    return result.ec == std::errc() && result.ptr == end && isCharacter
               ? std::optional(static_cast<char32_t>(number))
               : std::nullopt;
}

// The text with characters in place of the references to them; others stay as they are.
std::string withoutReferences(std::string_view value) {
    constexpr std::size_t longestReference = 10;
    std::string text;
    while (!value.empty()) {
        text.append(takeUntil(value, "&"));
        const auto end = value.substr(0, longestReference).find(';');
        const auto character =
            end == std::string_view::npos ? std::nullopt : characterOf(value.substr(1, end - 1));
        if (character) {
            appendUTF8(text, *character);
            value.remove_prefix(end + 1);
        } else if (!value.empty()) {
            text.push_back('&');
            value.remove_prefix(1);
        }
    }
    return text;
}

} // namespace

// Goes from tag to tag. The properties are what is in the elements in "rdf:RDF", as attributes or
// as elements; what is further down are their parts.
class XmpPacket::Walk {
public:
    Walk(XmpPacket& packet, std::string_view text)
        : m_packet(packet)
        , m_rest(text) {}

    void run() {
        bool goesOn = true;
        while (goesOn && toNextTag()) {
            const auto tag = takeTag(m_rest);
            goesOn = tag && (tag->starts_with('/') ? close() : open(*tag));
        }
    }

private:
    // Stands behind the "<" of a tag then; instructions and comments are none. Declarations, which
    // are made to confuse readers, end the walk.
    bool toNextTag() {
        while (true) {
            m_textBefore = takeUntil(m_rest, "<");
            if (m_rest.empty()) {
                return false;
            }
            m_rest.remove_prefix(1);
            if (!m_rest.starts_with('?') && !m_rest.starts_with('!')) {
                return true;
            }
            const bool isComment = m_rest.starts_with("!--");
            if ((m_rest.front() == '!' && !isComment) ||
                !skipBehind(m_rest, isComment ? "-->" : "?>")) {
                return false;
            }
        }
    }

    bool open(std::string_view tag) {
        const bool isEmpty = tag.ends_with('/');
        tag.remove_suffix(isEmpty ? 1 : 0);
        const auto name = takeUntil(tag, blanks);
        if (m_depthOfProperties && m_depth + 1 == *m_depthOfProperties) {
            m_packet.addAttributes(tag);
        } else if (m_depthOfProperties == m_depth) {
            m_property = m_packet.add(name);
        } else if (!m_depthOfProperties && name == "rdf:RDF") {
            m_depthOfProperties = m_depth + 2;
        }
        m_depth += isEmpty ? 0 : 1;
        m_isBehindOpening = !isEmpty;
        return true;
    }

    // False behind the last element. The text of a property is the first one that has no element in
    // it, be it its own or that of a part.
    bool close() {
        if (m_isBehindOpening && m_property != nullptr && !m_property->value) {
            m_property->value = m_textBefore;
        }
        m_isBehindOpening = false;
        m_depth -= m_depth > 0 ? 1 : 0;
        if (m_depthOfProperties == m_depth) {
            m_property = nullptr;
        }
        return m_depth > 0;
    }

    XmpPacket& m_packet;
    std::string_view m_rest;
    std::string_view m_textBefore; // the tag
    std::size_t m_depth = 0;       // of what is opened next
    std::optional<std::size_t> m_depthOfProperties;
    Property* m_property = nullptr; // the one that the walk is in
    bool m_isBehindOpening = false;
};

XmpPacket::XmpPacket(std::string_view packet) {
    m_properties.reserve(mostProperties); // so that they stay where they are
    Walk(*this, packet).run();
}

const XmpPacket::Property* XmpPacket::find(std::string_view name) const {
    const auto found = std::ranges::find(m_properties, name, &Property::name);
    return found == m_properties.end() ? nullptr : &*found;
}

// The new property; null for one that nobody asks for, or that is there already.
XmpPacket::Property* XmpPacket::add(std::string_view name) {
    const bool isWanted = std::ranges::find(prefixes, prefixOf(name)) != prefixes.end();
    if (!isWanted || m_properties.size() == mostProperties || find(name) != nullptr) {
        return nullptr;
    }
    return &m_properties.emplace_back(Property{name, std::nullopt});
}

void XmpPacket::addAttributes(std::string_view attributes) {
    for (skipBlanks(attributes); !attributes.empty(); skipBlanks(attributes)) {
        const auto name = takeUntil(attributes, "= \t\r\n");
        takeUntil(attributes, "\"'");
        if (attributes.empty()) {
            return;
        }
        const std::string_view mark = attributes.substr(0, 1);
        attributes.remove_prefix(1);
        const auto value = takeUntil(attributes, mark);
        attributes.remove_prefix(std::min<std::size_t>(attributes.size(), 1));
        if (Property* const property = add(name)) {
            property->value = value;
        }
    }
}

std::optional<std::string> XmpPacket::text(std::string_view name) const {
    const Property* const property = find(name);
    return property != nullptr && property->value
               ? std::optional(withoutReferences(*property->value))
               : std::nullopt;
}

bool XmpPacket::hasNamespace(std::string_view prefix) const {
    return std::ranges::any_of(m_properties, [prefix](const Property& property) {
        return prefixOf(property.name) == prefix;
    });
}

} // namespace platform::media
