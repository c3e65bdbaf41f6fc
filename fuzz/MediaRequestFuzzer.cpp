// SPDX-License-Identifier: Apache-2.0
// Reads bytes as a request that a process for media is sent.
#include "fuzz/Fuzzing.h"
#include "platform/linux/worker/MediaMessage.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto bytes = fuzzing::bytesOf(data, size);
    if (const auto request = platform::worker::decodedRequest(bytes)) {
        // There is one spelling of each.
        const auto again = platform::worker::encodedRequest(*request);
        fuzzing::require(std::equal(bytes.begin(), bytes.end(), again.begin(), again.end()));
    }
    return 0;
}
