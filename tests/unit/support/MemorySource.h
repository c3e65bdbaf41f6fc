// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/linux/hdiutil/ByteSource.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

/// The bytes of a text as a source.
class MemorySource final : public platform::hdiutil::ByteSource {
public:
    explicit MemorySource(std::string bytes)
        : m_bytes(std::move(bytes)) {}

    [[nodiscard]] std::uint64_t size() const override { return m_bytes.size(); }
    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> buffer) const override {
        if (offset > m_bytes.size() || buffer.size() > m_bytes.size() - offset) {
            return false;
        }
        const auto all = platform::bytesOf(m_bytes);
        std::ranges::copy(all.subspan(offset, buffer.size()), buffer.begin());
        return true;
    }

private:
    std::string m_bytes;
};
