// SPDX-License-Identifier: Apache-2.0
#include "platform/Digest.h"

#include <limits>
#include <new>
#include <span>
#include <stdexcept>
#include <string_view>

// The functions of the 1.1.0 interface work on plain structures. The newer ones look their
// algorithm up in a provider first, which takes longer than hashing a small file.
#define OPENSSL_API_COMPAT 0x10100000L
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/md5.h>
#include <openssl/sha.h>

namespace platform::Digest {
namespace {

template <std::size_t Length>
struct Algorithm;

template <>
struct Algorithm<md5Length> {
    using State = MD5_CTX;
    static constexpr auto init = MD5_Init;
    static constexpr auto update = MD5_Update;
    static constexpr auto finish = MD5_Final;
};

template <>
struct Algorithm<sha1Length> {
    using State = SHA_CTX;
    static constexpr auto init = SHA1_Init;
    static constexpr auto update = SHA1_Update;
    static constexpr auto finish = SHA1_Final;
};

template <>
struct Algorithm<sha256Length> {
    using State = SHA256_CTX;
    static constexpr auto init = SHA256_Init;
    static constexpr auto update = SHA256_Update;
    static constexpr auto finish = SHA256_Final;
};

template <>
struct Algorithm<sha512Length> {
    using State = SHA512_CTX;
    static constexpr auto init = SHA512_Init;
    static constexpr auto update = SHA512_Update;
    static constexpr auto finish = SHA512_Final;
};

template <std::size_t Length>
typename Algorithm<Length>::State* stateIn(std::span<std::byte> storage) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): made by placement new
    return std::launder(reinterpret_cast<typename Algorithm<Length>::State*>(storage.data()));
}

} // namespace

template <std::size_t Length>
Context<Length>::Context() {
    using State = typename Algorithm<Length>::State;
    static_assert(sizeof(State) <= sizeof(m_state) && alignof(State) <= 16);
    Algorithm<Length>::init(new (m_state.data()) State);
}

template <std::size_t Length>
void Context<Length>::update(DataView bytes) {
    Algorithm<Length>::update(stateIn<Length>(m_state), bytes.data(), bytes.size());
}

template <std::size_t Length>
std::array<std::byte, Length> Context<Length>::finish() {
    std::array<std::byte, Length> digest{};
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes as unsigned char
    Algorithm<Length>::finish(reinterpret_cast<unsigned char*>(digest.data()),
                              stateIn<Length>(m_state));
    return digest;
}

template class Context<md5Length>;
template class Context<sha1Length>;
template class Context<sha256Length>;
template class Context<sha512Length>;

std::array<std::byte, sha256Length> hmacSHA256(DataView key, DataView message) {
    // A null key would mean "the key of the last call" to the library.
    static constexpr unsigned char emptyKey = 0;
    if (key.size() > std::numeric_limits<int>::max()) {
        throw std::length_error("HMAC key too long");
    }
    const void* keyBytes = key.empty() ? static_cast<const void*>(&emptyKey) : key.data();
    std::array<std::byte, sha256Length> digest{};
    // NOLINTBEGIN(cppcoreguidelines-pro-type-reinterpret-cast): bytes as unsigned char
    const auto* result =
        HMAC(EVP_sha256(), keyBytes, static_cast<int>(key.size()),
             reinterpret_cast<const unsigned char*>(message.data()), message.size(),
             reinterpret_cast<unsigned char*>(digest.data()), nullptr);
    // NOLINTEND(cppcoreguidelines-pro-type-reinterpret-cast)
    if (result == nullptr) {
        throw std::bad_alloc();
    }
    return digest;
}

std::string hexString(DataView bytes) {
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

} // namespace platform::Digest
