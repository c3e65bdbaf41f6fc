// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"

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

} // namespace fuzzing
