// SPDX-License-Identifier: Apache-2.0
// Reads bytes as a bitmap, behind its mark.
#include "fuzz/ImageFuzzing.h"

using namespace std::string_view_literals;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::readAsImage("BM"sv, data, size);
    return 0;
}
