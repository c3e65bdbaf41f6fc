// SPDX-License-Identifier: Apache-2.0
#include "platform/FileManager.h"

#include "platform/FileHandle.h"
#include "platform/linux/Accounts.h"
#include "platform/linux/Environment.h"
#include "platform/linux/TextPieces.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <span>
#include <variant>

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

std::optional<Data> contentsAtPath(const std::string& path, std::size_t maximumSize) {
    constexpr std::size_t pieceSize = std::size_t{16} * 1024;
    auto file = FileHandle::forReadingRegularFileAtPath(path);
    if (!file) {
        return std::nullopt;
    }
    // The size that the file claims is not asked: those under /proc claim none.
    Data contents;
    while (contents.size() <= maximumSize) {
        const std::size_t start = contents.size();
        contents.resize(start + std::min(pieceSize, maximumSize + 1 - start));
        const auto result = file->read(std::span(contents).subspan(start));
        const std::size_t* count = std::get_if<std::size_t>(&result);
        if (count == nullptr) {
            return std::nullopt;
        }
        contents.resize(start + *count);
        if (*count == 0) {
            return contents;
        }
    }
    return std::nullopt;
}

std::string currentDirectoryPath() {
    return owned(CText(::getcwd(nullptr, 0))).value_or(std::string());
}

std::optional<std::string> homeDirectory() {
    const std::string_view path = environmentVariable("HOME");
    return path.starts_with('/') ? std::string(withoutTrailingSlashes(path))
                                 : homeOfUser(::getuid());
}

std::optional<std::string> homeDirectoryForUser(const std::string& user) {
    return homeOfUser(user);
}

std::optional<std::string> resolvingSymlinks(const std::string& path) {
    return owned(CText(::realpath(path.c_str(), nullptr)));
}

} // namespace platform::FileManager
