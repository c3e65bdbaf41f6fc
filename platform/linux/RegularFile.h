// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/Descriptor.h"

#include <string>

namespace platform {

/// Opens the regular file at `path` for reading, links followed; -1 for anything else, which is not
/// opened. Never waits for a writer or for a device. Closed on exec. Any thread.
[[nodiscard]] Descriptor openRegularFile(const std::string& path);

} // namespace platform
