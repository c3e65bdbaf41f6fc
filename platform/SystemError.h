// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace platform {

/// Why the system refused something.
enum class Refusal {
    noPermission,
    readOnlyVolume,
    noSuchItem,
    noSpace,
    other,
};

/// A refusal and the system's own words for it.
struct SystemError {
    Refusal refusal = Refusal::other; ///< for code that has to choose
    std::string reason;               ///< for people; UTF-8, without a full stop
};

} // namespace platform
