// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Extended attributes of items, of symbolic links themselves. Any thread.
namespace platform::ExtendedAttributes {

/// The names of an item's attributes.
class NameList {
public:
    /// Reads the list; empty when it cannot be read.
    explicit NameList(const std::string& path);
    [[nodiscard]] bool empty() const { return m_names.empty(); }
    [[nodiscard]] bool contains(std::string_view name) const;

private:
    std::string m_names; // each is ended by a NUL
};

/// The value of an attribute; nullopt when there is none or it cannot be read.
[[nodiscard]] std::optional<std::string> value(const std::string& path, const char* name);

/// Gives an attribute a value, or takes it away when there is none, which is no error for one that
/// is not there. Answers the error number, 0 for success.
[[nodiscard]] int store(const std::string& path, const char* name,
                        const std::optional<std::string>& value);

} // namespace platform::ExtendedAttributes
