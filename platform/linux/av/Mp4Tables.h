// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/OpenedFile.h"

#include <cstdint>
#include <vector>

namespace platform::av {

/// Where the types of those boxes of an ISO base media or QuickTime file stand, in ascending order,
/// that say of each sample where it is and of what size: they grow with the length of a film, and
/// tell nothing of it as a whole. Empty for other files. Any thread.
[[nodiscard]] std::vector<std::uint64_t> placesOfSampleTables(const OpenedFile& file);

} // namespace platform::av
