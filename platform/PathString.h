// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

/// Path components by text alone. Paths are bytes: what is not UTF-8 passes through unharmed.
/// Nothing here touches the file system except `standardizing`. Any thread.
namespace platform::PathString {

/// The last component, without trailing slashes; "/" for a path of slashes only.
[[nodiscard]] std::string lastPathComponent(std::string_view path);

/// The text after the last dot of the last component, in its own case; empty when there is none.
/// A leading dot, a final dot and dots alone start no extension, nor is there one that would hold
/// a blank or a character that controls the direction of text.
[[nodiscard]] std::string pathExtension(std::string_view path);

/// `path` without its extension, its dot and trailing slashes; runs of slashes become one.
[[nodiscard]] std::string deletingPathExtension(std::string_view path);

/// `path` and `component` joined by one slash; runs of slashes become one, trailing ones go.
[[nodiscard]] std::string appendingPathComponent(std::string_view path, std::string_view component);

/// `path` without ".", ".." and redundant slashes. A leading "~" or "~user" is expanded. When the
/// path holds a ".." and all of it exists, the result is the file's real path, since a ".." after
/// a symbolic link means another folder to the system than to the text.
[[nodiscard]] std::string standardizing(std::string_view path);

/// `path` with the user's home directory replaced by "~"; other paths unchanged.
[[nodiscard]] std::string abbreviatingWithTilde(std::string_view path);

} // namespace platform::PathString
