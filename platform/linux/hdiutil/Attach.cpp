// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/Attach.h"

#include "platform/FileManager.h"
#include "platform/linux/hdiutil/AttachRecord.h"
#include "platform/linux/hdiutil/DiskFile.h"
#include "platform/linux/hdiutil/DiskImage.h"
#include "platform/linux/hdiutil/LoopTable.h"
#include "platform/linux/hdiutil/Mounting.h"
#include "platform/linux/hdiutil/PartialDisk.h"
#include "platform/linux/hdiutil/PropertyText.h"
#include "platform/linux/hdiutil/Undo.h"
#include "platform/linux/hdiutil/WorkFolders.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <system_error>
#include <utility>
#include <vector>

namespace platform::hdiutil {
namespace {

using Entities = PropertyList::Array;

PropertyList printed(const Entities& entities) {
    return PropertyList::Dictionary{{"system-entities", entities}};
}

/// Attaches one image, and undoes what it has made unless all of it succeeded.
class Attachment {
public:
    Attachment(const AttachRecords& records, DiskImage image)
        : m_records(records)
        , m_image(std::move(image)) {
        m_record.image = m_image.path;
    }
    Attachment(const Attachment&) = delete;
    Attachment& operator=(const Attachment&) = delete;
    Attachment(Attachment&&) = delete;
    Attachment& operator=(Attachment&&) = delete;
    ~Attachment() {
        if (!m_record.isComplete) {
            undo(m_record, m_records);
        }
    }

    std::variant<PropertyList, Failure> run() {
        if (const auto failure = provideDisk()) {
            return *failure;
        }
        if (m_image.map.partitions.empty() || m_image.isDisc) {
            Partition whole;
            whole.byteLength = m_image.disk->size();
            addVolume(whole);
        } else {
            std::ranges::for_each(m_image.map.partitions,
                                  [this](const Partition& part) { addVolume(part); });
        }
        if (m_record.volumes.empty()) {
            return Failure{"no mountable file systems"};
        }
        if (m_partialDisk) {
            m_partialDisk->release();
        }
        m_record.isComplete = true;
        if (!m_records.store(m_record)) {
            m_record.isComplete = false;
            return Failure::ofSystem(errno);
        }
        return printed(m_record.entities);
    }

private:
    // The disk as a plain file: the image itself, or one that it is expanded into.
    std::optional<Failure> provideDisk() {
        if (m_image.kind == DiskImage::Kind::raw || m_image.kind == DiskImage::Kind::optical) {
            return provideImage();
        }
        m_partialDisk = PartialDisk::open(m_image);
        if (!m_partialDisk) {
            return Failure::ofSystem(errno);
        }
        m_record.expandedDisk = m_partialDisk->path();
        if (!m_records.store(m_record)) {
            return Failure::ofSystem(errno);
        }
        m_diskFile = m_partialDisk->path();
        m_isReadOnly = true;
        return expand();
    }

    std::optional<Failure> provideImage() {
        m_diskFile = m_image.path;
        m_isReadOnly = m_image.kind == DiskImage::Kind::optical || !isWritable(m_image.path);
        // Two file systems on the same bytes would ruin one another.
        if (!m_isReadOnly && LoopTable::isInUseForWriting(m_image.path)) {
            return Failure::ofSystem(EBUSY);
        }
        return m_records.store(m_record) ? std::nullopt : std::optional(Failure::ofSystem(errno));
    }

    std::optional<Failure> expand() {
        auto failure = expandDisk(m_image, *m_partialDisk);
        // What is wanted now goes before what somebody may still want.
        if (failure && failure->isForRoom && removePartialDisks(PartialDisks::all) > 0) {
            failure = expandDisk(m_image, *m_partialDisk);
        }
        if (failure && failure->canGoOn && m_partialDisk->isOfUse()) {
            m_record.expandedDisk.clear();
        }
        return failure ? std::optional(Failure{failure->reason}) : std::nullopt;
    }

    void addVolume(const Partition& part) {
        const PartSource bytes(m_image.disk, part.firstByte, part.byteLength);
        const auto volume = probeVolume(bytes);
        const bool isMountable = volume && volume->isFileSystem;
        PropertyList::Dictionary entity;
        entity.emplace("content-hint", contentHint(part, volume));
        entity.emplace("dev-entry", propertyText(m_diskFile));
        entity.emplace("potentially-mountable", isMountable);
        if (isMountable) {
            entity.emplace("volume-kind", volumeKind(*volume));
            mount(*volume, part, bytes.size(), entity);
        }
        m_record.entities.emplace_back(std::move(entity));
    }

    static PropertyList contentHint(const Partition& part, const std::optional<Volume>& volume) {
        if (!part.hint.empty()) {
            return propertyText(part.hint);
        }
        return volume ? volumeKind(*volume) : std::string();
    }

