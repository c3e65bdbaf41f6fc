// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Uniform type identifiers: the names of file formats, their hierarchy and their descriptions.
///
/// Types are told from file names alone; no file is ever opened. All functions are pure and may
/// be called from any thread. Texts are bytes, as a rule UTF-8; only the letters A to Z have a case
/// that is ignored. Returned views stay valid for the life of the program.
///
/// A dynamic identifier is well-formed when it is "dyn.a" followed by one or more characters out of
/// "abcdefghkmnpqrstuvwxyz0123456789", in any case.
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
/// case, empty for none). Only files and folders are told apart by extension. Unknown extensions of
/// plain files get a dynamic identifier ("dyn.a…"), which is the same for the same extension
/// everywhere; those of folders and executable files count as none. Never empty.
[[nodiscard]] std::string identifierForItem(ItemKind kind, std::string_view extension);

/// The description shown to users for an item of type `identifier`, in any case ("Folder",
/// "PNG image"); "Document" for types that have none and for identifiers that are not declared.
[[nodiscard]] std::string_view kindForIdentifier(std::string_view identifier);

/// Whether `identifier` equals `other` or descends from it. Case is ignored. False when either is
/// neither a declared type nor a well-formed dynamic identifier, even when both are equal. Dynamic
/// identifiers of files descend from public.data and its ancestors, other ones from nothing.
[[nodiscard]] bool conformsTo(std::string_view identifier, std::string_view other);

/// The preferred MIME type of a declared type, without parameters; nullopt when it has none.
[[nodiscard]] std::optional<std::string_view> mimeType(std::string_view identifier);

} // namespace platform::UniformType
