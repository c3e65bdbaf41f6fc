// SPDX-License-Identifier: Apache-2.0
#include "foundation/QMData.h"

#include "platform/Digest.h"

#include <string_view>

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
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const std::byte byte : bytes) {
        const auto value = std::to_integer<unsigned>(byte);
        text.push_back(digits[value >> 4U]);
        text.push_back(digits[value & 0xFU]);
    }
    return text;
}
