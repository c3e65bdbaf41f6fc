// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/MountAgain.h"

#include "platform/linux/hdiutil/ByteSource.h"
#include "platform/linux/hdiutil/DiskFile.h"
#include "platform/linux/hdiutil/Mounting.h"
#include "platform/linux/hdiutil/PartitionMap.h"
#include "platform/linux/hdiutil/PropertyText.h"
#include "platform/linux/hdiutil/VolumeProbe.h"

#include <optional>
#include <string>
#include <utility>

namespace platform::hdiutil {
namespace {

// Which of the record's entities is that of a volume: both are in the order of mounting.
std::optional<std::size_t> entityOf(const AttachRecord& record, std::size_t volumeNumber) {
    for (std::size_t i = 0; i < record.entities.size(); ++i) {
        if (record.entities[i].valueForKey("mount-point") != nullptr && volumeNumber-- == 0) {
            return i;
        }
    }
    return std::nullopt;
}

bool isOfKind(const Volume& volume, const PropertyList& entity) {
    const PropertyList* const kind = entity.valueForKey("volume-kind");
    return kind != nullptr && kind->string() != nullptr && *kind->string() == volumeKind(volume);
}

// Each partition has an entity, in the order of the map.
std::optional<VolumeInFile> volumeOf(const AttachRecord& record, std::size_t entity) {
    const std::string& file = record.expandedDisk.empty() ? record.image : record.expandedDisk;
    const std::shared_ptr<const ByteSource> disk = FileSource::open(file);
    const PartitionMap map = disk ? readPartitionMap(*disk) : PartitionMap();
    if (map.partitions.size() != record.entities.size()) {
        return std::nullopt;
    }
    const Partition& part = map.partitions[entity];
    const PartSource bytes(disk, part.firstByte, part.byteLength);
    auto volume = probeVolume(bytes);
    if (!volume || !isOfKind(*volume, record.entities[entity])) {
        return std::nullopt;
    }
    return VolumeInFile{.file = file,
                        .offset = part.firstByte,
                        .length = bytes.size(),
                        .isWholeFile = bytes.size() == disk->size(),
                        .isReadOnly = !record.expandedDisk.empty() || !isWritable(file),
                        .volume = *std::move(volume)};
}

// Which may give it another device and another place.
bool askServiceAgain(const VolumeInFile& volume, MountedVolume& place, PropertyList& entity) {
    place.device.path.clear();
    place.device.sequence = 0;
    if (!mountByService(volume, place, [] { return true; })) {
        return false;
    }
    PropertyList::Dictionary changed = *entity.dictionary();
    changed.insert_or_assign("dev-entry", propertyText(place.device.path));
    changed.insert_or_assign("mount-point", propertyText(place.mountPoint));
    entity = std::move(changed);
    return true;
}

} // namespace

bool mountAgain(AttachRecord& record, std::size_t volumeNumber) {
    const auto entity = entityOf(record, volumeNumber);
    const auto volume = entity ? volumeOf(record, *entity) : std::nullopt;
    if (!volume) {
        return false;
    }
    MountedVolume& place = record.volumes.at(volumeNumber);
    const bool isMounted = place.method == MountMethod::service
                               ? askServiceAgain(*volume, place, record.entities.at(*entity))
                               : mountVolume(*volume, place, [] { return true; }).has_value();
    if (!isMounted) {
        static_cast<void>(unmountVolume(place));
    }
    return isMounted;
}

} // namespace platform::hdiutil
