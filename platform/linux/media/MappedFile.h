// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/OpenedFile.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace platform::media {

/// A file's bytes in memory, as pages that are read when they are touched. A change is not written.
class MappedFile {
public:
    /// Maps the first `length` bytes of the file, or all if it has fewer.
    MappedFile(const OpenedFile& file, std::uint64_t length);
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
