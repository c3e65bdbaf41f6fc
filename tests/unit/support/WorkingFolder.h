// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

/// Makes a folder the one that names start from, for a while.
class WorkingFolder {
public:
    explicit WorkingFolder(const std::string& folder)
        : m_before(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
    }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;
    WorkingFolder(WorkingFolder&&) = delete;
    WorkingFolder& operator=(WorkingFolder&&) = delete;
    ~WorkingFolder() {
        std::error_code ignored;
        std::filesystem::current_path(m_before, ignored);
    }

private:
    std::filesystem::path m_before;
};
