// SPDX-License-Identifier: Apache-2.0
#include "platform/Digest.h"

#include "foundation/QMData.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

namespace Digest = platform::Digest;
using platform::bytesOf;

template <class Context>
std::string digestOf(std::string_view text) {
    Context context;
    context.update(bytesOf(text));
    return qm_hexString(context.finish());
}

const std::string millionLetters(1'000'000, 'a');

// Vectors of RFC 1321, A.5.
TEST(Digest, MD5GivesThePublishedVectors) {
    EXPECT_EQ(digestOf<Digest::MD5>(""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(digestOf<Digest::MD5>("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(digestOf<Digest::MD5>("message digest"), "f96b697d7cb7938d525a2f31aaf161d0");
}

// Vectors of FIPS 180-4's examples.
TEST(Digest, SHA1GivesThePublishedVectors) {
    EXPECT_EQ(digestOf<Digest::SHA1>(""), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(digestOf<Digest::SHA1>("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(digestOf<Digest::SHA1>(millionLetters), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
}

TEST(Digest, SHA256GivesThePublishedVectors) {
    EXPECT_EQ(digestOf<Digest::SHA256>(""),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(digestOf<Digest::SHA256>("abc"),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(digestOf<Digest::SHA256>(millionLetters),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Digest, SHA512GivesThePublishedVectors) {
    EXPECT_EQ(digestOf<Digest::SHA512>(""),
              "cf83e1357eefb8bdf1542850d66d8007d620e4050b5715dc83f4a921d36ce9ce"
              "47d0d13c5d85f2b0ff8318d2877eec2f63b931bd47417a81a538327af927da3e");
    EXPECT_EQ(digestOf<Digest::SHA512>("abc"),
              "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
              "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f");
    EXPECT_EQ(digestOf<Digest::SHA512>(millionLetters),
              "e718483d0ce769644e2e42c7bc15b4638e1f98b13b2044285632a803afa973eb"
              "de0ff244877ea60a4cb0432ce577c31beb009c5c2c49aa2e4eadb217ad8cc09b");
}

TEST(Digest, PiecesGiveTheDigestOfTheWhole) {
    Digest::SHA256 context;
    for (const char* piece : {"", "a", "", "b", "c"}) {
        context.update(bytesOf(piece));
    }
    EXPECT_EQ(qm_hexString(context.finish()), digestOf<Digest::SHA256>("abc"));
}

TEST(Digest, CopiesOfAContextGoOnApart) {
    Digest::SHA256 first;
    first.update(bytesOf("ab"));
    Digest::SHA256 second = first;
    first.update(bytesOf("c"));
    EXPECT_EQ(qm_hexString(first.finish()), digestOf<Digest::SHA256>("abc"));
    EXPECT_EQ(qm_hexString(second.finish()), digestOf<Digest::SHA256>("ab"));
}

} // namespace
