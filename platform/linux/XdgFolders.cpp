// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/XdgFolders.h"

#include "platform/FileManager.h"
#include "platform/linux/Environment.h"

#include <string_view>
#include <utility>

namespace platform::XdgFolders {
namespace {

bool isAbsolute(std::string_view path) {
    return path.starts_with('/');
}

/// The folder that `variable` names, else `standard` in the home directory.
std::optional<std::string> ownFolder(const char* variable, std::string_view standard) {
    if (const auto own = environmentVariable(variable); isAbsolute(own)) {
        return std::string(own);
    }
    auto folder = FileManager::homeDirectory();
    if (folder) {
        folder->append(standard);
    }
    return folder;
}

} // namespace

std::vector<std::string> dataFolders() {
    std::vector<std::string> folders;
    if (auto own = ownFolder("XDG_DATA_HOME", "/.local/share")) {
        folders.push_back(std::move(*own));
    }
    const std::string_view system = environmentVariable("XDG_DATA_DIRS");
    for (const auto folder :
         foldersInList(system.empty() ? "/usr/local/share:/usr/share" : system)) {
        if (isAbsolute(folder)) {
            folders.emplace_back(folder);
        }
    }
    return folders;
}

std::optional<std::string> configurationFolder() {
    return ownFolder("XDG_CONFIG_HOME", "/.config");
}

} // namespace platform::XdgFolders
