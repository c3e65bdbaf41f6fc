// SPDX-License-Identifier: Apache-2.0
// Reads bytes as what the disk-image tool prints on attaching, and as a record of what is attached.
#include "platform/linux/hdiutil/AttachRecord.h"
#include "services/QMDiskImageService.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

using platform::PropertyList;
using platform::hdiutil::AttachRecord;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto bytes = std::as_bytes(std::span(data, size));
    const auto mountPoint = QMDiskImageService::parseMountPointFromPlistData(bytes);
    if (mountPoint && (mountPoint->path().empty() || !mountPoint->hasDirectoryPath())) {
        std::abort();
    }
    const auto list = PropertyList::parse(bytes);
    const auto record = list ? AttachRecord::fromPropertyList(*list) : std::nullopt;
    if (record && AttachRecord::fromPropertyList(record->asPropertyList()) != record) {
        std::abort();
    }
    return 0;
}
