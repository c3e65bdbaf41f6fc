// SPDX-License-Identifier: Apache-2.0
// Reads bytes as the note beside a disk that is being expanded: as they are, and with the digest
// that they should have, which no mutation finds.
#include "fuzz/Fuzzing.h"
#include "platform/Digest.h"
#include "platform/linux/hdiutil/ExpansionProgress.h"

#include <algorithm>

using fuzzing::require;
using platform::hdiutil::ExpansionProgress;

namespace {

void check(platform::DataView bytes) {
    const auto progress = ExpansionProgress::parse(bytes);
    if (progress) {
        require(progress->written <= progress->diskSize);
        require(std::ranges::equal(progress->serialized(), bytes));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t startSize = 16;
    const auto bytes = fuzzing::bytesOf(data, size);
    check(bytes);
    if (size >= startSize + platform::Digest::sha256Length) {
        platform::Data sealed(bytes.begin(), bytes.end() - platform::Digest::sha256Length);
        platform::Digest::SHA256 digest;
        digest.update(platform::DataView(sealed).subspan(startSize));
        const auto seal = digest.finish();
        sealed.insert(sealed.end(), seal.begin(), seal.end());
        check(sealed);
    }
    return 0;
}
