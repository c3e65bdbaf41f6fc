// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/worker/ImageQuestion.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

/// Processes that do what files tell them to (see tests/worker/test_media_worker.cpp), with limits
/// that no file reaches by accident.
inline platform::worker::MediaWorker::Settings settingsOfMediaWorker() {
    platform::worker::MediaWorker::Settings settings;
    settings.program = QM_TEST_MEDIA_WORKER;
    settings.limits = {std::chrono::minutes(1), std::chrono::minutes(1), std::chrono::minutes(1)};
    return settings;
}

/// What the file that says `words` is answered with: its width.
inline std::optional<std::int64_t> askMediaWorker(platform::worker::MediaWorker& worker,
                                                  std::string_view words) {
    const TemporaryFolder folder;
    const auto properties = imageProperties(worker, folder.file("image", words), false);
    return properties ? properties->pixelWidth : std::nullopt;
}

/// Whether the process `number` runs.
inline bool isRunning(std::int64_t number) {
    std::ifstream file("/proc/" + std::to_string(number) + "/stat");
    const std::string status(std::istreambuf_iterator<char>(file), {});
    const auto name = status.rfind(") ");
    // One that has ended is no concern of ours once it is no child of ours.
    return name != std::string::npos && status.at(name + 2) != 'Z' && status.at(name + 2) != 'X';
}

/// How many files this process has open.
inline std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}
