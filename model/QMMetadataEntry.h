// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// One line of what is told of a file. Texts are UTF-8 and the entry's own. Entries live in shared
/// pointers; one thread at a time while an entry is changed, any number once it is only read.
struct QM_EXPORT QMMetadataEntry {
    /// Which line it is, the same in every language: "pageCount".
    std::optional<std::string> key;
    /// The label beside the value, in the user's language.
    std::optional<std::string> localizedKey;
    /// The value for people. The functions below always give it one.
    std::optional<std::string> value;
    /// Whether the display is to emphasise the line.
    bool isPrimary = false;

    /// What stands for a value that is absent.
    static constexpr std::string_view absentValue = "—";

    /// An entry that is not primary; never null. A value that is absent becomes `absentValue`; an
    /// empty one stays empty.
    [[nodiscard]] static std::shared_ptr<QMMetadataEntry>
    entryWithKey(std::optional<std::string> key, std::optional<std::string> localizedKey,
                 std::optional<std::string> value);

    /// The same, primary.
    [[nodiscard]] static std::shared_ptr<QMMetadataEntry>
    primaryEntryWithKey(std::optional<std::string> key, std::optional<std::string> localizedKey,
                        std::optional<std::string> value);
};

/// Entries in the order of display. None is null.
using QMMetadataEntries = std::vector<std::shared_ptr<QMMetadataEntry>>;
