// SPDX-License-Identifier: Apache-2.0
// Reads bytes as the object path that the disk service answers with, and as the name of a device.
#include "fuzz/Fuzzing.h"
#include "platform/linux/hdiutil/UdisksPaths.h"

#include <algorithm>

namespace {

using namespace platform::hdiutil;
using fuzzing::require;

bool mayStandInPath(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           c == '/';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Whatever is answered, nothing but a loop device is ever mounted or removed.
void checkAnswer(const std::string& path) {
    const auto device = loopDeviceOf(path);
    if (device) {
        constexpr std::string_view prefix = "/dev/loop";
        require(device->starts_with(prefix) && device->size() > prefix.size());
        require(std::ranges::all_of(std::string_view(*device).substr(prefix.size()), isDigit));
        require(objectPathOf(*device) == path);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzzing::textOf(data, size);
    const std::string path = objectPathOf(text);
    require(path.starts_with('/') && std::ranges::all_of(path, mayStandInPath));
    checkAnswer(text);
    checkAnswer(path);
    checkAnswer("/org/freedesktop/UDisks2/block_devices/" + text);
    return 0;
}
