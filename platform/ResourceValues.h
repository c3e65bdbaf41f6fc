// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/DateFormatter.h"
#include "platform/Export.h"
#include "platform/Icon.h"

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace platform {

/// The properties that the file system can be asked for.
enum class ResourceKey : std::uint8_t {
    name,
    fileSize,
    isDirectory,
    isHidden,
    isSymbolicLink,
    isPackage,
    creationDate,
    contentModificationDate,
    localizedTypeDescription,
    tagNames,
    effectiveIcon,
    typeIdentifier,
    totalFileAllocatedSize,
    fileAllocatedSize,
};

/// A set of resource keys.
class QM_EXPORT ResourceKeySet {
public:
    /// The set of these keys; repetition is harmless.
    constexpr ResourceKeySet(std::initializer_list<ResourceKey> keys)
        : ResourceKeySet(std::span(keys.begin(), keys.size())) {}
    /// The same for keys that are in a row.
    constexpr explicit ResourceKeySet(std::span<const ResourceKey> keys) {
        for (const ResourceKey key : keys) {
            m_bits |= 1U << static_cast<unsigned>(key);
        }
    }
    /// Whether `key` is in the set.
    [[nodiscard]] constexpr bool contains(ResourceKey key) const {
        return (m_bits >> static_cast<unsigned>(key) & 1U) != 0;
    }

private:
    unsigned m_bits = 0;
};

/// Properties of one item; one is absent when it was not asked for or the item has none. The
/// values of a symbolic link are the link's own.
struct QM_EXPORT ResourceValues {
    std::optional<std::string> name;       ///< as stored on disk; "/" for the root
    std::optional<std::uint64_t> fileSize; ///< bytes; absent for folders
    std::optional<bool> isDirectory;       ///< never for a link
    std::optional<bool> isHidden;          ///< leading dot, or listed in the folder's ".hidden"
    std::optional<bool> isSymbolicLink;    ///< also where the link leads nowhere
    std::optional<bool> isPackage;         ///< a folder that is shown as one file
    std::optional<Date> creationDate;      ///< absent where the file system keeps none
    std::optional<Date> contentModificationDate; ///< of the contents, not of the name or rights
    std::optional<std::string> localizedTypeDescription; ///< for people: "PNG image"
    std::optional<std::vector<std::string>> tagNames;    ///< absent for an item without tags
    std::optional<Icon> effectiveIcon;                   ///< at the platform's default size
    std::optional<std::string> typeIdentifier;           ///< a uniform type identifier
    std::optional<std::uint64_t> totalFileAllocatedSize; ///< bytes on disk; absent for folders
    std::optional<std::uint64_t> fileAllocatedSize;      ///< bytes on disk; absent for folders
};

/// Reads the values of `keys` for the item at `path` (bytes, as given). nullopt when nothing is
/// there; a dangling link is something. Opens neither the item nor what it links to, so FIFOs and
/// devices never block. Any thread.
QM_EXPORT [[nodiscard]] std::optional<ResourceValues> resourceValues(const std::string& path,
                                                                     ResourceKeySet keys);

} // namespace platform
