// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Helpers on strings: type identifiers, sizes, file names and paths. Texts are UTF-8, paths are
/// bytes that pass through unharmed. None fails or throws anything but std::bad_alloc; any
/// thread.

/// Whether the uniform type `identifier` equals `other` or descends from it. False when either is
/// empty or unknown.
QM_EXPORT [[nodiscard]] bool qm_utiConformsTo(std::string_view identifier, std::string_view other);

/// A byte count for people, in decimal units and the user's locale: "1.5 MB", "Zero KB".
QM_EXPORT [[nodiscard]] std::string qm_humanReadableSize(std::int64_t byteCount);

/// The extension of the last component of `path` in lower case; empty when there is none.
QM_EXPORT [[nodiscard]] std::string qm_pathExtensionLowercased(std::string_view path);

/// Whether the last component of `path` begins with a dot.
QM_EXPORT [[nodiscard]] bool qm_isHiddenFileName(std::string_view path);

/// A path in `directory` at which nothing exists yet: `name` itself, else "base (n).extension" with
/// the first free n from 2 on. When all up to 9999 are taken, the path with 9999. Another process
/// may take the name before the caller does.
QM_EXPORT [[nodiscard]] std::string qm_uniquePathInDirectory(std::string_view name,
                                                             std::string_view directory);

/// `texts` in their order with `separator` between them.
QM_EXPORT [[nodiscard]] std::string qm_joined(const std::vector<std::string>& texts,
                                              std::string_view separator);

/// `path` with the user's home directory replaced by "~"; other paths unchanged.
QM_EXPORT [[nodiscard]] std::string qm_abbreviatedPath(std::string_view path);
