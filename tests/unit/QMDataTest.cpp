// SPDX-License-Identifier: Apache-2.0
#include "foundation/QMData.h"

#include <array>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using platform::bytesOf;

std::string hmac(std::string_view key, std::string_view message) {
    return qm_hexString(qm_hmacSHA256WithKey(bytesOf(message), bytesOf(key)));
}

TEST(QMData, HexStringHasTwoLowerCaseDigitsPerByte) {
    constexpr std::array bytes{std::byte{0x00}, std::byte{0xAB}};
    EXPECT_EQ(qm_hexString(bytes), "00ab");
    EXPECT_EQ(qm_hexString({}), "");
    EXPECT_EQ(qm_hexString(bytesOf("\x0F\xF0\x7f\x80")), "0ff07f80");
}

TEST(QMData, SHA256GivesThePublishedVectors) {
    EXPECT_EQ(qm_hexString(qm_sha256(bytesOf("abc"))),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(qm_sha256({}).size(), 32U);
    EXPECT_EQ(qm_hexString(qm_sha256({})),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

// Test cases 1, 2, 3 and 6 of RFC 4231.
TEST(QMData, HMACGivesThePublishedVectors) {
    EXPECT_EQ(hmac(std::string(20, '\x0b'), "Hi There"),
              "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7");
    EXPECT_EQ(hmac("Jefe", "what do ya want for nothing?"),
              "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");
    EXPECT_EQ(hmac(std::string(20, '\xaa'), std::string(50, '\xdd')),
              "773ea91e36800e46854db8ebd09181a72959098b3ef8c122d9635514ced565fe");
    EXPECT_EQ(
        hmac(std::string(131, '\xaa'), "Test Using Larger Than Block-Size Key - Hash Key First"),
        "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54");
}

TEST(QMData, HMACTakesEmptyKeysAndMessages) {
    EXPECT_EQ(hmac("", ""), "b613679a0814d9ec772f95d778c35fc5ff1697c493715653c6c712144292c5ad");
    // An empty key must not mean the key of the call before.
    EXPECT_NE(hmac("key", "message"), hmac("", "message"));
}

} // namespace
