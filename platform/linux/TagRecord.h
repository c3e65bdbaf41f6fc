// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/TagNames.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// What a file carries of tags in all its attributes, which list of them counts, and how another
/// list gets there. Nothing here touches a file.
namespace platform {

/// The attributes, in the order in which they are looked for.
struct TagAttributes {
    /// The desktops' list (freedesktop.org, "Common Extended Attributes").
    static constexpr const char* desktop = "user.xdg.tags";
    /// The Finder's list: copied as it is, or stored as a stream by Samba, which on some systems
    /// writes the colon in a name as U+F022.
    static constexpr std::array<const char*, 3> finder{
        "user.com.apple.metadata:_kMDItemUserTags",
        "user.DosStream.com.apple.metadata:_kMDItemUserTags:$DATA",
        "user.DosStream.com.apple.metadata\xEF\x80\xA2_kMDItemUserTags:$DATA",
    };
    /// What both lists were when both were last written.
    static const char* const base;
};

/// The raw values on one file; absent ones are not there.
struct TagRecord {
    using Value = std::optional<std::string>;

    Value desktop;
    std::array<Value, TagAttributes::finder.size()> finder;
    Value base;

    /// The names that count, without colours; nullopt when no list can be read.
    [[nodiscard]] std::optional<TagNames::Names> names() const;

    /// Whether one of the Finder's lists cannot be read.
    [[nodiscard]] bool isDamaged() const;
};

/// One attribute and its new value, or none for its removal.
struct TagChange {
    const char* attribute;
    TagRecord::Value value;
};

/// The changes that make `names` the list of `record`, in an order in which no step shows a name
/// that neither the old nor the new list has. nullopt when a name needs the Finder's list, which
/// takes no texts but UTF-8.
[[nodiscard]] std::optional<std::vector<TagChange>> changesFor(const TagRecord& record,
                                                               const TagNames::Names& names);

/// The value of `attribute` in `record`; the record must outlive the reference.
[[nodiscard]] TagRecord::Value& valueOf(TagRecord& record, const char* attribute);

} // namespace platform
