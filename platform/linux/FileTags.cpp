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

// Reads what the item carries. Answers the error number, 0 for success.
int load(const std::string& path, TagRecord& record) {
    const NameList names(path);
    int error = names.error();
    const auto loadIfListed = [&](const char* attribute) {
        if (error == 0 && names.contains(attribute)) {
            error = ExtendedAttributes::load(path, attribute, valueOf(record, attribute));
        }
    };
    if (names.empty()) {
        return error;
    }
    loadIfListed(TagAttributes::desktop);
    std::ranges::for_each(TagAttributes::finder, loadIfListed);
    loadIfListed(TagAttributes::base);
    return error;
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

// Gives the item these names in place of what `record` says that it carries.
std::optional<SystemError> replace(const std::string& path, TagRecord& record,
                                   const std::vector<std::string>& names) {
    if (!std::ranges::all_of(names, TagNames::isEntry)) {
        return SystemError{Refusal::other, "the name of a tag cannot hold a line break"};
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

} // namespace

std::optional<std::vector<std::string>> read(const std::string& path) {
    TagRecord record;
    return load(path, record) == 0 ? record.names() : std::nullopt;
}

std::optional<SystemError> write(const std::string& path, const std::vector<std::string>& names) {
    TagRecord record;
    const int error = load(path, record);
    return error == 0 ? replace(path, record, names) : systemError(error);
}

std::optional<SystemError> change(const std::string& path, const Edit& edit) {
    TagRecord record;
    const int error = load(path, record);
    // What nobody may see counts as no tags, but nothing is ever written over it.
    if (error != 0 && refusalFor(error) == Refusal::other) {
        return systemError(error);
    }
    std::vector<std::string> names;
    if (error == 0) {
        names = record.names().value_or(std::move(names));
    }
    if (!edit(names)) {
        return std::nullopt;
    }
    if (error == 0 && record.isDamaged()) {
        return SystemError{Refusal::other, "the Finder's tags on it are damaged"};
    }
    return error == 0 ? replace(path, record, names) : systemError(error);
}

} // namespace platform::FileTags
