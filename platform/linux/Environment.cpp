// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Environment.h"

#include "platform/linux/TextPieces.h"

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
        folders.push_back(takePiece(list, ':'));
    }
    return folders;
}

} // namespace platform
