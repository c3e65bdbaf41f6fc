// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace platform {

/// The path of the tool that attaches, detaches and describes disk images: "/usr/bin/hdiutil", or
/// where that does not exist one that accepts the same "attach IMAGE -plist -noverify",
/// "detach PATH" and "imageinfo IMAGE -plist". Any thread.
[[nodiscard]] std::string diskImageToolPath();

} // namespace platform
