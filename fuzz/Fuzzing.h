// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What the fuzz targets share. Each defines the entry point of libFuzzer.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzzing {

/// Ends the process, and with it the run, when something that must hold does not.
inline void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

inline std::string textOf(const std::uint8_t* data, std::size_t size) {
    return {data, data + size};
}

inline platform::DataView bytesOf(const std::uint8_t* data, std::size_t size) {
    return std::as_bytes(std::span(data, size));
}

/// The parts of `text` between separators; at least one.
inline std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    while (true) {
        const auto end = text.find(separator);
        parts.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

/// Takes numbers and texts off an input from its front. Behind the end, numbers are 0 and texts
/// empty.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size)
        : m_rest(data, size) {}

    [[nodiscard]] bool isEmpty() const { return m_rest.empty(); }

    /// An unsigned number of `width` bytes, the least significant one first.
    std::uint64_t number(std::size_t width) {
        std::uint64_t value = 0;
        const auto bytes = take(width);
        for (std::size_t i = bytes.size(); i > 0; --i) {
            value = value << 8U | bytes[i - 1];
        }
        return value;
    }

    /// A text behind its length, which has `width` bytes; shorter where the input ends.
    std::string text(std::size_t width) {
        const auto bytes = take(number(width));
        return textOf(bytes.data(), bytes.size());
    }

private:
    std::span<const std::uint8_t> take(std::size_t count) {
        const auto bytes = m_rest.first(std::min(count, m_rest.size()));
        m_rest = m_rest.subspan(bytes.size());
        return bytes;
    }

    std::span<const std::uint8_t> m_rest;
};

} // namespace fuzzing
