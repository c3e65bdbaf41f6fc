// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform::pdf {

/// Bytes of a file here and there, by its descriptor, which nobody may close before; its position
/// does not matter. One thread at a time.
class FileBytes {
public:
    /// All of the file, which has `size` bytes.
    FileBytes(int descriptor, std::uint64_t size)
        : m_descriptor(descriptor)
        , m_size(size) {}

    [[nodiscard]] std::uint64_t size() const { return m_size; }
    /// The bytes from `offset` on: `size` of them, or what there is before the end of the file.
    /// They are there until the next call.
    [[nodiscard]] std::string_view at(std::uint64_t offset, std::size_t size);
    /// The value (Values.h) from `offset` on, which is moved behind it; it is there as long.
    /// nullopt when it is damaged or longer than four megabytes.
    [[nodiscard]] std::optional<std::string_view> takeValue(std::uint64_t& offset);

private:
    void readFrom(std::uint64_t offset, std::size_t size);

    int m_descriptor;
    std::uint64_t m_size;
    std::uint64_t m_start = 0;
    std::string m_bytes;
};

} // namespace platform::pdf
