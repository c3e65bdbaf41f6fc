// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/MediaMessage.h"

#include <bit>
#include <cstring>

namespace platform::worker {
namespace {

/// Both messages begin alike.
struct Layout {
    std::uint32_t mark = 0;
    std::uint16_t kind = 0;
    std::uint16_t options = 0;
    std::uint64_t number = 0;
};
static_assert(sizeof(Layout) == messageHeadSize);

// The last digit is the version, which changes with anything that is sent, values included.
constexpr std::uint32_t requestMark = 0x514D5231; // "QMR1"
constexpr std::uint32_t answerMark = 0x514D4131;  // "QMA1"
constexpr std::uint16_t imageCountOption = 1;
constexpr std::uint16_t metadataOption = 2;
constexpr std::uint16_t textOption = 4;

std::optional<Layout> layoutOf(DataView message, std::uint32_t mark) {
    if (message.size() < messageHeadSize || message.size() > maximumMessageSize) {
        return std::nullopt;
    }
    Layout layout;
    std::memcpy(&layout, message.data(), sizeof layout);
    return layout.mark == mark ? std::optional(layout) : std::nullopt;
}

// The options that a request of this kind may have; nullopt for a kind that there is not.
std::optional<unsigned> optionsOf(MediaKind kind) {
    switch (kind) {
    case MediaKind::imageProperties: return imageCountOption;
    case MediaKind::mediaAsset: return metadataOption;
    case MediaKind::pdfDocument: return textOption;
    }
    return std::nullopt;
}

bool isOutcome(std::uint16_t number) {
    using Outcome = MediaAnswer::Outcome;
    return number >= static_cast<std::uint16_t>(Outcome::ready) &&
           number <= static_cast<std::uint16_t>(Outcome::value);
}

} // namespace

MessageHead encodedRequest(const MediaRequest& request) {
    const auto options = static_cast<std::uint16_t>(
        (request.wantsImageCount ? imageCountOption : 0) |
        (request.wantsMetadata ? metadataOption : 0) | (request.wantsText ? textOption : 0));
    return std::bit_cast<MessageHead>(
        Layout{requestMark, static_cast<std::uint16_t>(request.kind), options, request.number});
}

std::optional<MediaRequest> decodedRequest(DataView message) {
    const auto layout = layoutOf(message, requestMark);
    if (!layout || message.size() != messageHeadSize) {
        return std::nullopt;
    }
    const auto kind = static_cast<MediaKind>(layout->kind);
    const auto options = optionsOf(kind);
    if (!options || (layout->options & ~*options) != 0) {
        return std::nullopt;
    }
    MediaRequest request;
    request.kind = kind;
    request.wantsImageCount = (layout->options & imageCountOption) != 0;
    request.wantsMetadata = (layout->options & metadataOption) != 0;
    request.wantsText = (layout->options & textOption) != 0;
    request.number = layout->number;
    return request;
}

MessageHead encodedAnswerHead(MediaAnswer::Outcome outcome, std::uint64_t number) {
    return std::bit_cast<MessageHead>(
        Layout{answerMark, static_cast<std::uint16_t>(outcome), 0, number});
}

std::optional<MediaAnswer> decodedAnswer(DataView message) {
    const auto layout = layoutOf(message, answerMark);
    if (!layout || !isOutcome(layout->kind) || layout->options != 0) {
        return std::nullopt;
    }
    MediaAnswer answer;
    answer.outcome = static_cast<MediaAnswer::Outcome>(layout->kind);
    answer.number = layout->number;
    answer.value = message.subspan(messageHeadSize);
    const bool hasValue = answer.outcome == MediaAnswer::Outcome::value;
    return hasValue != answer.value.empty() ? std::optional(answer) : std::nullopt;
}

} // namespace platform::worker
