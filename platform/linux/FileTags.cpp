// SPDX-License-Identifier: Apache-2.0
#include "platform/FileTags.h"

#include "platform/linux/TagNames.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

#include <sys/xattr.h>

namespace platform::FileTags {
namespace {

using TagNames::Names;

// The desktops' attribute.
constexpr const char* desktopAttribute = "user.xdg.tags";

// The Finder's attribute as it arrives here: copied as it is, or stored as a stream by Samba,
// which writes the colon in a name as U+F022 on some versions.
constexpr std::array<const char*, 3> finderAttributes{
    "user.com.apple.metadata:_kMDItemUserTags",
    "user.DosStream.com.apple.metadata:_kMDItemUserTags:$DATA",
    "user.DosStream.com.apple.metadata\xEF\x80\xA2_kMDItemUserTags:$DATA",
};

// The kernel's own limit for one value (XATTR_SIZE_MAX).
constexpr std::size_t maximumValueSize = 65536;

std::optional<std::string> attribute(const std::string& path, const char* name) {
    std::string value(256, '\0');
    ssize_t size = ::lgetxattr(path.c_str(), name, value.data(), value.size());
    if (size < 0 && errno == ERANGE) {
        value.resize(maximumValueSize);
        size = ::lgetxattr(path.c_str(), name, value.data(), value.size());
    }
    if (size < 0) {
        return std::nullopt;
    }
    value.resize(static_cast<std::size_t>(size));
    return value;
}

// The names of all attributes, each ended by a NUL. One call for the many files without any.
std::string attributeNames(const std::string& path) {
    std::string names(1024, '\0');
    ssize_t size = ::llistxattr(path.c_str(), names.data(), names.size());
    if (size < 0 && errno == ERANGE) {
        names.resize(maximumValueSize);
        size = ::llistxattr(path.c_str(), names.data(), names.size());
    }
    names.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return names;
}

bool contains(const std::string& names, const char* name) {
    const std::string_view wanted(name, std::strlen(name) + 1);
    for (auto at = names.find(wanted); at != std::string::npos; at = names.find(wanted, at + 1)) {
        if (at == 0 || names[at - 1] == '\0') {
            return true;
        }
    }
    return false;
}

std::optional<Names> readFinderNames(const std::string& path, const std::string& attributes) {
    for (const char* name : finderAttributes) {
        if (!contains(attributes, name)) {
            continue;
        }
        if (auto value = attribute(path, name)) {
            if (auto names = TagNames::fromFinderValue(*std::move(value))) {
                return names;
            }
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<std::vector<std::string>> read(const std::string& path) {
    const std::string attributes = attributeNames(path);
    std::optional<Names> desktop;
    if (contains(attributes, desktopAttribute)) {
        if (const auto value = attribute(path, desktopAttribute)) {
            desktop = TagNames::fromDesktopValue(*value);
        }
    }
    std::optional<Names> finder = readFinderNames(path, attributes);
    if (!desktop || !finder) {
        return desktop ? desktop : finder;
    }
    return TagNames::reconciled(*std::move(desktop), *std::move(finder));
}

} // namespace platform::FileTags
