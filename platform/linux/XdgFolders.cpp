// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/XdgFolders.h"

#include "platform/FileManager.h"
#include "platform/linux/Environment.h"

#include <string_view>

namespace platform::XdgFolders {
namespace {

bool isAbsolute(std::string_view path) {
    return path.starts_with('/');
}

} // namespace

std::vector<std::string> dataFolders() {
    std::vector<std::string> folders;
    if (const auto own = environmentVariable("XDG_DATA_HOME"); isAbsolute(own)) {
        folders.emplace_back(own);
    } else if (const auto home = FileManager::homeDirectory()) {
        folders.push_back(*home + "/.local/share");
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

} // namespace platform::XdgFolders
