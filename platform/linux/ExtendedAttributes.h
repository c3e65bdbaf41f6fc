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
    /// Reads the list; empty when it cannot be read, and where there can be no attributes.
    explicit NameList(const std::string& path);
    /// Why it could not be read, as an error number; 0 when it was.
    [[nodiscard]] int error() const { return m_error; }
    [[nodiscard]] bool empty() const { return m_names.empty(); }
    [[nodiscard]] bool contains(std::string_view name) const;

private:
    std::string m_names; // each is ended by a NUL
    int m_error = 0;
};

/// Reads an attribute into `value`, nullopt when there is none. Answers the error number, 0 for
/// success, which it is too when there is none.
[[nodiscard]] int load(const std::string& path, const char* name,
                       std::optional<std::string>& value);

/// Gives an attribute a value, or takes it away when there is none, which is no error for one that
/// is not there. Answers the error number, 0 for success.
[[nodiscard]] int store(const std::string& path, const char* name,
                        const std::optional<std::string>& value);

} // namespace platform::ExtendedAttributes
