// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/QMMetadataCategory.h"

#include <optional>
#include <span>
#include <string_view>

/// The fixed tables of the metadata service: constants, so any thread.

/// The category of files with this extension, which is given in lower case and without a dot;
/// `QMMetadataCategoryNone` for any other.
[[nodiscard]] QMMetadataCategory qm_metadataCategoryForExtension(std::string_view extension);

/// The localisation key of a category's name; empty for a number that is no category.
[[nodiscard]] std::string_view qm_metadataNameKeyForCategory(QMMetadataCategory category);

/// The keys of the entries that a category may have, in the order in which they are offered; none
/// for a number that is no category.
[[nodiscard]] std::span<const std::string_view>
qm_metadataKeysForCategory(QMMetadataCategory category);

/// The localisation key of an entry key's label; nullopt for a key that no category has.
[[nodiscard]] std::optional<std::string_view> qm_metadataLabelKeyForKey(std::string_view key);

/// The name of the programming or markup language whose files have this extension, told by the
/// lower-case spelling alone.
[[nodiscard]] std::optional<std::string_view>
qm_languageForExtension(std::string_view lowercasedExtension);
