// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Environment.h"

#include <cstdlib>

namespace platform {

std::string_view environmentVariable(const char* name) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in the process changes its environment
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string_view() : value;
}

std::vector<std::string_view> foldersInList(std::string_view list) {
    std::vector<std::string_view> folders;
    while (!list.empty()) {
        const auto end = list.find(':');
        folders.push_back(list.substr(0, end));
        list.remove_prefix(end == std::string_view::npos ? list.size() : end + 1);
    }
    return folders;
}

} // namespace platform