    // Adds what came of it to the entity.
    void mount(const Volume& volume, const Partition& part, std::uint64_t length,
               PropertyList::Dictionary& entity) {
        const VolumeInFile source{.file = m_diskFile,
                                  .offset = part.firstByte,
                                  .length = length,
                                  .isWholeFile = length == m_image.disk->size(),
                                  .isReadOnly = m_isReadOnly,
                                  .volume = volume};
        const auto device = mountByService(source);
        if (const auto mounted = device ? device : mountHere(source)) {
            entity.insert_or_assign("dev-entry", propertyText(*mounted));
            entity.emplace("mount-point", propertyText(m_record.volumes.back().mountPoint));
        }
    }

    // Answers the device.
    std::optional<std::string> mountByService(const VolumeInFile& source) {
        m_record.volumes.push_back({.mountPoint = {},
                                    .method = MountMethod::service,
                                    .device = {{}, source.file, source.offset}});
        if (note() &&
            hdiutil::mountByService(source, m_record.volumes.back(), [this] { return note(); })) {
            return m_record.volumes.back().device.path;
        }
        takeBackLastVolume();
        return std::nullopt;
    }

    // In a folder of ours. Answers the device, or the file where there is none.
    std::optional<std::string> mountHere(const VolumeInFile& source) {
        const auto folder = WorkFolders::freeMountPoint(source.volume.label);
        if (!folder) {
            return std::nullopt;
        }
        m_record.volumes.push_back({*folder, MountMethod::kernel});
        auto device = note() && WorkFolders::makeMountPoint(*folder)
                          ? mountVolume(source, m_record.volumes.back(), [this] { return note(); })
                          : std::nullopt;
        if (!device) {
            takeBackLastVolume();
        }
        return device;
    }

    [[nodiscard]] bool note() const { return m_records.store(m_record); }

    void takeBackLastVolume() {
        static_cast<void>(unmountVolume(m_record.volumes.back()));
        m_record.volumes.pop_back();
    }

    const AttachRecords& m_records;
    DiskImage m_image;
    AttachRecord m_record;
    std::optional<PartialDisk> m_partialDisk;
    std::string m_diskFile;
    bool m_isReadOnly = true;
};

// The start of a disk is left to whoever attaches its image again.
AttachRecord withoutPartialDisk(AttachRecord record) {
    if (isPartialDisk(record.expandedDisk)) {
        record.expandedDisk.clear();
    }
    return record;
}

/// What there is before anything is made.
struct Stock {
    std::optional<AttachRecord> attached; ///< the image, with all of its volumes
    std::optional<Failure> failure;       ///< why what is left of the image stays
};

// What is left of the image itself has to go: its record would be lost.
void takeStockOf(const AttachRecord& record, const AttachRecords& records, Stock& stock) {
    if (!record.isComplete) {
        if (!undo(withoutPartialDisk(record), records)) {
            stock.failure = Failure::ofSystem(errno);
        }
    } else if (std::ranges::all_of(record.volumes, isThere)) {
        stock.attached = record;
    } else if (!undoWholly(record, records)) {
        stock.failure = Failure::ofSystem(errno);
    }
}

std::vector<std::string> disksOf(const std::vector<AttachRecord>& records) {
    std::vector<std::string> disks;
    std::ranges::transform(records, std::back_inserter(disks), &AttachRecord::expandedDisk);
    return disks;
}

// What a crash or a restart has left of other images is cleared away. Who has ejected one volume of
// several may be at work on the others.
Stock takeStock(const AttachRecords& records, const std::string& image) {
    Stock stock;
    for (const AttachRecord& record : records.all()) {
        if (record.image == image) {
            takeStockOf(record, records, stock);
        } else if (!record.isComplete || std::ranges::none_of(record.volumes, isThere)) {
            undo(withoutPartialDisk(record), records);
        }
    }
    removePartialDisks(PartialDisks::useless);
    removeForgottenDisks(disksOf(records.all()));
    return stock;
}

} // namespace

Failure Failure::ofSystem(int error) {
    return {std::generic_category().message(error)};
}

std::variant<PropertyList, Failure> attachImage(const std::string& path) {
    const auto resolved = FileManager::resolvingSymlinks(path);
    if (!resolved) {
        return Failure::ofSystem(errno);
    }
    const auto records = AttachRecords::open();
    if (!records) {
        return Failure::ofSystem(errno);
    }
    const Stock stock = takeStock(*records, *resolved);
    if (stock.failure) {
        return *stock.failure;
    }
    if (stock.attached) {
        return printed(stock.attached->entities);
    }
    auto opened = openDiskImage(*resolved);
    if (const auto* reason = std::get_if<std::string>(&opened)) {
        return Failure{*reason};
    }
    auto& image = std::get<DiskImage>(opened);
    if (!image.disk) {
        return Failure{"the image is encrypted"};
    }
    return Attachment(*records, std::move(image)).run();
}

} // namespace platform::hdiutil
