// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/MediaMessage.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace {

using namespace platform::worker;
using platform::Data;
using platform::DataView;
using Outcome = MediaAnswer::Outcome;

constexpr std::uint64_t large = std::numeric_limits<std::uint64_t>::max();

template <class Head>
Data dataOf(const Head& head, std::size_t valueSize = 0) {
    Data data(head.begin(), head.end());
    data.resize(data.size() + valueSize, std::byte{7});
    return data;
}

// Every message that differs in one byte from `message`.
template <class Check>
void forEachDamage(const Data& message, const Check& check) {
    for (std::size_t i = 0; i < message.size(); ++i) {
        Data damaged = message;
        damaged[i] ^= std::byte{0x40};
        check(damaged, i);
    }
}

constexpr std::size_t numberOffset = 8;

MediaRequest requestFor(MediaKind kind) {
    MediaRequest request;
    request.kind = kind;
    request.number = large;
    return request;
}

TEST(MediaRequest, ArrivesAsItWasSent) {
    for (const bool isWanted : {false, true}) {
        MediaRequest image = requestFor(MediaKind::imageProperties);
        image.wantsImageCount = isWanted;
        EXPECT_EQ(decodedRequest(encodedRequest(image)), image);
        MediaRequest asset = requestFor(MediaKind::mediaAsset);
        asset.wantsMetadata = isWanted;
        EXPECT_EQ(decodedRequest(encodedRequest(asset)), asset);
        MediaRequest document = requestFor(MediaKind::pdfDocument);
        document.wantsText = isWanted;
        EXPECT_EQ(decodedRequest(encodedRequest(document)), document);
    }
}

TEST(MediaRequest, IsRefusedWithTheOptionsOfAnotherKind) {
    MediaRequest image = requestFor(MediaKind::imageProperties);
    image.wantsText = true;
    EXPECT_FALSE(decodedRequest(encodedRequest(image)));
    MediaRequest asset = requestFor(MediaKind::mediaAsset);
    asset.wantsImageCount = true;
    EXPECT_FALSE(decodedRequest(encodedRequest(asset)));
    MediaRequest document = requestFor(MediaKind::pdfDocument);
    document.wantsMetadata = true;
    EXPECT_FALSE(decodedRequest(encodedRequest(document)));
}

TEST(MediaRequest, IsRefusedWhenItIsNone) {
    const Data request = dataOf(encodedRequest(requestFor(MediaKind::imageProperties)));
    EXPECT_FALSE(decodedRequest({}));
    EXPECT_FALSE(decodedRequest(DataView(request).first(request.size() - 1)));
    EXPECT_FALSE(decodedRequest(dataOf(request, 1)));
    EXPECT_FALSE(decodedRequest(encodedAnswerHead(Outcome::nothing, 5)));
    forEachDamage(request, [](const Data& damaged, std::size_t at) {
        EXPECT_EQ(decodedRequest(damaged).has_value(), at >= numberOffset) << at;
    });
}

TEST(MediaAnswer, ArrivesAsItWasSent) {
    for (const Outcome outcome : {Outcome::ready, Outcome::nothing}) {
        const MessageHead head = encodedAnswerHead(outcome, large);
        const auto answer = decodedAnswer(head);
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->outcome, outcome);
        EXPECT_EQ(answer->number, large);
        EXPECT_TRUE(answer->value.empty());
    }
    const Data message = dataOf(encodedAnswerHead(Outcome::value, 1), 3);
    const auto answer = decodedAnswer(message);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->value.size(), 3U);
    EXPECT_EQ(answer->value.front(), std::byte{7});
}

TEST(MediaAnswer, IsRefusedWhenItIsNone) {
    const Data answer = dataOf(encodedAnswerHead(Outcome::value, 1), 1);
    EXPECT_FALSE(decodedAnswer({}));
    EXPECT_FALSE(decodedAnswer(DataView(answer).first(messageHeadSize - 1)));
    EXPECT_FALSE(decodedAnswer(encodedRequest({})));
    forEachDamage(answer, [](const Data& damaged, std::size_t at) {
        EXPECT_EQ(decodedAnswer(damaged).has_value(), at >= numberOffset) << at;
    });
}

TEST(MediaAnswer, IsRefusedWithAnOutcomeThatThereIsNot) {
    for (const unsigned number : {0U, 4U, 0xFFFFU}) {
        const auto outcome = static_cast<Outcome>(number);
        EXPECT_FALSE(decodedAnswer(encodedAnswerHead(outcome, 1)));
        EXPECT_FALSE(decodedAnswer(dataOf(encodedAnswerHead(outcome, 1), 1)));
    }
}

TEST(MediaAnswer, HasAValueOnlyWhenItSaysSo) {
    EXPECT_FALSE(decodedAnswer(encodedAnswerHead(Outcome::value, 1)));
    EXPECT_FALSE(decodedAnswer(dataOf(encodedAnswerHead(Outcome::nothing, 1), 1)));
    EXPECT_FALSE(decodedAnswer(dataOf(encodedAnswerHead(Outcome::ready, 1), 1)));
}

TEST(MediaAnswer, HasALargestSize) {
    const MessageHead head = encodedAnswerHead(Outcome::value, 1);
    EXPECT_TRUE(decodedAnswer(dataOf(head, maximumMessageSize - messageHeadSize)));
    EXPECT_FALSE(decodedAnswer(dataOf(head, maximumMessageSize - messageHeadSize + 1)));
}

} // namespace
