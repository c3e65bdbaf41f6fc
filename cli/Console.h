// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Format.h"
#include "platform/Json.h"

#include <array>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// All output of the tool: one line per call, unbuffered in meaning but without an explicit flush.
/// Texts are UTF-8; bytes that are not pass through unchanged. Main thread only.

/// Turns styles on or off for the whole process; they are on at the start.
void qm_set_color_enabled(bool enabled);

/// Whether styles are on and standard output is a terminal, asked afresh on every call.
[[nodiscard]] bool qm_is_color_enabled();

/// Writes one formatted line to `stream`. When styles are enabled and `prefix` is not empty, the
/// line is between that escape sequence and a reset. The terminal test looks at standard output
/// also when `stream` is standard error. What could not be written to standard output is told by
/// qm_flush().
void qm_vprint(std::FILE* stream, std::string_view prefix, std::string_view format,
               std::span<const platform::FormatArgument> arguments);

namespace console {

/// Escape sequences of ECMA-48, "select graphic rendition".
inline constexpr std::string_view plain;
inline constexpr std::string_view red = "\033[31m";
inline constexpr std::string_view green = "\033[32m";
inline constexpr std::string_view bold = "\033[1m";
inline constexpr std::string_view dim = "\033[2m";
inline constexpr std::string_view reset = "\033[0m";

template <class... Args>
void printLine(std::FILE* stream, std::string_view prefix, std::string_view format,
               const Args&... args) {
    const std::array<platform::FormatArgument, sizeof...(Args)> arguments{
        platform::detail::makeArgument(args)...};
    qm_vprint(stream, prefix, format, arguments);
}

} // namespace console

/// A plain line on standard output.
template <class... Args>
void qm_print(platform::FormatString<Args...> format, const Args&... args) {
    console::printLine(stdout, console::plain, format.text(), args...);
}

/// A red line on standard error.
template <class... Args>
void qm_error(platform::FormatString<Args...> format, const Args&... args) {
    console::printLine(stderr, console::red, format.text(), args...);
}

/// A green line on standard output.
template <class... Args>
void qm_success(platform::FormatString<Args...> format, const Args&... args) {
    console::printLine(stdout, console::green, format.text(), args...);
}

/// A bold line on standard output.
template <class... Args>
void qm_bold(platform::FormatString<Args...> format, const Args&... args) {
    console::printLine(stdout, console::bold, format.text(), args...);
}

/// A dim line on standard output.
template <class... Args>
void qm_dim(platform::FormatString<Args...> format, const Args&... args) {
    console::printLine(stdout, console::dim, format.text(), args...);
}

/// Writes `object` as an indented JSON document to standard output, never styled. An object that
/// cannot be serialised gives an error line on standard error and nothing on standard output.
void qm_json(const platform::Json& object);

/// Writes the records of the files that a command was given to standard output, the way scripts
/// read them: nothing for none, an object for one, an array for more. Nothing is kept but the
/// first, until there is a second one.
class QMCLIRecords {
public:
    /// Writes one more record, of texts, finite numbers and truths.
    void add(platform::Json record);
    /// Ends the document; once.
    void end() const;

private:
    std::optional<platform::Json> m_first;
    bool m_isArray = false;
};

/// Writes out what is still on its way to standard output. 0 when all output of this process has
/// arrived there, else the `errno` of the first write that failed.
[[nodiscard]] int qm_flush();

/// The absolute form of a path given on the command line. A path that begins with "/" is returned
/// as it is; others are taken from the current directory, and "." and ".." and redundant slashes
/// are removed. A tilde is an ordinary character. When the current directory was removed, the path
/// is returned as it is.
[[nodiscard]] std::string qm_absolutePath(const std::string& path);
