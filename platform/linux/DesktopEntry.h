// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// What a desktop entry says about starting its application (Desktop Entry Specification 1.5,
/// freedesktop.org).
struct DesktopEntry {
    bool isBusActivatable = false;    ///< the session bus starts the application by its name
    std::vector<std::string> command; ///< program and arguments; empty when there is none to run
    std::string workingDirectory;     ///< where the command is to run; empty for anywhere
    std::string requiredProgram;      ///< what must be installed besides; empty for nothing

    friend bool operator==(const DesktopEntry&, const DesktopEntry&) = default;

    /// Reads the text of an entry. nullopt when it describes something else than an application, or
    /// a deleted one. An entry without a type, which it should have, is taken for an application.
    [[nodiscard]] static std::optional<DesktopEntry> parse(std::string_view text);

    /// The words of an Exec line, its string escapes undone before, without the field codes, which
    /// stand for files, icons and names that are not given here. nullopt when a quotation has no
    /// end or a field code is unknown. What the standard for desktop entries leaves undefined is
    /// read as a shell would, as other desktops do: text in single quotes, and a backslash outside
    /// of quotes.
    [[nodiscard]] static std::optional<std::vector<std::string>> words(std::string_view exec);
};

} // namespace platform
