// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace platform {

/// A regular file that somebody else has opened and will close. Its position does not matter. Any
/// thread.
class OpenedFile {
public:
    /// nullopt for what is no regular file.
    [[nodiscard]] static std::optional<OpenedFile> of(int descriptor);

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
    OpenedFile(int descriptor, std::uint64_t size)
        : m_descriptor(descriptor)
        , m_size(size) {}

    int m_descriptor;
    std::uint64_t m_size;
};

} // namespace platform
