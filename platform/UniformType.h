// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Uniform type identifiers: the names of file formats, their hierarchy and their descriptions.
///
/// Types are told from file names alone; no file is ever opened. All functions are pure and may
/// be called from any thread. Texts are UTF-8; bytes of a name that are not UTF-8 are treated as
/// bytes without case.
namespace platform::UniformType {

/// What kind of file-system object a type is looked up for.
enum class ItemKind {
    file,
    executableFile, ///< a regular file with at least one execute bit
    folder,
    volume, ///< a folder on which a file system is mounted
    symbolicLink,
    namedPipe,
    socket,
    characterDevice,
    blockDevice,
};

/// The identifier for an item of `kind` whose file name has `extension` (without the dot, in any
/// case, empty for none). Unknown extensions of plain files get a dynamic identifier ("dyn.a…"),
/// which is the same for the same extension everywhere. Never empty.
[[nodiscard]] std::string identifierForItem(ItemKind kind, std::string_view extension);

/// The description shown to users for an item of type `identifier` ("Folder", "PNG image");
/// "Document" for types that have none.
[[nodiscard]] std::string_view kindForIdentifier(std::string_view identifier);

/// Whether `identifier` equals `other` or descends from it. Case is ignored. False when either is
/// neither a declared type nor a well-formed dynamic identifier.
[[nodiscard]] bool conformsTo(std::string_view identifier, std::string_view other);

/// The preferred MIME type of a declared type, without parameters; nullopt when it has none.
[[nodiscard]] std::optional<std::string_view> mimeType(std::string_view identifier);

} // namespace platform::UniformType
