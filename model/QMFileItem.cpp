// SPDX-License-Identifier: Apache-2.0
#include "model/QMFileItem.h"

#include "foundation/QMDiskImageExtensions.h"
#include "foundation/QMString.h"
#include "platform/Collation.h"
#include "platform/FileStatus.h"
#include "platform/Format.h"
#include "platform/PathString.h"

#include <algorithm>
#include <functional>
#include <utility>

using platform::FileURL;
using platform::ResourceKey;
using platform::ResourceValues;

namespace Pasteboard = platform::Pasteboard;

namespace {

constexpr std::string_view pathKey = "path";
constexpr double iconSize = 16;

bool isArchiveExtension(std::string_view extension) {
    static constexpr std::array<std::string_view, 14> archives{
        "zip", "tar",    "gz",      "tgz",    "bz2",  "xz",  "7z",
        "rar", "tar.gz", "tar.bz2", "tar.xz", "cpio", "iso", "dmg"};
    return std::ranges::find(archives, extension) != archives.end();
}

bool isArchiveFile(const std::string& uti, const std::string& name) {
    if (qm_utiConformsTo(uti, "public.archive")) {
        return true;
    }
    const std::string last = qm_pathExtensionLowercased(name);
    const std::string inner =
        qm_pathExtensionLowercased(platform::PathString::deletingPathExtension(name));
    return isArchiveExtension(last) || isArchiveExtension(platform::format("{}.{}", inner, last));
}

// Accounts are numbered as signed integers here, so that "nobody" of some systems reads -2.
std::string numberText(std::uint32_t account) {
    return std::to_string(static_cast<std::int32_t>(account));
}

std::string permissionText(char type, std::uint32_t mode) {
    constexpr std::string_view letters = "rwxrwxrwx";
    std::string text(1, type);
    for (std::size_t i = 0; i < letters.size(); ++i) {
        text.push_back((mode & (0400U >> i)) != 0 ? letters[i] : '-');
    }
    return text;
}

} // namespace

const std::array<ResourceKey, 13>& QMFileItem::prefetchedResourceKeys() {
    static constexpr std::array<ResourceKey, 13> keys{
        ResourceKey::name,
        ResourceKey::fileSize,
        ResourceKey::isDirectory,
        ResourceKey::isHidden,
        ResourceKey::isSymbolicLink,
        ResourceKey::isPackage,
        ResourceKey::creationDate,
        ResourceKey::contentModificationDate,
        ResourceKey::localizedTypeDescription,
        ResourceKey::tagNames,
        ResourceKey::effectiveIcon,
        ResourceKey::typeIdentifier,
        ResourceKey::totalFileAllocatedSize,
    };
    return keys;
}

std::shared_ptr<QMFileItem> QMFileItem::initWithURL(const FileURL& url) {
    const auto values = platform::resourceValues(
        url.path(), platform::ResourceKeySet(std::span(prefetchedResourceKeys())));
    return values ? fileItemWithURL(url, *values) : nullptr;
}

std::shared_ptr<QMFileItem> QMFileItem::fileItemWithURL(const FileURL& url,
                                                        const ResourceValues& resourceValues) {
    auto item = std::make_shared<QMFileItem>();
    item->populateFromURL(url, resourceValues);
    return item;
}

std::shared_ptr<QMFileItem> QMFileItem::remoteItemWithName(
    std::string name, std::string path, std::uint64_t size,
    std::optional<platform::Date> modificationDate, bool isDirectory,
    std::optional<std::string> permissions, std::optional<std::string> ownerName,
    std::optional<std::string> kind, std::optional<platform::Icon> icon) {
    auto item = std::make_shared<QMFileItem>();
    item->m_name = std::move(name);
    item->m_fileURL = FileURL::fromPath(path);
    item->m_path = std::move(path);
    item->m_size = size;
    item->m_modificationDate = modificationDate;
    item->m_isDirectory = isDirectory;
    item->m_permissions = std::move(permissions);
    item->m_ownerName = std::move(ownerName);
    item->m_kind = std::move(kind);
    item->m_icon = std::move(icon);
    return item;
}

