// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MediaAsset.h"

#include <optional>

/// Reading what films and recordings say of themselves, for the process that untrusted media are
/// read in.
namespace platform::av {

/// Does what the libraries would otherwise do when they are first used, so that readMediaAsset()
/// needs no file but its own, and silences them. Call it once, before other threads exist.
void prepareReader();

/// Reads the film or recording in the regular file that `descriptor` is open for, by its content
/// alone. The descriptor stays the caller's. The file is read, nothing else is opened or written,
/// whatever the file names. nullopt when it is nothing that is known here; what is damaged is left
/// out. Titles, artists and albums are read only for `wantsMetadata`. After prepareReader(), any
/// thread.
[[nodiscard]] std::optional<MediaAssetProperties> readMediaAsset(int descriptor,
                                                                 bool wantsMetadata);

} // namespace platform::av
