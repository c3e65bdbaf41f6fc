// SPDX-License-Identifier: Apache-2.0
// Reads bytes as a film or a recording of whatever format they have, with and without its items.
#include "fuzz/Fuzzing.h"
#include "platform/linux/av/AvReader.h"
#include "platform/linux/worker/AssetAnswer.h"
#include "tests/unit/support/MemoryFile.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace platform;
    static const bool isPrepared = (av::prepareReader(), true);
    fuzzing::require(isPrepared);
    const MemoryFile file(fuzzing::textOf(data, size));
    auto whole = av::readMediaAsset(file.descriptor(), true);
    const auto asset = av::readMediaAsset(file.descriptor(), false);
    fuzzing::require(whole.has_value() == asset.has_value());
    if (!whole) {
        return 0;
    }
    fuzzing::require(!whole->duration ||
                     (std::isfinite(*whole->duration) && *whole->duration >= 0));
    const auto passed = worker::decodedMediaAsset(worker::encodedMediaAsset(*whole));
    fuzzing::require(passed && passed->duration == whole->duration);
    fuzzing::require(passed->audioTracks == whole->audioTracks);
    whole->commonMetadata.clear();
    fuzzing::require(whole == asset);
    return 0;
}
