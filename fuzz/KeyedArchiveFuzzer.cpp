// SPDX-License-Identifier: Apache-2.0
#include "fuzz/Fuzzing.h"
#include "model/QMFileItem.h"
#include "platform/KeyedArchive.h"

#include <algorithm>

namespace {

using fuzzing::require;

void checkRoundTrip(std::string text) {
    platform::KeyedArchiver archiver("Some");
    archiver.encodeString("path", text);
    const platform::Data archive = archiver.encodedData();
    const auto decoded = platform::KeyedUnarchiver::forReadingFromData(archive, "Some");
    require(decoded && decoded->decodeString("path") == text);
    require(!platform::KeyedUnarchiver::forReadingFromData(archive, "Other"));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto archive =
        platform::KeyedUnarchiver::forReadingFromData(fuzzing::bytesOf(data, size), "QMFileItem");
    if (archive) {
        static_cast<void>(QMFileItem::initWithCoder(*archive));
    }
    checkRoundTrip(fuzzing::textOf(data, size));
    return 0;
}
