// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/HiddenNames.h"

#include "platform/FileManager.h"
#include "platform/linux/FileIdentity.h"
#include "platform/linux/TextPieces.h"

#include <cstddef>
#include <optional>

namespace platform {
namespace {

// A list beyond this size is no list that anyone wrote.
constexpr std::size_t maximumSize = std::size_t{1} << 20;

std::string contentsOf(const std::string& path) {
    const Data contents = FileManager::contentsAtPath(path, maximumSize).value_or(Data());
    return std::string(charactersOf(contents));
}

// The last list read: items are asked for folder by folder.
struct Cache {
    std::string directory;
    std::optional<FileIdentity> identity;
    std::unordered_set<std::string> names;
};

} // namespace

std::unordered_set<std::string> namesInHiddenList(std::string_view text) {
    std::unordered_set<std::string> names;
    while (!text.empty()) {
        names.emplace(takePiece(text, '\n'));
    }
    return names;
}

bool isListedAsHidden(const std::string& directory, std::string_view name) {
    thread_local Cache cache;
    const std::string path = directory + "/.hidden";
    const auto identity = identityOfFile(path);
    if (!identity) {
        return false;
    }
    if (cache.directory != directory || cache.identity != identity) {
        cache = {directory, identity, namesInHiddenList(contentsOf(path))};
    }
    return cache.names.contains(std::string(name));
}

} // namespace platform
