// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/Undo.h"

#include "platform/linux/hdiutil/Mounting.h"
#include "platform/linux/hdiutil/PartialDisk.h"

#include <cerrno>
#include <cstddef>

namespace platform::hdiutil {

bool undo(const AttachRecord& record, const AttachRecords& records) {
    bool isUndone = true;
    int error = 0;
    for (std::size_t left = record.volumes.size(); left > 0; --left) {
        if (!unmountVolume(record.volumes[left - 1])) {
            error = errno;
            isUndone = false;
        }
    }
    // A mount may still need the disk.
    if (isUndone && !record.expandedDisk.empty() && !removeDisk(record.expandedDisk)) {
        error = errno;
        isUndone = false;
    }
    if (isUndone) {
        records.remove(record);
    }
    errno = error;
    return isUndone;
}

} // namespace platform::hdiutil
