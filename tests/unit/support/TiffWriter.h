// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/unit/support/ByteWriter.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A field of a TIFF structure that a test makes by hand: its value, or directories beneath it.
struct TiffField {
    std::uint16_t tag;
    std::uint16_t type;
    std::uint32_t count;
    std::string value;
    std::vector<std::vector<TiffField>> directories;
};
using TiffDirectory = std::vector<TiffField>;

inline TiffField tiffText(std::uint16_t tag, std::string_view text) {
    return {tag, 2, static_cast<std::uint32_t>(text.size()), std::string(text), {}};
}

inline TiffField tiffNumbers(std::uint16_t tag, std::uint16_t type, std::size_t width,
                             std::initializer_list<std::uint64_t> numbers) {
    ByteWriter value;
    for (const auto number : numbers) {
        value.little(number, width);
    }
    return {tag, type, static_cast<std::uint32_t>(numbers.size()), value.bytes(), {}};
}
inline TiffField tiffShorts(std::uint16_t tag, std::initializer_list<std::uint64_t> numbers) {
    return tiffNumbers(tag, 3, 2, numbers);
}
inline TiffField tiffLongs(std::uint16_t tag, std::initializer_list<std::uint64_t> numbers) {
    return tiffNumbers(tag, 4, 4, numbers);
}

/// Numerators and denominators, unsigned (type 5) or with a sign (type 10).
inline TiffField tiffRatios(std::uint16_t tag,
                            std::initializer_list<std::pair<std::int64_t, std::int64_t>> ratios,
                            std::uint16_t type = 5) {
    ByteWriter value;
    for (const auto& [numerator, denominator] : ratios) {
        value.little(static_cast<std::uint64_t>(numerator), 4);
        value.little(static_cast<std::uint64_t>(denominator), 4);
    }
    return {tag, type, static_cast<std::uint32_t>(ratios.size()), value.bytes(), {}};
}

/// A field that leads to other directories.
inline TiffField tiffDirectories(std::uint16_t tag, std::vector<TiffDirectory> directories) {
    return {tag, 4, static_cast<std::uint32_t>(directories.size()), {}, std::move(directories)};
}

/// The bytes of a structure that begins with that directory, least significant bytes first.
inline std::string tiffBytes(const TiffDirectory& first, std::string_view afterHeader = {}) {
    ByteWriter header;
    header.text("II*").zeros(1).little(8 + afterHeader.size(), 4).text(afterHeader);
    std::vector<char> bytes(header.bytes().begin(), header.bytes().end());
    const auto place = [&bytes](std::size_t offset, const std::string& value) {
        std::ranges::copy(value, bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    };
    const auto put = [&place](std::size_t offset, std::uint64_t value, std::size_t width) {
        place(offset, ByteWriter().little(value, width).bytes());
    };
    const auto write = [&](const auto& self, const TiffDirectory& directory) -> std::size_t {
        const std::size_t start = bytes.size();
        bytes.resize(start + 2 + 12 * directory.size() + 4);
        put(start, directory.size(), 2);
        for (std::size_t i = 0; i < directory.size(); ++i) {
            const TiffField& field = directory[i];
            std::string value = field.value;
            for (const TiffDirectory& beneath : field.directories) {
                value.append(ByteWriter().little(self(self, beneath), 4).bytes());
            }
            const std::size_t entry = start + 2 + 12 * i;
            put(entry, field.tag, 2);
            put(entry + 2, field.type, 2);
            put(entry + 4, field.count, 4);
            if (value.size() <= 4) {
                place(entry + 8, value);
            } else {
                put(entry + 8, bytes.size(), 4);
                bytes.insert(bytes.end(), value.begin(), value.end());
            }
        }
        return start;
    };
    write(write, first);
    return {bytes.begin(), bytes.end()};
}
