// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/Export.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// Writes the fields of one object as a keyed archive: a binary property list with the members
/// "$archiver" ("NSKeyedArchiver"), "$version" (100000), "$top" and "$objects", in which values
/// refer to each other by index. One thread at a time.
class QM_EXPORT KeyedArchiver {
public:
    /// `className` names the class of the object and is checked on reading.
    explicit KeyedArchiver(std::string className)
        : m_className(std::move(className)) {}

    /// Stores `text` under `key`; the last one of the same key counts. A text that is not UTF-8, or
    /// that holds a NUL, is stored as data so that no byte is lost.
    void encodeString(std::string_view key, std::string text);

    /// The archive.
    [[nodiscard]] Data encodedData() const;

private:
    std::string m_className;
    std::map<std::string, std::string, std::less<>> m_fields;
};

/// Reads what a KeyedArchiver wrote. The archive may be hostile. Any thread.
class QM_EXPORT KeyedUnarchiver {
public:
    /// Opens an archive whose root is an object of the class `className`; nullopt for everything
    /// else, for damaged archives, and for more than 16 MiB.
    [[nodiscard]] static std::optional<KeyedUnarchiver>
    forReadingFromData(DataView archive, std::string_view className);

    /// The text under `key`; nullopt when there is none.
    [[nodiscard]] std::optional<std::string> decodeString(std::string_view key) const;

private:
    std::map<std::string, std::string, std::less<>> m_fields;
};

} // namespace platform
