// SPDX-License-Identifier: Apache-2.0
// Reads bytes as a disk image of whatever form, as the tool does for a description, and what the
// description says as the service does. The first byte says how many times 16 KiB of zeros follow
// the others.
#include "fuzz/Fuzzing.h"
#include "platform/linux/Utf8.h"
#include "platform/linux/hdiutil/DiskImage.h"
#include "platform/linux/hdiutil/ImageInfo.h"
#include "services/QMDiskImageEntries.h"
#include "tests/unit/support/MemoryFile.h"

#include <unistd.h>

namespace {

using namespace platform;
using fuzzing::require;

std::int64_t numberIn(const PropertyList& info, std::string_view key) {
    const PropertyList* const value = info.valueForKey(key);
    require(value != nullptr && std::holds_alternative<std::int64_t>(value->value()));
    return std::get<std::int64_t>(value->value());
}

void checkEntries(const PropertyList& info) {
    QMMetadataEntries entries;
    qm_appendDiskImageEntries(
        *info.dictionary(), *QMMetadataService::enabledKeysForCategory(QMMetadataCategoryDiskImage),
        entries);
    require(entries.size() == 4);
    for (const auto& entry : entries) {
        require(isUTF8(*entry->value) && !entry->value->empty());
    }
}

void checkInfo(const hdiutil::DiskImage& image) {
    const PropertyList info = hdiutil::imageInfo(image);
    require(numberIn(info, "Total Bytes") >= 0 && numberIn(info, "Compressed Bytes") >= 0);
    const PropertyList* const sizes = info.valueForKey("Size Information");
    require(sizes != nullptr && numberIn(*sizes, "Total Empty Bytes") >= 0);
    require(numberIn(*sizes, "Total Empty Bytes") <= numberIn(info, "Total Bytes"));
    require(numberIn(*sizes, "Total Non-Empty Bytes") <= numberIn(info, "Total Bytes"));
    const auto again = PropertyList::parse(info.serialized(PropertyList::Format::binary));
    require(again == info && !info.serialized(PropertyList::Format::xml).empty());
    checkEntries(info);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t unit = 16384;
    fuzzing::Input input(data, size);
    const std::size_t zeros = input.number(1) * unit;
    if (size == 0) {
        return 0;
    }
    const MemoryFile file(fuzzing::textOf(data + 1, size - 1));
    require(::ftruncate(file.descriptor(), static_cast<off_t>(size - 1 + zeros)) == 0);
    const auto opened =
        hdiutil::openDiskImage("/proc/self/fd/" + std::to_string(file.descriptor()));
    if (const auto* image = std::get_if<hdiutil::DiskImage>(&opened)) {
        checkInfo(*image);
    } else {
        require(!std::get<std::string>(opened).empty());
    }
    return 0;
}
