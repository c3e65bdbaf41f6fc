// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/OpenedFile.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace platform::media {

/// Reads a file from its beginning to its end, through a buffer, for libraries that ask for a few
/// bytes at a time. One thread at a time.
class BufferedFile {
public:
    /// `file` must outlive this. The buffer holds `bufferSize` bytes.
    BufferedFile(const OpenedFile& file, std::size_t bufferSize);

    [[nodiscard]] std::uint64_t size() const { return m_file.size(); }
    [[nodiscard]] std::uint64_t position() const { return m_position; }
    /// Goes to `position`, which may lie beyond the end: nothing is read there.
    void seek(std::uint64_t position) { m_position = position; }
    /// Reads what fits into `buffer` as far as there are bytes, and answers how many.
    [[nodiscard]] std::size_t read(std::span<std::byte> buffer);
    /// All bytes from the position to the end of what can be had in one piece, which then counts as
    /// read; empty only at the end. They stay until the next call.
    [[nodiscard]] DataView next();

private:
    [[nodiscard]] DataView buffered() const;
    void fill();

    const OpenedFile& m_file;
    Data m_buffer;
    std::uint64_t m_start = 0; // of the bytes in the buffer
    std::size_t m_count = 0;
    std::uint64_t m_position = 0;
};

} // namespace platform::media
