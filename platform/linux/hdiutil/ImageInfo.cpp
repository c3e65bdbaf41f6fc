// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/ImageInfo.h"

#include "platform/FileURL.h"
#include "platform/PathString.h"
#include "platform/linux/hdiutil/PropertyText.h"
#include "platform/linux/hdiutil/VolumeProbe.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace platform::hdiutil {
namespace {

using Dictionary = PropertyList::Dictionary;
using Kind = DiskImage::Kind;

constexpr std::uint64_t blockSize = 512;

PropertyList number(std::uint64_t value) {
    return static_cast<std::int64_t>(value);
}

PropertyList flag(bool value) {
    return value;
}

// Names of files and volumes may hold anything.
PropertyList text(std::string_view value) {
    return propertyText(value);
}

bool isCompressed(const DiskImage& image) {
    return image.udif && formatNamesOf(image).format != "UDRO";
}

/// How much of the disk is written in the image.
struct Use {
    std::uint64_t empty = 0;
    std::uint64_t nonEmpty = 0;
    std::uint64_t stored = 0;
};

Use useOf(const DiskImage& image) {
    Use use;
    if (!image.udif) {
        use.stored = image.storedBytes;
        use.nonEmpty = std::min(image.storedBytes, image.totalBytes());
        use.empty = image.totalBytes() - use.nonEmpty;
        return use;
    }
    for (const UdifChunk& chunk : image.udif->image().chunks) {
        const bool isEmpty =
            chunk.kind == UdifChunk::Kind::zero || chunk.kind == UdifChunk::Kind::ignore;
        (isEmpty ? use.empty : use.nonEmpty) += chunk.sectorCount * blockSize;
        use.stored += isEmpty ? 0 : chunk.dataLength;
    }
    return use;
}

PropertyList sizeInformation(const DiskImage& image) {
    const Use use = useOf(image);
    const auto total = static_cast<double>(image.totalBytes());
    const double ratio = total > 0 ? static_cast<double>(use.stored) / total : 1;
    return Dictionary{
        {"Total Bytes", number(image.totalBytes())},
        {"Sector Count", number(image.totalBytes() / blockSize)},
        {"Compressed Bytes", number(use.stored)},
        {"Compressed Ratio", ratio},
        {"Total Empty Bytes", number(use.empty)},
        {"Total Non-Empty Bytes", number(use.nonEmpty)},
        {"CUDIFEncoding-bytes-total", number(image.storedBytes)},
        {"CUDIFEncoding-bytes-in-use", number(use.stored)},
        {"CUDIFEncoding-bytes-wasted",
         number(image.storedBytes - std::min(use.stored, image.storedBytes))},
    };
}

bool hasChecksum(const DiskImage& image) {
    constexpr std::uint32_t crc32 = 2;
    return image.udif && image.udif->image().checksumType == crc32;
}

PropertyList properties(const DiskImage& image) {
    return Dictionary{
        {"Encrypted", flag(image.kind == Kind::encrypted)},
        {"Compressed", flag(isCompressed(image))},
        {"Checksummed", flag(hasChecksum(image))},
        {"Partitioned", flag(image.map.scheme != PartitionMap::Scheme::none)},
        {"Kernel Compatible", flag(image.kind == Kind::raw || image.kind == Kind::optical)},
        {"Software License Agreement", flag(false)},
    };
}

std::string_view schemeName(PartitionMap::Scheme scheme) {
    switch (scheme) {
    case PartitionMap::Scheme::gpt: return "GUID";
    case PartitionMap::Scheme::mbr: return "fdisk";
    case PartitionMap::Scheme::apple: return "Apple";
    case PartitionMap::Scheme::none: break;
    }
    return "none";
}

// The file system in a stretch of the disk: its kind and label.
Dictionary fileSystems(const std::shared_ptr<const ByteSource>& bytes) {
    const auto volume = probeVolume(*bytes);
    return volume ? Dictionary{{volumeKind(*volume), text(volume->label)}} : Dictionary();
}

PropertyList partitionInfo(const Partition& partition, const DiskImage& image) {
    const auto bytes =
        std::make_shared<PartSource>(image.disk, partition.firstByte, partition.byteLength);
    Dictionary info{
        {"partition-name", text(partition.name)},
        {"partition-start", number(partition.firstByte / blockSize)},
        {"partition-length", number(partition.byteLength / blockSize)},
        {"partition-hint", text(partition.hint)},
        {"partition-synthesized", flag(partition.isSynthesized)},
        {"partition-filesystems", fileSystems(bytes)},
    };
    if (partition.number != 0) {
        info.emplace("partition-number", number(partition.number));
    }
    if (!partition.uuid.empty()) {
        info.emplace("partition-UUID", text(partition.uuid));
    }
    return info;
}

// A disk without partitions is one in the eyes of a reader.
Partition wholeDisk(const DiskImage& image) {
    Partition whole;
    whole.name = "whole disk";
    whole.hint = "unknown partition";
    if (const auto volume = probeVolume(*image.disk)) {
        whole.hint = volumeKind(*volume);
    }
    whole.byteLength = image.disk->size();
    whole.isSynthesized = true;
    return whole;
}

// The map of an optical disc need not mention what makes it one.
bool isWholeDiskShown(const DiskImage& image) {
    const auto& mapped = image.map.partitions;
    return mapped.empty() ||
           (image.isDisc && std::ranges::find(mapped, 0U, &Partition::firstByte) == mapped.end());
}

PropertyList partitions(const DiskImage& image) {
    PropertyList::Array list;
    if (image.disk && isWholeDiskShown(image)) {
        list.push_back(partitionInfo(wholeDisk(image), image));
    }
    for (const Partition& partition : image.map.partitions) {
        list.push_back(partitionInfo(partition, image));
    }
    return Dictionary{
        {"partition-scheme", text(schemeName(image.map.scheme))},
        {"block-size", number(blockSize)},
        {"appendable", flag(false)},
        {"burnable", flag(image.kind == Kind::optical)},
        {"partitions", std::move(list)},
    };
}

PropertyList backingStore(const DiskImage& image) {
    const bool isBundle = image.kind == Kind::sparseBundle;
    return Dictionary{
        {"Name", text(PathString::lastPathComponent(image.path))},
        {"URL", text(FileURL::fromPath(image.path).absoluteString())},
        {"Class Name", text(isBundle ? "CBundleBackingStore" : "CBSDBackingStore")},
    };
}

} // namespace

PropertyList imageInfo(const DiskImage& image) {
    const FormatNames names = formatNamesOf(image);
    Dictionary info{
        {"Format", text(names.format)},
        {"Format Description", text(names.description)},
        {"Class Name", text(names.className)},
        {"Checksum Type", text(hasChecksum(image) ? "CRC32" : "none")},
        {"Backing Store Information", backingStore(image)},
        {"Properties", properties(image)},
        {"Size Information", sizeInformation(image)},
        {"partitions", partitions(image)},
        {"Total Bytes", number(image.totalBytes())},
        {"Compressed Bytes", number(useOf(image).stored)},
        {"Encrypted", flag(image.kind == Kind::encrypted)},
    };
    if (hasChecksum(image)) {
        info.emplace("Checksum Value", text("$" + image.udif->image().checksumValue));
    }
    return info;
}

} // namespace platform::hdiutil
