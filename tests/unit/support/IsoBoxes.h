// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/unit/support/ByteWriter.h"

#include <string>
#include <string_view>

/// A box of an ISO base media file (ISO/IEC 14496-12, section 4.2).
inline std::string isoBox(std::string_view type, std::string_view content) {
    return ByteWriter().big(content.size() + 8, 4).text(type).text(content).bytes();
}
