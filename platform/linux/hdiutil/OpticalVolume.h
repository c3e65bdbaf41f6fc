// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/ByteSource.h"

#include <optional>
#include <string>

namespace platform::hdiutil {

/// What the volume descriptors of an optical disc tell. The reader takes the disc's sectors to be
/// of 2,048 bytes, without the error correction that some images of CDs keep around them.
struct OpticalFeatures {
    bool isIso9660 = false;
    bool hasJoliet = false;    ///< a second tree of ISO 9660 with names in UTF-16
    bool hasRockRidge = false; ///< the names and permissions of POSIX in ISO 9660
    bool isUdf = false;        ///< together with `isIso9660` on discs that can be read either way
    bool hasElTorito = false;  ///< machines can start from it
    /// The name of the volume in ISO 9660, UTF-8; that of Joliet where it is not only shorter.
    /// Empty for UDF alone, whose name `probeVolume` knows.
    std::string volumeLabel;
};

/// Reads the volume descriptors of `disc`, which may be damaged or hostile. nullopt when it has
/// neither ISO 9660 nor UDF. Any thread.
[[nodiscard]] std::optional<OpticalFeatures> readOpticalFeatures(const ByteSource& disc);

} // namespace platform::hdiutil
