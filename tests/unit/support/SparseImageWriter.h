// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/unit/support/ByteWriter.h"

#include <cstdint>
#include <string>
#include <vector>

/// A header of a sparse image, 4 KiB, with the numbers of the bands that follow it.
inline std::string sparseImageHeader(std::uint64_t sectorsPerBand, std::uint64_t sectors,
                                     const std::vector<std::uint32_t>& bands) {
    ByteWriter header;
    header.text("sprs").big(3, 4).big(sectorsPerBand, 4).big(1, 4).big(sectors, 4).zeros(44);
    for (const std::uint32_t band : bands) {
        header.big(band, 4);
    }
    return header.zeros(4096 - header.size()).bytes();
}
