// SPDX-License-Identifier: Apache-2.0
#include "platform/FileManager.h"

#include "platform/linux/Accounts.h"

#include <cstdlib>
#include <memory>

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

} // namespace

bool fileExistsAtPath(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0;
}

std::string currentDirectoryPath() {
    return owned(CText(::getcwd(nullptr, 0))).value_or(std::string());
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
