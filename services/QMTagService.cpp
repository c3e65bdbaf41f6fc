// SPDX-License-Identifier: Apache-2.0
#include "services/QMTagService.h"

#include "platform/FileManager.h"
#include "platform/FileTags.h"
#include "platform/FileURL.h"
#include "platform/Format.h"
#include "platform/PathString.h"

#include <algorithm>
#include <array>
#include <utility>

namespace FileTags = platform::FileTags;
using platform::FileURL;
using platform::PropertyList;

namespace {

// NSFileNoSuchFileError and the NSFileWrite… errors of the platform.
std::int64_t codeFor(platform::Refusal refusal) {
    switch (refusal) {
    case platform::Refusal::noSuchItem: return 4;
    case platform::Refusal::noPermission: return 513;
    case platform::Refusal::noSpace: return 640;
    case platform::Refusal::readOnlyVolume: return 642;
    case platform::Refusal::other: break;
    }
    return 512;
}

// Answers whether `store` stored tags for the item at `path`.
template <class Store>
bool isStored(const std::string& path, QMError* error, const Store& store) {
    const FileURL url = FileURL::fromPath(path);
    const std::optional<platform::SystemError> failure = store(url.path());
    if (failure && error != nullptr) {
        *error = {QMCocoaErrorDomain, codeFor(failure->refusal),
                  platform::format("The tags of “{}” couldn’t be saved: {}",
                                   url.lastPathComponent(), failure->reason)};
    }
    return !failure;
}

PropertyList::Array builtInTags() {
    static constexpr std::array<std::pair<const char*, std::int64_t>, 7> tags{{{"Red", 6},
                                                                               {"Orange", 7},
                                                                               {"Yellow", 5},
                                                                               {"Green", 2},
                                                                               {"Blue", 4},
                                                                               {"Purple", 3},
                                                                               {"Gray", 1}}};
    PropertyList::Array definitions;
    for (const auto& [name, label] : tags) {
        definitions.emplace_back(PropertyList::Dictionary{{"n", name}, {"l", label}});
    }
    return definitions;
}

// As much as a property list may have.
constexpr std::size_t maximumPreferencesSize = std::size_t{16} << 20;

std::optional<PropertyList> syncedPreferences() {
    const auto home = platform::FileManager::homeDirectory();
    const auto contents = home ? platform::FileManager::contentsAtPath(
                                     platform::PathString::appendingPathComponent(
                                         *home, "Library/SyncedPreferences/com.apple.finder.plist"),
                                     maximumPreferencesSize)
                               : std::nullopt;
    return contents ? PropertyList::parse(*contents) : std::nullopt;
}

} // namespace

QMTagService::Tags QMTagService::tagsForPath(const std::string& path) {
    return FileTags::read(FileURL::fromPath(path).path()).value_or(Tags());
}

bool QMTagService::setTags(const Tags& tags, const std::string& path, QMError* error) {
    return isStored(path, error,
                    [&tags](const std::string& item) { return FileTags::write(item, tags); });
}

bool QMTagService::addTag(const std::string& tag, const std::string& path, QMError* error) {
    return isStored(path, error, [&tag](const std::string& item) {
        return FileTags::change(item, [&tag](Tags& tags) {
            const bool isNew = std::ranges::find(tags, tag) == tags.end();
            if (isNew) {
                tags.push_back(tag);
            }
            return isNew;
        });
    });
}

bool QMTagService::removeTag(const std::string& tag, const std::string& path, QMError* error) {
    return isStored(path, error, [&tag](const std::string& item) {
        return FileTags::change(item, [&tag](Tags& tags) { return std::erase(tags, tag) != 0; });
    });
}

PropertyList::Array QMTagService::allAvailableTags() {
    const auto preferences = syncedPreferences();
    const PropertyList* const dictionary =
        preferences ? preferences->valueForKey("FinderTagDict") : nullptr;
    const PropertyList* const tags =
        dictionary == nullptr ? nullptr : dictionary->valueForKey("FinderTags");
    return tags == nullptr || tags->array() == nullptr ? builtInTags() : *tags->array();
}
