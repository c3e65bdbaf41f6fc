// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/FileHandle.h"
#include "platform/Text.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The beginning of a text file, decoded. One thread at a time; the functions any.
struct QMTextSample {
    /// As many bytes of a file are looked at.
    static constexpr std::size_t maximumLength = 65536;

    std::string text; ///< UTF-8, whatever the file is in
    platform::Text::Encoding encoding =
        platform::Text::Encoding::UTF8; ///< which the file was read in
    /// Whether the file had more bytes than those when it was read, by its status.
    bool isTruncated = false;

    /// Reads the sample from the start of `file`. nullopt when a read failed, even after some bytes
    /// arrived; the system log then has the reason.
    [[nodiscard]] static std::optional<QMTextSample> fromFile(platform::FileHandle& file);

    /// The sample of a file with just these bytes: UTF-8 if all of them are, else ISO Latin 1. A
    /// character that is cut off at the end makes the whole Latin 1.
    [[nodiscard]] static QMTextSample decoding(platform::DataView bytes);
};

/// How many pieces line feeds cut `text` into: one more than there are line feeds.
[[nodiscard]] std::size_t qm_lineCount(std::string_view text);

/// "CRLF" when the text has that anywhere, else "CR" when it has a carriage return, else "LF".
[[nodiscard]] std::string_view qm_lineEnding(std::string_view text);

/// The first line of a script that names its interpreter, with "#!" and with a carriage return at
/// its end if there is one; nullopt for other texts. Borrowed from `text`.
[[nodiscard]] std::optional<std::string_view> qm_shebangLine(std::string_view text);
