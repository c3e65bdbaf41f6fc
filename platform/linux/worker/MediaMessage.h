// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

/// What passes between the library and the processes that read media for it. Each message is one
/// datagram, in the machine's own byte order: 16 bytes, and behind those of an answer its value.
/// Neither side trusts the other. Any thread.
namespace platform::worker {

/// The largest message. It fits into the buffer that a socket has unless told otherwise.
inline constexpr std::size_t maximumMessageSize = std::size_t{128} * 1024;
inline constexpr std::size_t messageHeadSize = 16;

using MessageHead = std::array<std::byte, messageHeadSize>;

enum class MediaKind : std::uint16_t {
    imageProperties = 1,
    mediaAsset = 2,
    pdfDocument = 3,
};

/// What is wanted of the file whose descriptor comes with the message.
struct MediaRequest {
    MediaKind kind = MediaKind::imageProperties;
    bool wantsImageCount = false; ///< for images
    bool wantsMetadata = false;   ///< for media assets: title, artist and album
    bool wantsText = false;       ///< for PDF: whether the first page has any
    std::uint64_t number = 0;     ///< the answer has the same

    friend bool operator==(const MediaRequest&, const MediaRequest&) = default;
};

struct MediaAnswer {
    enum class Outcome : std::uint16_t {
        ready = 1,   ///< to no request: the process waits for the first
        nothing = 2, ///< the file cannot be read as what it was asked for
        value = 3,
    };
    Outcome outcome = Outcome::nothing;
    std::uint64_t number = 0;
    DataView value; ///< borrowed from the message; only with `Outcome::value`, and then not empty
};

[[nodiscard]] MessageHead encodedRequest(const MediaRequest& request);
/// nullopt for anything that `encodedRequest` of the same version never writes.
[[nodiscard]] std::optional<MediaRequest> decodedRequest(DataView message);

/// The head of the answer; its value follows.
[[nodiscard]] MessageHead encodedAnswerHead(MediaAnswer::Outcome outcome, std::uint64_t number);
/// nullopt for anything that is no answer of the same version. The value is not looked into.
[[nodiscard]] std::optional<MediaAnswer> decodedAnswer(DataView message);

} // namespace platform::worker
