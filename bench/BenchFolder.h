// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

/// A folder for temporary files, which goes with everything in it.
class BenchFolder {
public:
    BenchFolder() {
        std::string path = std::filesystem::temp_directory_path() / "qm-bench-XXXXXX";
        const char* const made = ::mkdtemp(path.data());
        m_path = made == nullptr ? std::string() : made;
    }
    BenchFolder(const BenchFolder&) = delete;
    BenchFolder& operator=(const BenchFolder&) = delete;
    BenchFolder(BenchFolder&&) = delete;
    BenchFolder& operator=(BenchFolder&&) = delete;
    ~BenchFolder() {
        std::error_code ignored;
        if (!m_path.empty()) {
            std::filesystem::remove_all(m_path, ignored);
        }
    }

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};
