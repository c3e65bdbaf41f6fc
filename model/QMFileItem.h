// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/DateFormatter.h"
#include "platform/Export.h"
#include "platform/FileURL.h"
#include "platform/Icon.h"
#include "platform/KeyedArchive.h"
#include "platform/Pasteboard.h"
#include "platform/ResourceValues.h"

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// One file or folder with its properties: filled once, then only read, but for the three fields
/// that an application may assign. Items live in shared pointers; those that cannot be made are
/// null. Paths and names are bytes, other texts UTF-8. No member throws anything but
/// std::bad_alloc. An item may be read from any number of threads; assigning a field needs the
/// caller's own lock.
class QM_EXPORT QMFileItem : public std::enable_shared_from_this<QMFileItem> {
public:
    /// Reads the item at `url` from the file system, a symbolic link as itself. Null when nothing
    /// is there. Opens no file, so FIFOs and devices never block.
    [[nodiscard]] static std::shared_ptr<QMFileItem> initWithURL(const platform::FileURL& url);

    /// An item filled from values that were fetched before, as by an enumeration of a folder;
    /// never null.
    [[nodiscard]] static std::shared_ptr<QMFileItem>
    fileItemWithURL(const platform::FileURL& url, const platform::ResourceValues& resourceValues);

    /// An entry of a remote listing. The local file system is not touched; what is not given keeps
    /// its default.
    [[nodiscard]] static std::shared_ptr<QMFileItem>
    remoteItemWithName(std::string name, std::string path, std::uint64_t size,
                       std::optional<platform::Date> modificationDate, bool isDirectory,
                       std::optional<std::string> permissions, std::optional<std::string> ownerName,
                       std::optional<std::string> kind, std::optional<platform::Icon> icon);

    /// An empty item: every property has its default.
    QMFileItem() = default;

    /// Fills the item from `resourceValues` and from the status of the file at `url`.
    void populateFromURL(const platform::FileURL& url,
                         const platform::ResourceValues& resourceValues);

    /// The keys that `initWithURL` reads, for those who fetch values themselves.
    [[nodiscard]] static const std::array<platform::ResourceKey, 13>& prefetchedResourceKeys();

    // Properties. Absent ones were never filled or could not be found out.
    /// As stored on disk, "/" for the root; of an entry of a remote listing as it was given.
    [[nodiscard]] const std::optional<std::string>& name() const { return m_name; }
    /// As in the URL; of an entry of a remote listing as it was given.
    [[nodiscard]] const std::optional<std::string>& path() const { return m_path; }
    /// A URL of this computer also for an entry of a remote listing.
    [[nodiscard]] const std::optional<platform::FileURL>& fileURL() const { return m_fileURL; }
    /// Bytes of content; 0 for folders. A link's own size.
    [[nodiscard]] std::uint64_t size() const { return m_size; }
    /// Of the contents; of a link itself.
    [[nodiscard]] std::optional<platform::Date> modificationDate() const {
        return m_modificationDate;
    }
    /// Absent where the file system keeps none.
    [[nodiscard]] std::optional<platform::Date> creationDate() const { return m_creationDate; }
    /// The description of the type, for people: "PNG image".
    [[nodiscard]] const std::optional<std::string>& kind() const { return m_kind; }
    /// Always at 16 by 16 points once filled.
    [[nodiscard]] const std::optional<platform::Icon>& icon() const { return m_icon; }
    /// Of a symbolic link: whether it leads to a folder.
    [[nodiscard]] bool isDirectory() const { return m_isDirectory; }
    /// Leading dot, or listed in the folder's ".hidden".
    [[nodiscard]] bool isHidden() const { return m_isHidden; }
    /// The item itself is a symbolic link.
    [[nodiscard]] bool isSymlink() const { return m_isSymlink; }
    /// A folder that is shown as one file.
    [[nodiscard]] bool isPackage() const { return m_isPackage; }
    /// Told by the type or by the extension of the name.
    [[nodiscard]] bool isArchive() const { return m_isArchive; }
    /// Told by the extension of the path alone.
    [[nodiscard]] bool isDiskImage() const { return m_isDiskImage; }
    /// In their order; empty without tags. A link has none.
    [[nodiscard]] const std::vector<std::string>& tags() const { return m_tags; }
    /// The uniform type identifier; empty when it could not be told.
    [[nodiscard]] const std::optional<std::string>& uti() const { return m_uti; }
    /// Bytes on disk.
    [[nodiscard]] std::uint64_t allocatedSize() const { return m_allocatedSize; }
    /// As in a long listing, "-rw-r--r--"; of a link "l" and its target's bits. Absent for a
    /// dangling link. Set-id and sticky bits are not shown.
    [[nodiscard]] const std::optional<std::string>& permissions() const { return m_permissions; }
    /// The lowest nine bits of the mode, of a link its target's.
    [[nodiscard]] std::uint64_t posixPermissions() const { return m_posixPermissions; }
    /// The name of the owning user, or its number, as a signed 32-bit integer, where it has no
    /// account; of a link its target's.
    [[nodiscard]] const std::optional<std::string>& ownerName() const { return m_ownerName; }
    /// The same of the group.
    [[nodiscard]] const std::optional<std::string>& groupName() const { return m_groupName; }

