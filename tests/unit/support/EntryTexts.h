// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/QMMetadataEntry.h"

#include <string>
#include <vector>

/// "key=value" of each entry.
inline std::vector<std::string> valuesOfEntries(const QMMetadataEntries& entries) {
    std::vector<std::string> texts;
    for (const auto& entry : entries) {
        texts.push_back(entry->key.value_or("none") + "=" + entry->value.value_or("none"));
    }
    return texts;
}

/// The label of each entry, with "!" behind that of a primary one.
inline std::vector<std::string> labelsOfEntries(const QMMetadataEntries& entries) {
    std::vector<std::string> texts;
    for (const auto& entry : entries) {
        texts.push_back(entry->localizedKey.value_or("none") + (entry->isPrimary ? "!" : ""));
    }
    return texts;
}
