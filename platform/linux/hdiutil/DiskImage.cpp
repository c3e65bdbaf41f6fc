// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/DiskImage.h"

#include "platform/linux/hdiutil/Encryption.h"
#include "platform/linux/hdiutil/OpticalVolume.h"
#include "platform/linux/hdiutil/SparseBundle.h"
#include "platform/linux/hdiutil/SparseImage.h"
#include "platform/linux/hdiutil/VolumeProbe.h"

#include <algorithm>
#include <array>
#include <utility>

namespace platform::hdiutil {
namespace {

using Opened = std::variant<DiskImage, std::string>;
using Kind = DiskImage::Kind;

const char* const notRecognized = "image not recognized";

DiskImage imageOf(const std::string& path, std::shared_ptr<const FileSource> file) {
    DiskImage image;
    image.path = path;
    image.state = imageStateOf(file->state());
    image.storedBytes = file->size();
    image.file = std::move(file);
    return image;
}

// Gives the image its disk and reads how that is divided.
DiskImage withDisk(DiskImage image, std::shared_ptr<const ByteSource> disk) {
    image.map = readPartitionMap(*disk);
    image.isDisc = readOpticalFeatures(*disk).has_value();
    image.disk = std::move(disk);
    return image;
}

Opened openSparseBundle(const std::string& path) {
    const auto state = bundleStateAt(path);
    const auto opened = SparseBundle::open(path);
    if (const auto* reason = std::get_if<std::string>(&opened)) {
        return *reason;
    }
    const auto& bundle = std::get<std::shared_ptr<const SparseBundle>>(opened);
    DiskImage image;
    image.path = path;
    image.state = state;
    image.kind = bundle->isEncrypted() ? Kind::encrypted : Kind::sparseBundle;
    image.storedBytes = bundle->storedBytes();
    return bundle->isEncrypted() ? image : withDisk(std::move(image), bundle);
}

Opened openSparseImage(DiskImage image) {
    const auto opened = SparseImage::open(image.file);
    if (const auto* reason = std::get_if<std::string>(&opened)) {
        return *reason;
    }
    const auto& sparse = std::get<std::shared_ptr<const SparseImage>>(opened);
    image.kind = Kind::sparseImage;
    image.storedBytes = sparse->storedBytes();
    return withDisk(std::move(image), sparse);
}

Opened openUdif(DiskImage image, UdifImage udif) {
    image.kind = Kind::udif;
    image.udif = std::make_shared<UdifSource>(image.file, std::move(udif));
    auto disk = image.udif;
    return withDisk(std::move(image), std::move(disk));
}

Opened openRaw(DiskImage image) {
    auto disk = image.file;
    image = withDisk(std::move(image), std::move(disk));
    if (image.isDisc) {
        image.kind = Kind::optical;
        return image;
    }
    if (image.map.scheme == PartitionMap::Scheme::none && !probeVolume(*image.disk)) {
        return notRecognized;
    }
    return image;
}

// The names by the strongest compression that some chunk of the image has.
FormatNames udifNames(const UdifImage& udif) {
    struct Row {
        UdifChunk::Kind kind;
        std::string_view format;
        std::string_view description;
    };
    constexpr std::array<Row, 5> rows{{
        {UdifChunk::Kind::lzma, "ULMO", "UDIF read-only compressed (lzma)"},
        {UdifChunk::Kind::lzfse, "ULFO", "UDIF read-only compressed (lzfse)"},
        {UdifChunk::Kind::bzip2, "UDBZ", "UDIF read-only compressed (bzip2)"},
        {UdifChunk::Kind::zlib, "UDZO", "UDIF read-only compressed (zlib)"},
        {UdifChunk::Kind::adc, "UDCO", "UDIF read-only compressed (ADC)"},
    }};
    for (const Row& row : rows) {
        if (std::ranges::find(udif.chunks, row.kind, &UdifChunk::kind) != udif.chunks.end()) {
            return {row.format, row.description, "CUDIFDiskImage"};
        }
    }
    return {"UDRO", "UDIF read-only", "CUDIFDiskImage"};
}

} // namespace

Opened openDiskImage(const std::string& path) {
    if (SparseBundle::isSparseBundle(path)) {
        return openSparseBundle(path);
    }
    std::string reason;
    auto file = FileSource::open(path, &reason);
    if (!file) {
        return reason;
    }
    DiskImage image = imageOf(path, std::move(file));
    if (isEncryptedImage(*image.file)) {
        image.kind = Kind::encrypted;
        return image;
    }
    if (SparseImage::isSparseImage(*image.file)) {
        return openSparseImage(std::move(image));
    }
    auto udif = readUdif(*image.file);
    if (auto* read = std::get_if<UdifImage>(&udif)) {
        return openUdif(std::move(image), std::move(*read));
    }
    const auto& error = std::get<UdifError>(udif);
    return error.kind == UdifError::Kind::notUdif ? openRaw(std::move(image))
                                                  : Opened(error.reason);
}

FormatNames formatNamesOf(const DiskImage& image) {
    switch (image.kind) {
    case Kind::udif: return udifNames(image.udif->image());
    case Kind::encrypted: return {"UDRO", "UDIF read-only", "CEncryptedEncoding"};
    case Kind::sparseImage: return {"UDSP", "sparse disk image", "CSparseDiskImage"};
    case Kind::sparseBundle: return {"UDSB", "sparse bundle disk image", "CSparseBundleDiskImage"};
    case Kind::optical: return {"UDTO", "DVD/CD-R master", "CRawDiskImage"};
    case Kind::raw: break;
    }
    return {"UDRW", "raw read/write", "CRawDiskImage"};
}

} // namespace platform::hdiutil
