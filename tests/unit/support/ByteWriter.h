// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Bytes of a file that a test makes by hand, from the first to the last.
class ByteWriter {
public:
    ByteWriter& text(std::string_view text) {
        m_bytes.append(text);
        return *this;
    }
    ByteWriter& zeros(std::size_t count) {
        m_bytes.append(count, '\0');
        return *this;
    }
    /// A number of `width` bytes, most significant byte first.
    ByteWriter& big(std::uint64_t value, std::size_t width) {
        for (std::size_t i = width; i > 0; --i) {
            m_bytes.push_back(static_cast<char>(value >> (8 * (i - 1)) & 0xFFU));
        }
        return *this;
    }
    /// The same, least significant byte first.
    ByteWriter& little(std::uint64_t value, std::size_t width) {
        for (std::size_t i = 0; i < width; ++i) {
            m_bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFFU));
        }
        return *this;
    }

    [[nodiscard]] const std::string& bytes() const { return m_bytes; }
    [[nodiscard]] std::size_t size() const { return m_bytes.size(); }

private:
    std::string m_bytes;
};
