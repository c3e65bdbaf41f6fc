// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/LoopTable.h"

#include "platform/FileManager.h"
#include "platform/linux/MountTable.h"
#include "platform/linux/TextPieces.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace platform::hdiutil::LoopTable {
namespace {

constexpr std::string_view devicesFolder = "/dev/";
constexpr const char* blockFolder = "/sys/block";
constexpr std::size_t maximumLineSize = 8192;

// What a file of one line says; empty where there is none.
std::string lineAt(const std::string& path) {
    const auto contents = FileManager::contentsAtPath(path, maximumLineSize);
    std::string line(contents ? charactersOf(*contents) : std::string_view());
    if (line.ends_with('\n')) {
        line.pop_back();
    }
    return line;
}

// Whether `source` is the device or one of its partitions, "/dev/loop7p1".
bool isOn(std::string_view source, std::string_view device) {
    return source.starts_with(device) &&
           (source.size() == device.size() || source[device.size()] == 'p');
}

std::vector<std::string> blockDevices() {
    std::vector<std::string> devices;
    std::error_code error;
    std::filesystem::directory_iterator entries(blockFolder, error);
    for (; !error && entries != std::filesystem::directory_iterator(); entries.increment(error)) {
        devices.push_back(std::string(devicesFolder).append(entries->path().filename().native()));
    }
    return devices;
}

std::string folderOf(const std::string& device) {
    std::string folder(blockFolder);
    folder.push_back('/');
    return folder.append(std::filesystem::path(device).filename().native());
}

} // namespace

bool shows(const std::string& device, const std::string& file, std::uint64_t offset) {
    const std::string loop = folderOf(device) + "/loop/";
    return lineAt(loop + "backing_file") == file &&
           lineAt(loop + "offset") == std::to_string(offset);
}

std::uint64_t sequenceOf(const std::string& device) {
    const std::string folder = folderOf(device);
    const auto number = wholeNumber<std::uint64_t>(lineAt(folder + "/diskseq"));
    return lineAt(folder + "/loop/backing_file").empty() ? 0 : number.value_or(0);
}

std::vector<std::string> unusedDevices(const std::string& file, std::uint64_t offset) {
    auto devices = blockDevices();
    std::erase_if(devices, [&file, offset](const std::string& device) {
        return !shows(device, file, offset) || !mountPointOf(device).empty();
    });
    return devices;
}

bool isInUseForWriting(const std::string& file) {
    const auto mounts = MountTable::current();
    return std::ranges::any_of(blockDevices(), [&](const std::string& device) {
        const std::string folder = folderOf(device);
        return lineAt(folder + "/loop/backing_file") == file && lineAt(folder + "/ro") == "0" &&
               std::ranges::any_of(mounts, [&device](const MountTable::Mount& mount) {
                   return isOn(mount.source, device);
               });
    });
}

// The last one is the one that is seen.
std::string deviceMountedAt(const std::string& path) {
    auto mounts = MountTable::current();
    std::ranges::reverse(mounts);
    const auto found = std::ranges::find(mounts, path, &MountTable::Mount::mountPoint);
    return found != mounts.end() && found->source.starts_with(devicesFolder) ? found->source
                                                                             : std::string();
}

// By name: file systems of several devices have numbers of their own.
std::string mountPointOf(const std::string& device) {
    const auto mounts = MountTable::current();
    const auto found = std::ranges::find(mounts, device, &MountTable::Mount::source);
    return found == mounts.end() ? std::string() : found->mountPoint;
}

} // namespace platform::hdiutil::LoopTable
