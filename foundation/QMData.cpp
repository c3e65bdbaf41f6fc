// SPDX-License-Identifier: Apache-2.0
#include "foundation/QMData.h"

#include "platform/Digest.h"

namespace Digest = platform::Digest;

platform::Data qm_hmacSHA256WithKey(platform::DataView message, platform::DataView key) {
    const auto code = Digest::hmacSHA256(key, message);
    return {code.begin(), code.end()};
}

platform::Data qm_sha256(platform::DataView bytes) {
    Digest::SHA256 context;
    context.update(bytes);
    const auto digest = context.finish();
    return {digest.begin(), digest.end()};
}

std::string qm_hexString(platform::DataView bytes) {
    return Digest::hexString(bytes);
}
