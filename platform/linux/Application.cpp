// SPDX-License-Identifier: Apache-2.0
#include "platform/Application.h"

namespace platform {

std::string_view applicationIdentifier() {
    return QM_APPLICATION_ID;
}

} // namespace platform
