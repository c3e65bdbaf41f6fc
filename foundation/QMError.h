// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <string>

/// Why an operation failed, for programs and for people.
struct QM_EXPORT QMError {
    std::string domain;               ///< who gave the code its meaning
    std::int64_t code = 0;            ///< meaningful within the domain
    std::string localizedDescription; ///< one line, UTF-8 but for names of files
};

/// The domain of the errors that concern files; its codes are the platform's.
inline constexpr const char* QMCocoaErrorDomain = "NSCocoaErrorDomain";
