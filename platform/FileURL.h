// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// The location of a file as a "file:" URL (RFC 8089). The path is bytes; bytes that may not stand
/// in a URL are percent-encoded in its text, so that each path survives the round trip. Any thread.
class QM_EXPORT FileURL {
public:
    /// The URL of `path`; a relative path is taken from the current directory, and stays relative
    /// when that is gone. Trailing slashes go, except from "/"; "." and ".." stay.
    [[nodiscard]] static FileURL fromPath(std::string_view path);

    /// The same, marked as that of a folder: its text ends with a slash.
    [[nodiscard]] static FileURL fromDirectoryPath(std::string_view path);

    /// Parses an absolute "file:" URL of this computer (no host, or "localhost"); with a slash at
    /// its end it is that of a folder. nullopt for everything else: other schemes, foreign hosts,
    /// damaged escapes, an escaped NUL or slash.
    [[nodiscard]] static std::optional<FileURL> parse(std::string_view text);

    /// The path that the URL names, never empty, without trailing slash except for "/".
    [[nodiscard]] const std::string& path() const { return m_path; }

    /// Whether the URL says that it names a folder; nothing is looked up.
    [[nodiscard]] bool hasDirectoryPath() const { return m_isMarked || m_path == "/"; }

    /// The last component of the path; "/" for the root.
    [[nodiscard]] std::string lastPathComponent() const;

    /// The URL's text: "file://" and the percent-encoded path, with a slash behind that of a
    /// folder; "file:" and the path for a relative one, which `parse` does not read.
    [[nodiscard]] std::string absoluteString() const;

    friend bool operator==(const FileURL&, const FileURL&) = default;

private:
    explicit FileURL(std::string path)
        : m_path(std::move(path)) {}
    std::string m_path;
    bool m_isMarked = false; ///< as a folder; never the root, which is one anyway
};

} // namespace platform
