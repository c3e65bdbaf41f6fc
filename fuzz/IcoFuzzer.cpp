// SPDX-License-Identifier: Apache-2.0
// Reads bytes as an icon, behind its mark.
#include "fuzz/ImageFuzzing.h"

using namespace std::string_view_literals;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::readAsImage("\0\0\1\0"sv, data, size);
    return 0;
}
