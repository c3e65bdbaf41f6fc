// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

/// A folder of one test, removed with all that is in it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = std::filesystem::temp_directory_path() / "qm-test-XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        m_path = std::filesystem::canonical(pattern);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    TemporaryFolder(TemporaryFolder&&) = delete;
    TemporaryFolder& operator=(TemporaryFolder&&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    [[nodiscard]] std::string path() const { return m_path; }
    [[nodiscard]] std::string path(std::string_view name) const { return m_path / name; }

    /// Writes a file and answers its path.
    [[nodiscard]] std::string file(std::string_view name, std::string_view contents = {}) const {
        std::ofstream(path(name), std::ios::binary) << contents;
        return path(name);
    }
    /// Makes a folder and answers its path.
    [[nodiscard]] std::string folder(std::string_view name) const {
        std::filesystem::create_directories(path(name));
        return path(name);
    }
    /// Makes a symbolic link and answers its path.
    [[nodiscard]] std::string link(std::string_view name, std::string_view target) const {
        std::filesystem::create_symlink(target, path(name));
        return path(name);
    }

private:
    std::filesystem::path m_path;
};
