// SPDX-License-Identifier: Apache-2.0
#include "platform/FileManager.h"

#include "platform/linux/Accounts.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include <unistd.h>

#include <sys/stat.h>

namespace platform::FileManager {
namespace {

struct Free {
    void operator()(char* text) const { std::free(text); } // NOLINT(cppcoreguidelines-no-malloc)
};
using CText = std::unique_ptr<char, Free>;

std::optional<std::string> owned(CText text) {
    if (!text) {
        return std::nullopt;
    }
    return std::string(text.get());
}

// What the kernel remembers of a current directory that was removed.
std::string formerDirectoryPath() {
    constexpr std::string_view mark = " (deleted)";
    std::error_code error;
    std::string path = std::filesystem::read_symlink("/proc/self/cwd", error).string();
    if (error || !path.starts_with('/') || !path.ends_with(mark)) {
        return {};
    }
    path.resize(path.size() - mark.size());
    return path;
}

} // namespace

bool fileExistsAtPath(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0;
}

std::string currentDirectoryPath() {
    auto path = owned(CText(::getcwd(nullptr, 0)));
    return path ? *std::move(path) : formerDirectoryPath();
}

std::optional<std::string> homeDirectory() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in the process changes its environment
    const char* home = std::getenv("HOME");
    if (home == nullptr || *home != '/') {
        return homeOfUser(::getuid());
    }
    std::string path = home;
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

std::optional<std::string> homeDirectoryForUser(const std::string& user) {
    return homeOfUser(user);
}

std::optional<std::string> resolvingSymlinks(const std::string& path) {
    return owned(CText(::realpath(path.c_str(), nullptr)));
}

} // namespace platform::FileManager
