// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/UdisksPaths.h"

#include "platform/linux/Ascii.h"

#include <algorithm>

namespace platform::hdiutil {
namespace {

// The reference of udisks2, "D-Bus API".
constexpr std::string_view devicesPath = "/org/freedesktop/UDisks2/block_devices/";
constexpr std::string_view devicesFolder = "/dev/";

} // namespace

std::string objectPathOf(std::string_view device) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string path(devicesPath);
    device.remove_prefix(device.starts_with(devicesFolder) ? devicesFolder.size() : 0);
    for (const char c : device) {
        if (isLetterOrDigit(c)) {
            path.push_back(c);
        } else {
            const auto byte = static_cast<unsigned char>(c);
            path.append({'_', digits.at(byte >> 4U), digits.at(byte & 0xFU)});
        }
    }
    return path;
}

std::optional<std::string> loopDeviceOf(std::string_view objectPath) {
    if (!objectPath.starts_with(devicesPath)) {
        return std::nullopt;
    }
    const std::string_view name = objectPath.substr(devicesPath.size());
    constexpr std::string_view prefix = "loop";
    if (!name.starts_with(prefix) || name.size() == prefix.size() ||
        !std::ranges::all_of(name.substr(prefix.size()), isDigit)) {
        return std::nullopt;
    }
    return std::string(devicesFolder).append(name);
}

} // namespace platform::hdiutil
