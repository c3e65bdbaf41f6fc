// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/ImageState.h"

#include "platform/Data.h"
#include "platform/Format.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <vector>

namespace platform::hdiutil {
namespace {

// The coarsest times of a file system that is in use: FAT counts in two seconds.
constexpr std::chrono::seconds coarsestTime{2};
constexpr std::size_t maximumBandCount = 100'000;

// Whether whatever is written from now on leaves another time than the file has.
bool isSettled(const FileIdentity& file) {
    const auto now = std::chrono::system_clock::now() - coarsestTime;
    return file.modified < std::chrono::nanoseconds(now.time_since_epoch()).count();
}

std::string lineOf(const FileIdentity& file) {
    return format("{} {} {} {} {}\n", file.device, file.inode, file.size, file.modified,
                  file.changed);
}

std::optional<FileIdentity> settledFileAt(const std::string& path) {
    const auto file = identityOfFile(path);
    return file && isSettled(*file) ? file : std::nullopt;
}

ImageState digestOf(std::string_view text) {
    Digest::SHA256 digest;
    digest.update(bytesOf(text));
    return {digest.finish()};
}

// One line for each band, with its name, which is its place on the disk.
std::optional<std::vector<std::string>> bandsIn(const std::string& folder) {
    std::vector<std::string> lines;
    std::error_code error;
    std::filesystem::directory_iterator bands(folder, error);
    for (; !error && bands != std::filesystem::directory_iterator(); bands.increment(error)) {
        const auto band = settledFileAt(bands->path());
        if (!band || lines.size() == maximumBandCount) {
            return std::nullopt;
        }
        lines.push_back(bands->path().filename().string().append(1, '\0').append(lineOf(*band)));
    }
    return error ? std::nullopt : std::optional(std::move(lines));
}

} // namespace

std::optional<ImageState> imageStateOf(const std::optional<FileIdentity>& file) {
    return file && isSettled(*file) ? std::optional(digestOf(lineOf(*file))) : std::nullopt;
}

std::optional<ImageState> bundleStateAt(const std::string& path) {
    const auto description = settledFileAt(path + "/Info.plist");
    auto bands = description ? bandsIn(path + "/bands") : std::nullopt;
    if (!bands) {
        return std::nullopt;
    }
    std::ranges::sort(*bands);
    std::string all = lineOf(*description);
    for (const std::string& band : *bands) {
        all.append(band);
    }
    return digestOf(all);
}

} // namespace platform::hdiutil
