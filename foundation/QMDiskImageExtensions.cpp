// SPDX-License-Identifier: Apache-2.0
#include "foundation/QMDiskImageExtensions.h"

#include "foundation/QMString.h"

#include <algorithm>
#include <array>

bool qm_hasMountableDiskImageExtension(std::string_view path) {
    static constexpr std::array<std::string_view, 6> mountable{
        "dmg", "iso", "img", "sparseimage", "sparsebundle", "cdr"};
    return std::ranges::find(mountable, qm_pathExtensionLowercased(path)) != mountable.end();
}
