// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// How the disk service of the system names block devices.
namespace platform::hdiutil {

/// The object that stands for a device, "/dev/loop7". Object paths have letters, digits and "_"
/// only; the service writes others as "_" and two hexadecimal digits. Any bytes make a valid path.
[[nodiscard]] std::string objectPathOf(std::string_view device);

/// "/dev/loop7" for the object of a loop device, and only for one. The path may be hostile.
[[nodiscard]] std::optional<std::string> loopDeviceOf(std::string_view objectPath);

} // namespace platform::hdiutil
