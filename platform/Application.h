// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"

#include <string_view>

namespace platform {

/// The reverse-DNS identifier of the file manager, fixed when this was built: ASCII letters,
/// digits, "_" and ".". Any thread.
QM_EXPORT [[nodiscard]] std::string_view applicationIdentifier();

} // namespace platform
