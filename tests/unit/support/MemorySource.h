// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/ByteSource.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

/// A file or a disk made by hand: a text, or zeros but for what a test puts there.
class MemorySource final : public platform::hdiutil::ByteSource {
public:
    explicit MemorySource(std::size_t size)
        : bytes(size, '\0') {}
    explicit MemorySource(std::string contents)
        : bytes(std::move(contents)) {}
    MemorySource(const MemorySource& other)
        : ByteSource()
        , bytes(other.bytes)
        , broken(other.broken) {}
    MemorySource& operator=(const MemorySource&) = delete;
    ~MemorySource() override = default;

    /// Puts `text` at `offset`.
    void put(std::size_t offset, std::string_view text) {
        bytes.replace(offset, text.size(), text);
    }
    /// Puts a number of `width` bytes at `offset`, least significant byte first.
    void putLittle(std::size_t offset, std::uint64_t value, std::size_t width) {
        for (std::size_t i = 0; i < width; ++i) {
            bytes.at(offset + i) = static_cast<char>(value >> (8 * i) & 0xFFU);
        }
    }
    /// The same, most significant byte first.
    void putBig(std::size_t offset, std::uint64_t value, std::size_t width) {
        for (std::size_t i = 0; i < width; ++i) {
            bytes.at(offset + i) = static_cast<char>(value >> (8 * (width - 1 - i)) & 0xFFU);
        }
    }
    /// The reads that touch this offset fail.
    void breakAt(std::uint64_t offset) { broken = offset; }

    [[nodiscard]] std::uint64_t size() const override { return bytes.size(); }
    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> buffer) const override {
        if (offset > bytes.size() || buffer.size() > bytes.size() - offset ||
            (broken >= offset && broken - offset < buffer.size())) {
            return false;
        }
        const auto all = std::as_bytes(std::span(bytes));
        std::ranges::copy(all.subspan(offset, buffer.size()), buffer.begin());
        return true;
    }

private:
    std::string bytes;
    std::uint64_t broken = UINT64_MAX;
};
