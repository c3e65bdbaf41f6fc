// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/AttachRecord.h"

#include "platform/Data.h"
#include "platform/Digest.h"
#include "platform/FileManager.h"
#include "platform/Format.h"
#include "platform/linux/hdiutil/SparseWrite.h"
#include "platform/linux/hdiutil/WorkFolders.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include <sys/file.h>

namespace platform::hdiutil {
namespace {

// Of a thousand partitions whose paths are as long as can be.
constexpr std::size_t maximumSize = std::size_t{32} << 20;
constexpr mode_t privateMode = 0600;
constexpr std::array<std::string_view, 4> methodNames{"kernel", "fuse", "copy", "service"};

// Paths are bytes, which texts of property lists are not.
PropertyList bytes(const std::string& path) {
    const DataView view = bytesOf(path);
    return Data(view.begin(), view.end());
}

std::optional<std::string> pathIn(const PropertyList& list, std::string_view key) {
    const PropertyList* const value = list.valueForKey(key);
    const Data* const data = value == nullptr ? nullptr : value->data();
    return data == nullptr ? std::nullopt : std::optional<std::string>(charactersOf(*data));
}

std::optional<std::uint64_t> countIn(const PropertyList& list, std::string_view key) {
    const PropertyList* const value = list.valueForKey(key);
    const auto* const count =
        value == nullptr ? nullptr : std::get_if<std::int64_t>(&value->value());
    return count == nullptr || *count < 0 ? std::nullopt
                                          : std::optional(static_cast<std::uint64_t>(*count));
}

const PropertyList::Array* arrayIn(const PropertyList& list, std::string_view key) {
    const PropertyList* const value = list.valueForKey(key);
    return value == nullptr ? nullptr : value->array();
}

std::optional<MountMethod> methodIn(const PropertyList& list) {
    const PropertyList* const method = list.valueForKey("method");
    const std::string* const name = method == nullptr ? nullptr : method->string();
    const auto* const found =
        name == nullptr ? methodNames.end() : std::ranges::find(methodNames, *name);
    return found == methodNames.end()
               ? std::nullopt
               : std::optional(static_cast<MountMethod>(found - methodNames.begin()));
}

std::optional<ServiceDevice> deviceFrom(const PropertyList& list) {
    const auto path = pathIn(list, "device");
    const auto file = pathIn(list, "file");
    const auto offset = countIn(list, "offset");
    const auto sequence = countIn(list, "sequence");
    return path && file && offset && sequence
               ? std::optional(ServiceDevice{*path, *file, *offset, *sequence})
               : std::nullopt;
}

std::optional<MountedVolume> volumeFrom(const PropertyList& list) {
    const auto mountPoint = pathIn(list, "mount-point");
    const auto method = methodIn(list);
    if (!mountPoint || !method) {
        return std::nullopt;
    }
    if (*method != MountMethod::service) {
        return MountedVolume{*mountPoint, *method};
    }
    auto device = deviceFrom(list);
    return device ? std::optional(MountedVolume{*mountPoint, *method, *std::move(device)})
                  : std::nullopt;
}

PropertyList asList(const MountedVolume& volume) {
    PropertyList::Dictionary entry;
    entry.emplace("mount-point", bytes(volume.mountPoint));
    entry.emplace("method", std::string(methodNames.at(static_cast<std::size_t>(volume.method))));
    if (volume.method == MountMethod::service) {
        entry.emplace("device", bytes(volume.device.path));
        entry.emplace("file", bytes(volume.device.file));
        entry.emplace("offset", static_cast<std::int64_t>(volume.device.offset));
        entry.emplace("sequence", static_cast<std::int64_t>(volume.device.sequence));
    }
    return entry;
}

// Names the file of the record of an image.
std::string identifierOf(const std::string& image) {
    Digest::SHA256 digest;
    digest.update(bytesOf(image));
    return Digest::hexString(digest.finish());
}

Descriptor openedFile(const std::string& path, int flags) {
    return Descriptor(::open(path.c_str(), flags | O_CLOEXEC | O_NOFOLLOW, privateMode));
}

} // namespace

PropertyList AttachRecord::asPropertyList() const {
    PropertyList::Array list;
    for (const MountedVolume& volume : volumes) {
        list.push_back(asList(volume));
    }
    return PropertyList::Dictionary{{"image", bytes(image)},
                                    {"expanded-disk", bytes(expandedDisk)},
                                    {"volumes", std::move(list)},
                                    {"entities", entities},
                                    {"complete", isComplete}};
}

std::optional<AttachRecord> AttachRecord::fromPropertyList(const PropertyList& list) {
    const auto image = pathIn(list, "image");
    const auto expanded = pathIn(list, "expanded-disk");
    const auto* volumes = arrayIn(list, "volumes");
    const auto* entities = arrayIn(list, "entities");
    const PropertyList* const complete = list.valueForKey("complete");
    if (!image || !expanded || volumes == nullptr || entities == nullptr || complete == nullptr) {
        return std::nullopt;
    }
    AttachRecord record{*image, *expanded, {}, *entities, false};
    const bool* const isComplete = std::get_if<bool>(&complete->value());
    record.isComplete = isComplete != nullptr && *isComplete;
    for (const PropertyList& entry : *volumes) {
        auto volume = volumeFrom(entry);
        if (!volume) {
            return std::nullopt;
        }
        record.volumes.push_back(*std::move(volume));
    }
    return record;
}

std::optional<AttachRecords> AttachRecords::open() {
    const auto folder = WorkFolders::records();
    if (!folder) {
        return std::nullopt;
    }
    Descriptor lock = openedFile(*folder + "/lock", O_RDWR | O_CREAT);
    if (lock.number() < 0) {
        return std::nullopt;
    }
    while (::flock(lock.number(), LOCK_EX) != 0) {
        if (errno != EINTR) {
            return std::nullopt;
        }
    }
    return AttachRecords(*folder, std::move(lock));
}

std::vector<AttachRecord> AttachRecords::all() const {
    std::vector<AttachRecord> records;
    std::error_code error;
    std::filesystem::directory_iterator files(m_folder, error);
    for (; !error && files != std::filesystem::directory_iterator(); files.increment(error)) {
        if (files->path().extension() != ".plist") {
            continue;
        }
        const auto contents = FileManager::contentsAtPath(files->path(), maximumSize);
        const auto list = contents ? PropertyList::parse(*contents) : std::nullopt;
        if (auto record = list ? AttachRecord::fromPropertyList(*list) : std::nullopt) {
            records.push_back(*std::move(record));
        }
    }
    return records;
}

bool AttachRecords::store(const AttachRecord& record) const {
    const std::string path = pathOf(record);
    const std::string draft = path + ".draft";
    const Descriptor file = openedFile(draft, O_WRONLY | O_CREAT | O_TRUNC);
    if (file.number() < 0) {
        return false;
    }
    const Data data = record.asPropertyList().serialized(PropertyList::Format::xml);
    return !data.empty() && writeAt(file.number(), 0, data) && ::fsync(file.number()) == 0 &&
           ::rename(draft.c_str(), path.c_str()) == 0;
}

void AttachRecords::remove(const AttachRecord& record) const {
    ::unlink(pathOf(record).c_str());
}

std::string AttachRecords::pathOf(const AttachRecord& record) const {
    return format("{}/{}.plist", m_folder, identifierOf(record.image));
}

} // namespace platform::hdiutil
