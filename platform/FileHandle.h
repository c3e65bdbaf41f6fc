// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/Export.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>

namespace platform {

/// An open file, read from its current position. Owns its descriptor and closes it at the end of
/// its life. May be moved; one thread at a time.
class QM_EXPORT FileHandle {
public:
    /// Opens the file at `path` for reading. nullopt when it is missing or may not be read, and
    /// for a folder. Opening a FIFO waits for a writer, as it does for every program.
    [[nodiscard]] static std::optional<FileHandle> forReadingAtPath(const std::string& path);

    /// The same for regular files alone, links followed; nullopt for anything else. Never waits:
    /// FIFOs and devices give no handle.
    [[nodiscard]] static std::optional<FileHandle>
    forReadingRegularFileAtPath(const std::string& path);

    /// Takes over an open descriptor.
    [[nodiscard]] static FileHandle fromDescriptor(int descriptor);

    /// Leaves `other` closed.
    FileHandle(FileHandle&& other) noexcept;
    /// Closes what this one has open, and leaves `other` closed.
    FileHandle& operator=(FileHandle&& other) noexcept;
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle();

    /// The system's reason for a failed read, for people.
    struct ReadError {
        std::string reason; ///< UTF-8, without a full stop
    };
    /// How many bytes were read, or why none could be.
    using ReadResult = std::variant<std::size_t, ReadError>;

    /// Reads until `buffer` is full or the file ends; answers how many bytes were read, 0 only at
    /// the end (or for an empty buffer). When a read fails after some bytes of this call arrived,
    /// the call answers with them, and the failure is left to the next call.
    [[nodiscard]] ReadResult read(std::span<std::byte> buffer);

    /// How many bytes the file has now, by its status; 0 when that cannot be told, and for files
    /// that the system makes up while they are read.
    [[nodiscard]] std::uint64_t size() const;

    /// Closes the file now; later reads fail. Harmless when it is closed already.
    void close();

private:
    explicit FileHandle(int descriptor)
        : m_descriptor(descriptor) {}
    int m_descriptor = -1;
};

} // namespace platform
