// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <filesystem>
#include <string>

/// Sets when the file was last written to.
inline void setModified(const std::string& path, std::filesystem::file_time_type time) {
    std::filesystem::last_write_time(path, time);
}

/// Lets the file look as if nobody had written to it for a while.
inline void makeOld(const std::string& path) {
    setModified(path, std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
}
