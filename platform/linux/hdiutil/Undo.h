// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/AttachRecord.h"

namespace platform::hdiutil {

/// Takes back everything that the record says was made, in the opposite order, as far as the
/// system lets it, and then the record. False, with errno set and the record kept, when something
/// of it stays.
bool undo(const AttachRecord& record, const AttachRecords& records);

/// The same, but wholly or not at all: when the system refuses to unmount a volume, those that were
/// unmounted before it are mounted again where they were, and the record says how. False, with
/// errno set to the reason of the refusal, then.
[[nodiscard]] bool undoWholly(const AttachRecord& record, const AttachRecords& records);

} // namespace platform::hdiutil
