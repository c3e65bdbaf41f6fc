// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"

#include <array>
#include <cstddef>
#include <string>

/// Message digests (RFC 1321, FIPS 180-4) and HMAC (RFC 2104). Any thread; one for each context.
namespace platform::Digest {

inline constexpr std::size_t md5Length = 16;    ///< bytes
inline constexpr std::size_t sha1Length = 20;   ///< bytes
inline constexpr std::size_t sha256Length = 32; ///< bytes
inline constexpr std::size_t sha512Length = 64; ///< bytes

/// One running digest of `Length` bytes: initialised by its constructor, fed in pieces, finished
/// once. Cheap to make; needs no memory of its own and cannot fail.
template <std::size_t Length>
class Context {
public:
    Context();
    /// Appends `bytes`, which may be empty, to the message.
    void update(DataView bytes);
    /// The digest of all bytes so far. The context may not be used afterwards.
    [[nodiscard]] std::array<std::byte, Length> finish();

private:
    // As large as the largest state of the four algorithms, so that it can live on the stack.
    alignas(16) std::array<std::byte, 256> m_state{};
};

using MD5 = Context<md5Length>;       ///< RFC 1321
using SHA1 = Context<sha1Length>;     ///< FIPS 180-4
using SHA256 = Context<sha256Length>; ///< FIPS 180-4
using SHA512 = Context<sha512Length>; ///< FIPS 180-4

/// HMAC with SHA-256; `key` and `message` may be empty. std::length_error for keys over 2 GiB - 1.
[[nodiscard]] std::array<std::byte, sha256Length> hmacSHA256(DataView key, DataView message);

/// Two lower-case hexadecimal digits per byte, in order.
[[nodiscard]] std::string hexString(DataView bytes);

} // namespace platform::Digest
