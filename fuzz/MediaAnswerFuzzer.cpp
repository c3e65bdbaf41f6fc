// SPDX-License-Identifier: Apache-2.0
// Reads bytes as what a process for media answers: as a whole message, and as its value alone.
#include "fuzz/Fuzzing.h"
#include "platform/linux/Cbor.h"
#include "platform/linux/worker/AssetAnswer.h"
#include "platform/linux/worker/ImageAnswer.h"
#include "platform/linux/worker/MediaMessage.h"
#include "platform/linux/worker/PDFAnswer.h"

#include <algorithm>

namespace {

using namespace platform;

void readMessage(DataView bytes) {
    const auto answer = worker::decodedAnswer(bytes);
    if (!answer) {
        return;
    }
    const auto head = worker::encodedAnswerHead(answer->outcome, answer->number);
    fuzzing::require(std::equal(head.begin(), head.end(), bytes.begin()));
    fuzzing::require(head.size() + answer->value.size() == bytes.size());
    static_cast<void>(worker::decodedImageProperties(answer->value));
    static_cast<void>(worker::decodedPDFProperties(answer->value));
}

void readValue(DataView bytes) {
    if (const auto value = Cbor::decoded(bytes)) {
        // There is one spelling of each, so it is the one that was read.
        const auto written = Cbor::encoded(*value);
        fuzzing::require(written && std::ranges::equal(*written, bytes));
    }
    if (const auto properties = worker::decodedImageProperties(bytes)) {
        const auto written = worker::encodedImageProperties(*properties);
        fuzzing::require(worker::decodedImageProperties(written) == properties);
    }
    if (const auto asset = worker::decodedMediaAsset(bytes)) {
        const auto written = worker::encodedMediaAsset(*asset);
        fuzzing::require(worker::decodedMediaAsset(written) == asset);
    }
    if (const auto document = worker::decodedPDFProperties(bytes)) {
        const auto written = worker::encodedPDFProperties(*document);
        fuzzing::require(worker::decodedPDFProperties(written) == document);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto bytes = fuzzing::bytesOf(data, size);
    readMessage(bytes);
    readValue(bytes);
    return 0;
}
