// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/XdgFolders.h"

#include "platform/FileManager.h"

#include <cstdlib>
#include <string_view>

namespace platform::XdgFolders {
namespace {

std::string_view variable(const char* name) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in the process changes its environment
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view() : value;
}

bool isAbsolute(std::string_view path) {
    return path.starts_with('/');
}

} // namespace

std::vector<std::string> dataFolders() {
    std::vector<std::string> folders;
    if (const auto own = variable("XDG_DATA_HOME"); isAbsolute(own)) {
        folders.emplace_back(own);
    } else if (const auto home = FileManager::homeDirectory()) {
        folders.push_back(*home + "/.local/share");
    }
    std::string_view rest = variable("XDG_DATA_DIRS");
    if (rest.empty()) {
        rest = "/usr/local/share:/usr/share";
    }
    while (!rest.empty()) {
        const auto end = rest.find(':');
        if (const auto folder = rest.substr(0, end); isAbsolute(folder)) {
            folders.emplace_back(folder);
        }
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    return folders;
}

} // namespace platform::XdgFolders
