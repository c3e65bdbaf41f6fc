// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"

#include <string_view>

/// Whether the extension of `path`, in any case, is one of the disk images that can be mounted:
/// dmg, iso, img, sparseimage, sparsebundle, cdr. Told by the name alone. Any thread.
QM_EXPORT [[nodiscard]] bool qm_hasMountableDiskImageExtension(std::string_view path);
