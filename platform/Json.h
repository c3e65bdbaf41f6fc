// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace platform {

/// A JSON value (RFC 8259) whose objects keep their members in the order of insertion. Any thread.
class Json {
public:
    using Array = std::vector<Json>;                          ///< in order
    using Object = std::vector<std::pair<std::string, Json>>; ///< names and values, in order
    /// What a value can be; texts are meant to be UTF-8.
    using Value = std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double,
                               std::string, Array, Object>;

    /// The value null.
    Json() = default;
    /// A copy; std::bad_alloc when there is no memory for it.
    Json(const Json& other);
    /// The same; on failure nothing has changed.
    Json& operator=(const Json& other);
    Json(Json&&) noexcept = default;            ///< leaves some value behind
    Json& operator=(Json&&) noexcept = default; ///< leaves some value behind
    ~Json() = default;
    // NOLINTBEGIN(google-explicit-constructor): a value of each kind is a JSON value
    /// A value of that kind, which is copied or moved in. Characters end at their NUL; null is not
    /// allowed.
    /// @{
    Json(std::nullptr_t) {}
    Json(bool value)
        : m_value(value) {}
    Json(std::int64_t value)
        : m_value(value) {}
    Json(std::uint64_t value)
        : m_value(value) {}
    Json(double value)
        : m_value(value) {}
    Json(std::string value)
        : m_value(std::move(value)) {}
    Json(const char* value)
        : m_value(std::string(value)) {}
    Json(Array value)
        : m_value(std::move(value)) {}
    Json(Object value)
        : m_value(std::move(value)) {}
    /// @}
    // NOLINTEND(google-explicit-constructor)

    /// The value, of whatever kind.
    [[nodiscard]] const Value& value() const { return m_value; }

    /// Serialises to indented text (two blanks a level, no final line break). Bytes of texts that
    /// are not UTF-8 become U+FFFD. Fails, with the reason in `error`, for a top level that is
    /// neither object nor array, for numbers that are not finite, and beyond 512 levels.
    [[nodiscard]] std::optional<std::string> serialized(std::string& error) const;

    /// The same text for a value of any kind as it stands in an array that is a document of its
    /// own, a level further in and without comma: so an array can be written piece by piece.
    [[nodiscard]] std::optional<std::string> serializedAsElement(std::string& error) const;

private:
    [[nodiscard]] std::optional<std::string> serialized(int levels, std::string& error) const;

    Value m_value = nullptr;
};

} // namespace platform
