// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"

#include <string>

namespace platform {

/// An icon by its name in the desktop's icon theme (freedesktop.org Icon Naming Specification) and
/// its size in points. Whoever draws it resolves the name, with the theme's own fallbacks: a name
/// such as "image-png" falls back to "image-x-generic".
struct QM_EXPORT Icon {
    std::string name;  ///< in the theme: no path, no extension
    double width = 0;  ///< points
    double height = 0; ///< points

    friend bool operator==(const Icon&, const Icon&) = default;
};

/// The icon that stands for items of the uniform type `typeIdentifier`, at 32 by 32 points, the
/// platform's default. Any thread.
QM_EXPORT [[nodiscard]] Icon iconForType(const std::string& typeIdentifier);

/// The icon of the item at `path`, told by its type; the one for unknown files when nothing is
/// there. Any thread.
QM_EXPORT [[nodiscard]] Icon iconForFile(const std::string& path);

} // namespace platform
