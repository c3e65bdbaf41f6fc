// SPDX-License-Identifier: Apache-2.0
#include "services/QMDiskImageService.h"

#include "foundation/QMDiskImageExtensions.h"
#include "foundation/QMFileHandle.h"
#include "platform/DiskImageTool.h"
#include "platform/FileManager.h"
#include "platform/Task.h"

#include <utility>

using platform::FileURL;
using platform::PropertyList;
using platform::Task;

const std::shared_ptr<QMDiskImageService>& QMDiskImageService::sharedService() {
    // Never destroyed: workers may still use it while the process ends.
    static const auto& service = *new std::shared_ptr<QMDiskImageService>(init());
    return service;
}

std::shared_ptr<QMDiskImageService> QMDiskImageService::init() {
    return init(Settings());
}

std::shared_ptr<QMDiskImageService> QMDiskImageService::init(Settings settings) {
    return std::shared_ptr<QMDiskImageService>(new QMDiskImageService(std::move(settings)));
}

QMDiskImageService::QMDiskImageService(Settings settings)
    : m_settings(std::move(settings))
    , m_mountedImages(std::make_shared<const MountedImages>()) {}

bool QMDiskImageService::isMountableDiskImage(std::string_view path) {
    return qm_hasMountableDiskImageExtension(path);
}

// The functions and not std::atomic<std::shared_ptr>, whose reading in version 12 of the library
// races with its writing.
QMDiskImageService::MountedImages QMDiskImageService::mountedImages() const {
    return *std::atomic_load(&m_mountedImages);
}

void QMDiskImageService::setMountedImages(MountedImages images) {
    std::atomic_store(&m_mountedImages,
                      Images(std::make_shared<const MountedImages>(std::move(images))));
}

std::optional<PropertyList::Dictionary>
QMDiskImageService::diskImageInfoForPath(const std::string& path) const {
    if (path.empty() || !platform::FileManager::fileExistsAtPath(path)) {
        return std::nullopt;
    }
    const auto launched = Task::launch({.executable = toolPath(),
                                        .arguments = {"imageinfo", path, "-plist"},
                                        .standardOutput = Task::Output::pipe,
                                        .standardError = Task::Output::nullDevice});
    const auto* task = std::get_if<std::shared_ptr<Task>>(&launched);
    if (task == nullptr) {
        return std::nullopt;
    }
    const auto output = qm_readDataToEndOfFile((*task)->standardOutput());
    if ((*task)->waitUntilExit() != 0 || !output || output->empty()) {
        return std::nullopt;
    }
    const auto list = PropertyList::parse(*output);
    const auto* dictionary = list ? list->dictionary() : nullptr;
    return dictionary == nullptr ? std::nullopt : std::optional(*dictionary);
}

std::optional<FileURL> QMDiskImageService::parseMountPointFromPlistData(platform::DataView output) {
    const auto list = PropertyList::parse(output);
    const PropertyList* const value = list ? list->valueForKey("system-entities") : nullptr;
    const PropertyList::Array* const entities = value == nullptr ? nullptr : value->array();
    if (entities == nullptr) {
        return std::nullopt;
    }
    for (const PropertyList& entity : *entities) {
        const PropertyList* const mountPoint = entity.valueForKey("mount-point");
        const std::string* const path = mountPoint == nullptr ? nullptr : mountPoint->string();
        if (path != nullptr && !path->empty()) {
            return FileURL::fromDirectoryPath(*path);
        }
    }
    return std::nullopt;
}

QMError QMDiskImageService::errorWithCode(std::int64_t code,
                                          std::optional<std::string> description) {
    return {std::string(QMDiskImageErrorDomain), code,
            std::move(description).value_or("Unknown error")};
}

std::string QMDiskImageService::toolPath() const {
    return m_settings.tool.empty() ? platform::diskImageToolPath() : m_settings.tool;
}
