// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/LocalizedStrings.h"
#include "services/QMMetadataService.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

/// One row of an extractor's table: an entry, and how its value is found in what was read of a
/// file, a `Source`.
template <class Source>
struct QMMetadataField {
    std::string_view key;                               ///< of the catalogue
    decltype(&QMMetadataEntry::entryWithKey) makeEntry; ///< which kind of entry it is
    const char* labelKey; ///< null for a label that is the same in every language
    /// nullopt for a field that the file does not have, which then gets no entry.
    std::optional<std::string> (*value)(const Source&);
    std::string_view fixedLabel = {}; ///< the label where there is no key for it
};

/// "Yes" or "No" in the user's language. Any thread.
[[nodiscard]] inline std::string qm_yesOrNo(bool value) {
    return platform::LocalizedStrings::stringForKey(value ? "meta.yes" : "meta.no");
}

/// Appends to `into` the entries of those `fields` that are among `enabledKeys` and have a value,
/// in the order of `fields`. Values are looked for only where the key is enabled. Any thread.
template <class Source>
void qm_appendFields(std::span<const QMMetadataField<Source>> fields, const Source& source,
                     const QMMetadataService::Keys& enabledKeys, QMMetadataEntries& into) {
    for (const QMMetadataField<Source>& field : fields) {
        if (!QMMetadataService::containsKey(enabledKeys, field.key)) {
            continue;
        }
        if (auto value = field.value(source)) {
            auto label = field.labelKey == nullptr
                             ? std::string(field.fixedLabel)
                             : platform::LocalizedStrings::stringForKey(field.labelKey);
            into.push_back(
                field.makeEntry(std::string(field.key), std::move(label), std::move(value)));
        }
    }
}
