// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/ImageSource.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace platform::media {

/// A regular file that somebody else has opened and will close. Any thread.
class ImageFile {
public:
    /// nullopt for what is no regular file.
    [[nodiscard]] static std::optional<ImageFile> of(int descriptor);

    [[nodiscard]] std::uint64_t size() const { return m_size; }
    /// Fills `buffer` with the bytes from `offset` on. False, with `buffer` in any state, when not
    /// all of them are there.
    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> buffer) const;
    /// The same as far as there are bytes; answers how many.
    [[nodiscard]] std::size_t readSome(std::uint64_t offset, std::span<std::byte> buffer) const;
    /// `length` bytes from `offset` on; nullopt when not all are there, or more than `maximum` are
    /// asked for.
    [[nodiscard]] std::optional<Data> bytes(std::uint64_t offset, std::uint64_t length,
                                            std::uint64_t maximum) const;

    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    ImageFile(int descriptor, std::uint64_t size)
        : m_descriptor(descriptor)
        , m_size(size) {}

    int m_descriptor;
    std::uint64_t m_size;
};

/// Reads a file from its beginning to its end, through a buffer, for libraries that ask for a few
/// bytes at a time. One thread at a time.
class BufferedFile {
public:
    /// `file` must outlive this. The buffer holds `bufferSize` bytes.
    BufferedFile(const ImageFile& file, std::size_t bufferSize);

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

    const ImageFile& m_file;
    Data m_buffer;
    std::uint64_t m_start = 0; // of the bytes in the buffer
    std::size_t m_count = 0;
    std::uint64_t m_position = 0;
};

/// A file's bytes in memory, as pages that are read when they are touched. A change is not written.
class MappedFile {
public:
    /// Maps the first `length` bytes of the file, or all if it has fewer.
    MappedFile(const ImageFile& file, std::uint64_t length);
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    MappedFile(MappedFile&&) = delete;
    MappedFile& operator=(MappedFile&&) = delete;
    ~MappedFile();

    /// Empty when the file could not be mapped.
    [[nodiscard]] std::span<std::byte> bytes() const { return m_bytes; }

private:
    std::span<std::byte> m_bytes;
};

} // namespace platform::media
