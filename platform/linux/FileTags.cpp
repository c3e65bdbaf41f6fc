// SPDX-License-Identifier: Apache-2.0
#include "platform/FileTags.h"

#include "platform/linux/ExtendedAttributes.h"
#include "platform/linux/TagRecord.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace platform::FileTags {
namespace {

using ExtendedAttributes::NameList;

TagRecord recordOf(const std::string& path) {
    TagRecord record;
    const NameList names(path);
    const auto valueIfListed = [&path, &names](const char* attribute) {
        return names.contains(attribute) ? ExtendedAttributes::value(path, attribute)
                                         : std::nullopt;
    };
    if (names.empty()) {
        return record;
    }
    record.desktop = valueIfListed(TagAttributes::desktop);
    std::ranges::transform(TagAttributes::finder, record.finder.begin(), valueIfListed);
    record.base = valueIfListed(TagAttributes::base);
    return record;
}

Refusal refusalFor(int error) {
    switch (error) {
    case EACCES:
    case EPERM: return Refusal::noPermission;
    case EROFS: return Refusal::readOnlyVolume;
    case ENOENT:
    case ENOTDIR: return Refusal::noSuchItem;
    case ENOSPC:
    case EDQUOT: return Refusal::noSpace;
    default: return Refusal::other;
    }
}

SystemError systemError(int error) {
    return {refusalFor(error), std::system_category().message(error)};
}

// Takes back the first `count` changes, the last one first.
void undo(const std::string& path, TagRecord& old, const std::vector<TagChange>& changes,
          std::size_t count) {
    for (; count > 0; --count) {
        const char* const attribute = changes[count - 1].attribute;
        // There is nothing left to do about a failure here; the first one is reported.
        static_cast<void>(ExtendedAttributes::store(path, attribute, valueOf(old, attribute)));
    }
}

} // namespace

std::optional<std::vector<std::string>> read(const std::string& path) {
    return recordOf(path).names();
}

std::optional<SystemError> write(const std::string& path, const std::vector<std::string>& names,
                                 Damaged damaged) {
    if (!std::ranges::all_of(names, TagNames::isEntry)) {
        return SystemError{Refusal::other, "the name of a tag cannot hold a line break"};
    }
    TagRecord record = recordOf(path);
    if (damaged == Damaged::keep && record.isDamaged()) {
        return SystemError{Refusal::other, "the Finder's tags on it are damaged"};
    }
    const auto changes = changesFor(record, names);
    if (!changes) {
        return systemError(EILSEQ);
    }
    for (std::size_t done = 0; done < changes->size(); ++done) {
        const TagChange& change = (*changes)[done];
        const int error = ExtendedAttributes::store(path, change.attribute, change.value);
        if (error != 0) {
            undo(path, record, *changes, done);
            return systemError(error);
        }
    }
    return std::nullopt;
}

} // namespace platform::FileTags
