// SPDX-License-Identifier: Apache-2.0
// Reads bytes as what the disk-image tool prints on attaching or on describing an image, and as a
// record of what is attached.
#include "fuzz/Fuzzing.h"
#include "platform/linux/hdiutil/AttachRecord.h"
#include "services/QMDiskImageEntries.h"
#include "services/QMDiskImageService.h"

using fuzzing::require;
using platform::PropertyList;
using platform::hdiutil::AttachRecord;

namespace {

void checkDescription(const PropertyList::Dictionary& info) {
    QMMetadataEntries entries;
    qm_appendDiskImageEntries(
        info, *QMMetadataService::enabledKeysForCategory(QMMetadataCategoryDiskImage), entries);
    require(entries.size() <= 4);
    for (const auto& entry : entries) {
        require(entry->value && !entry->value->empty());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto bytes = fuzzing::bytesOf(data, size);
    const auto mountPoint = QMDiskImageService::parseMountPointFromPlistData(bytes);
    require(!mountPoint || (!mountPoint->path().empty() && mountPoint->hasDirectoryPath()));
    const auto list = PropertyList::parse(bytes);
    const auto record = list ? AttachRecord::fromPropertyList(*list) : std::nullopt;
    require(!record || AttachRecord::fromPropertyList(record->asPropertyList()) == record);
    if (list && list->dictionary() != nullptr) {
        checkDescription(*list->dictionary());
    }
    return 0;
}
