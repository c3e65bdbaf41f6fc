// SPDX-License-Identifier: Apache-2.0
#include "model/QMMetadataEntry.h"

#include <utility>

std::shared_ptr<QMMetadataEntry>
QMMetadataEntry::entryWithKey(std::optional<std::string> key,
                              std::optional<std::string> localizedKey,
                              std::optional<std::string> value) {
    auto entry = std::make_shared<QMMetadataEntry>();
    entry->key = std::move(key);
    entry->localizedKey = std::move(localizedKey);
    entry->value = value ? *std::move(value) : std::string(absentValue);
    return entry;
}

std::shared_ptr<QMMetadataEntry>
QMMetadataEntry::primaryEntryWithKey(std::optional<std::string> key,
                                     std::optional<std::string> localizedKey,
                                     std::optional<std::string> value) {
    auto entry = entryWithKey(std::move(key), std::move(localizedKey), std::move(value));
    entry->isPrimary = true;
    return entry;
}
