// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/QMMetadataCategory.h"
#include "model/QMMetadataEntry.h"
#include "platform/Export.h"

#include <memory>
#include <optional>
#include <string>

/// What is told of one file. Threads as for entries.
struct QM_EXPORT QMMetadataResult {
    QMMetadataCategory category = QMMetadataCategoryNone; ///< by the extension of the file's name
    /// The category's name for people, UTF-8.
    std::optional<std::string> categoryName;
    /// Shared with whoever fills it, not copied: what is added later shows here too. Null until it
    /// is given.
    std::shared_ptr<QMMetadataEntries> entries;
};