void QMFileItem::populateFromURL(const FileURL& url, const ResourceValues& resourceValues) {
    const std::string& path = url.path();
    m_fileURL = url;
    m_path = path;
    m_name = resourceValues.name ? resourceValues.name : url.lastPathComponent();
    m_isDirectory = resourceValues.isDirectory.value_or(false);
    m_isHidden = resourceValues.isHidden.value_or(false);
    m_isSymlink = resourceValues.isSymbolicLink.value_or(false);
    m_isPackage = resourceValues.isPackage.value_or(false);
    m_creationDate = resourceValues.creationDate;
    m_modificationDate = resourceValues.contentModificationDate;
    m_kind = resourceValues.localizedTypeDescription.value_or("Document");
    m_tags = resourceValues.tagNames.value_or(std::vector<std::string>());
    m_icon =
        resourceValues.effectiveIcon ? resourceValues.effectiveIcon : platform::iconForFile(path);
    m_icon->width = iconSize;
    m_icon->height = iconSize;
    m_uti = resourceValues.typeIdentifier.value_or(std::string());
    m_isArchive = isArchiveFile(*m_uti, *m_name);
    m_isDiskImage = qm_hasMountableDiskImageExtension(path);
    populateSizes(url, resourceValues);
    populateFromStatus(path);
}

void QMFileItem::populateSizes(const FileURL& url, const ResourceValues& values) {
    m_size = values.fileSize.value_or(0);
    m_allocatedSize = values.totalFileAllocatedSize.value_or(0);
    if (m_allocatedSize == 0) {
        const auto more = platform::resourceValues(url.path(), {ResourceKey::fileAllocatedSize});
        m_allocatedSize = more ? more->fileAllocatedSize.value_or(0) : 0;
    }
}

// The resource values of a link are the link's own; what it leads to is asked for here.
void QMFileItem::populateFromStatus(const std::string& path) {
    const auto own = platform::statusOfItem(path, false);
    m_isSymlink = m_isSymlink || (own && own->isSymbolicLink);
    const auto target = platform::statusOfItem(path, true);
    if (!target) {
        return;
    }
    if (m_isSymlink) {
        m_isDirectory = target->isDirectory;
    }
    if (m_allocatedSize == 0) {
        m_allocatedSize = target->blocks * 512;
    }
    const char type = m_isSymlink ? 'l' : target->isDirectory ? 'd' : '-';
    m_posixPermissions = target->mode & 0777U;
    m_permissions = permissionText(type, target->mode);
    m_ownerName = platform::userName(target->ownerID).value_or(numberText(target->ownerID));
    m_groupName = platform::groupName(target->groupID).value_or(numberText(target->groupID));
}

void QMFileItem::encodeWithCoder(platform::KeyedArchiver& coder) const {
    if (m_path) {
        coder.encodeString(pathKey, *m_path);
    }
}

std::shared_ptr<QMFileItem> QMFileItem::initWithCoder(const platform::KeyedUnarchiver& coder) {
    const auto path = coder.decodeString(pathKey);
    // A NUL would end the path early and name another file.
    const bool isPath = path && !path->empty() && path->find('\0') == std::string::npos;
    return isPath ? initWithURL(FileURL::fromPath(*path)) : nullptr;
}

std::vector<std::string_view> QMFileItem::writableTypesForPasteboard() {
    return {Pasteboard::typeFileURL};
}

std::optional<std::string> QMFileItem::pasteboardPropertyListForType(std::string_view type) const {
    if (type != Pasteboard::typeFileURL || !m_fileURL) {
        return std::nullopt;
    }
    return m_fileURL->absoluteString();
}

std::vector<std::string_view> QMFileItem::readableTypesForPasteboard() {
    return {Pasteboard::typeFileURL};
}

Pasteboard::ReadingOptions QMFileItem::readingOptionsForType(std::string_view /*type*/) {
    return Pasteboard::ReadingOptions::asString;
}

std::shared_ptr<QMFileItem>
QMFileItem::initWithPasteboardPropertyList(std::string_view propertyList, std::string_view type) {
    const auto url = type == Pasteboard::typeFileURL ? FileURL::parse(propertyList) : std::nullopt;
    return url ? initWithURL(*url) : nullptr;
}

bool QMFileItem::isEqual(const QMFileItem* other) const {
    return other == this || (other != nullptr && m_path && m_path == other->m_path);
}

std::size_t QMFileItem::hash() const {
    return std::hash<std::optional<std::string>>()(m_path);
}

std::weak_ordering QMFileItem::compare(const QMFileItem& other) const {
    return platform::Collation::localizedCaseInsensitiveCompare(
        m_name.value_or(std::string()), other.m_name.value_or(std::string()));
}
