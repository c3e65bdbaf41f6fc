// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Environment.h"

#include <cstdlib>

namespace platform {
namespace {

const char* value(const char* name) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in the process changes its environment
    return std::getenv(name);
}

} // namespace

std::string_view environmentVariable(const char* name) {
    const char* const text = value(name);
    return text == nullptr ? std::string_view() : text;
}

bool isSetButEmpty(const char* name) {
    const char* const text = value(name);
    return text != nullptr && *text == '\0';
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