    // Fields of the application, carried along.
    /// Bytes in a folder and all below; meaningful once `folderSizeCalculated`.
    [[nodiscard]] std::uint64_t calculatedFolderSize() const { return m_calculatedFolderSize; }
    /// Does not set `folderSizeCalculated`.
    void setCalculatedFolderSize(std::uint64_t size) { m_calculatedFolderSize = size; }
    /// Whether the application has found that size out.
    [[nodiscard]] bool folderSizeCalculated() const { return m_folderSizeCalculated; }
    /// Says that `calculatedFolderSize` is meaningful, or not any more.
    void setFolderSizeCalculated(bool calculated) { m_folderSizeCalculated = calculated; }
    /// The state under version control; the numbers are the application's.
    [[nodiscard]] std::int64_t gitStatus() const { return m_gitStatus; }
    /// Any number; nothing is looked up.
    void setGitStatus(std::int64_t status) { m_gitStatus = status; }

    /// The same item, since items do not change once filled.
    [[nodiscard]] std::shared_ptr<QMFileItem> copy() { return shared_from_this(); }

    // Archiving. Only the path travels, so a decoded item is read from the disk again.
    /// The class is checked when an item is decoded.
    static constexpr bool supportsSecureCoding() { return true; }
    /// Stores the path; nothing for an item without one.
    void encodeWithCoder(platform::KeyedArchiver& coder) const;
    /// Null when the archive holds no path or nothing is there any more.
    [[nodiscard]] static std::shared_ptr<QMFileItem>
    initWithCoder(const platform::KeyedUnarchiver& coder);

    // The pasteboard, where an item is its file URL.
    /// The types that an item can be written as: the file-URL type.
    [[nodiscard]] static std::vector<std::string_view> writableTypesForPasteboard();
    /// The URL's text for the file-URL type; nullopt for any other type and for an empty item.
    [[nodiscard]] std::optional<std::string>
    pasteboardPropertyListForType(std::string_view type) const;
    /// The types that an item can be made of: the same.
    [[nodiscard]] static std::vector<std::string_view> readableTypesForPasteboard();
    /// How the value of a type is wanted: as text.
    [[nodiscard]] static platform::Pasteboard::ReadingOptions
    readingOptionsForType(std::string_view type);
    /// Null for another type, for a text that is no file URL, and when nothing is there.
    [[nodiscard]] static std::shared_ptr<QMFileItem>
    initWithPasteboardPropertyList(std::string_view propertyList, std::string_view type);

    /// Whether both are the same item or have the same path, byte by byte.
    [[nodiscard]] bool isEqual(const QMFileItem* other) const;
    /// Equal items have equal hashes.
    [[nodiscard]] std::size_t hash() const;
    /// The order of the names in the user's locale, without regard to case, and nothing else.
    [[nodiscard]] std::weak_ordering compare(const QMFileItem& other) const;

private:
    void populateSizes(const platform::FileURL& url, const platform::ResourceValues& values);
    void populateFromStatus(const std::string& path);

    std::optional<std::string> m_name;
    std::optional<std::string> m_path;
    std::optional<platform::FileURL> m_fileURL;
    std::uint64_t m_size = 0;
    std::optional<platform::Date> m_modificationDate;
    std::optional<platform::Date> m_creationDate;
    std::optional<std::string> m_kind;
    std::optional<platform::Icon> m_icon;
    bool m_isDirectory = false;
    bool m_isHidden = false;
    bool m_isSymlink = false;
    bool m_isPackage = false;
    bool m_isArchive = false;
    bool m_isDiskImage = false;
    std::vector<std::string> m_tags;
    std::optional<std::string> m_uti;
    std::uint64_t m_allocatedSize = 0;
    std::optional<std::string> m_permissions;
    std::uint64_t m_posixPermissions = 0;
    std::optional<std::string> m_ownerName;
    std::optional<std::string> m_groupName;
    std::uint64_t m_calculatedFolderSize = 0;
    bool m_folderSizeCalculated = false;
    std::int64_t m_gitStatus = 0;
};
