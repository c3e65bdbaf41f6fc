// SPDX-License-Identifier: Apache-2.0
// Reads bytes as an image file of whatever format they have, with and without counting.
#include "fuzz/ImageFuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::readAsImage({}, data, size);
    return 0;
}
