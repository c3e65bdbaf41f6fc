// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::media {

/// What an XMP packet says of a photograph: the simple properties of the image itself, not of those
/// that it was made from (ISO 16684-1, which writes them as RDF/XML). Namespaces are told by the
/// prefixes that every program uses for them: "exif:FNumber". One pass over the packet, without a
/// library: those for XML follow the nesting of hostile packets as deep as it goes. Any thread.
class XmpPacket {
public:
    /// `packet` is UTF-8 and must outlive this. What comes behind a damaged place is not read.
    explicit XmpPacket(std::string_view packet);

    /// The text of a property, or of the first item of a list, which is the default one of those in
    /// several languages; nullopt without one.
    [[nodiscard]] std::optional<std::string> text(std::string_view name) const;
    /// Whether there is any property in the namespace with that prefix.
    [[nodiscard]] bool hasNamespace(std::string_view prefix) const;

private:
    struct Property {
        std::string_view name;
        std::optional<std::string_view> value; // as it stands in the packet
    };

    [[nodiscard]] const Property* find(std::string_view name) const;
    Property* add(std::string_view name);
    void addAttributes(std::string_view attributes);

    class Walk;
    std::vector<Property> m_properties;
};

} // namespace platform::media
