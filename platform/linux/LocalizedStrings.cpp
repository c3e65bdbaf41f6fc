// SPDX-License-Identifier: Apache-2.0
#include "platform/LocalizedStrings.h"

#include <libintl.h>

namespace platform::LocalizedStrings {

std::string stringForKey(const std::string& key) {
    // The empty key names the catalogue's own header.
    return key.empty() ? std::string() : std::string(::gettext(key.c_str()));
}

} // namespace platform::LocalizedStrings
