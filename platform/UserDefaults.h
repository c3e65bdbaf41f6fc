// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/Export.h"
#include "platform/PropertyList.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

struct FileIdentity;

/// The user's settings: what he has set, and beneath it the defaults that this process has
/// registered. Nothing is ever written. Any thread.
///
/// What the user has set is the dictionary in a property-list file, binary or XML. A missing,
/// unreadable or damaged file, one of more than 16 MiB, one that holds no dictionary, and whatever
/// is no regular file, has nothing set; none of them is an error, and none is waited for.
///
/// Each read looks at the file, and reads it anew once it differs in identity, size or a time; so
/// what another process has saved is seen from then on. Only a change to as many bytes within one
/// tick of the file system's clock may be missed. Two reads in a row may see two states of the
/// file; whoever replaces it, rather than writing into it, lets nobody see half of one.
///
/// Keys are compared by their bytes.
class QM_EXPORT UserDefaults {
public:
    /// The settings of the user who runs this process, for the whole of the process.
    [[nodiscard]] static UserDefaults& standard();

    /// The file behind `standard`; empty for a user without a home. It is chosen when `standard`
    /// is first asked for.
    [[nodiscard]] static std::string pathOfStandard();

    /// Lets `standard` answer with `other`, or with the user's settings again when it is null. For
    /// tests, and for programs with settings of their own. `other` stays the caller's, and has to
    /// live until no thread uses it.
    static void setStandard(UserDefaults* other);

    /// Settings in the file at `path`, which need not exist; an empty path has nothing set.
    explicit UserDefaults(std::string path);

    /// Registers values for keys that the user has not set, for the life of this object. A key
    /// that is registered again takes the new value; the others stay.
    void registerDefaults(PropertyList::Dictionary defaults);

    /// The value of `key`, of any kind; nullopt when it has none.
    [[nodiscard]] std::optional<PropertyList> objectForKey(std::string_view key) const;

    /// The value of `key` as PropertyListReadings.h reads it; false when it has none.
    [[nodiscard]] bool boolForKey(std::string_view key) const;
    /// The same as a whole number; 0 when it has none.
    [[nodiscard]] std::int64_t integerForKey(std::string_view key) const;
    /// The same as a number; 0 when it has none.
    [[nodiscard]] double doubleForKey(std::string_view key) const;
    /// The same as a text; nullopt when it has none.
    [[nodiscard]] std::optional<std::string> stringForKey(std::string_view key) const;

    /// The value of `key` when it is a dictionary, else nullopt.
    [[nodiscard]] std::optional<PropertyList::Dictionary>
    dictionaryForKey(std::string_view key) const;
    /// The value of `key` when it is bytes, else nullopt.
    [[nodiscard]] std::optional<Data> dataForKey(std::string_view key) const;

    /// The value of `key` when it is an array, else null. Shared instead of copied: settings may
    /// hold arrays of millions, for callers of which there are hundreds.
    [[nodiscard]] std::shared_ptr<const PropertyList::Array>
    arrayForKey(std::string_view key) const;

    /// The value of `key` when it is an array of nothing but texts, else nullopt.
    [[nodiscard]] std::optional<std::vector<std::string>>
    stringArrayForKey(std::string_view key) const;

private:
    using Values = std::shared_ptr<const PropertyList::Dictionary>;
    struct File;

    [[nodiscard]] File read(const std::optional<FileIdentity>& identity) const;
    [[nodiscard]] Values valuesInFile() const;
    [[nodiscard]] std::shared_ptr<const PropertyList> find(std::string_view key) const;

    const std::string m_path;
    mutable std::mutex m_mutex; ///< guards the pointers, not what they lead to
    mutable std::shared_ptr<const File> m_file;
    Values m_registered;
};

} // namespace platform
