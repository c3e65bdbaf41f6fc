// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/OpenedFile.h"

#include <optional>

namespace platform::av {

/// How long the music in a Standard MIDI File plays, in seconds: until the last of its tracks ends,
/// at the tempo that the events in all of them set. Tracks of the format whose tracks are pieces of
/// their own play one after the other. A damaged track ends where the damage begins. nullopt when
/// it is no such file, or has no track, or more than 16 MiB. Any thread.
[[nodiscard]] std::optional<double> durationOfMidi(const OpenedFile& file);

} // namespace platform::av
