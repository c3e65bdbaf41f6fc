// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/Export.h"

#include <concepts>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace platform {

/// A property-list value. Texts are UTF-8 without NUL. Dictionaries are ordered by key. Integers
/// beyond 2^63 - 1 wrap around. Any thread may read a value that nobody changes.
class QM_EXPORT PropertyList {
public:
    /// Seconds since 2001-01-01 00:00:00 UTC, as property lists keep dates. Good to a few
    /// microseconds, and within 68 years of the start.
    struct AbsoluteTime {
        double seconds = 0; ///< may be negative
        friend bool operator==(const AbsoluteTime&, const AbsoluteTime&) = default;
    };
    /// A reference to another object of a keyed archive, by index.
    struct UID {
        std::uint64_t index = 0; ///< into "$objects" of the archive
        friend bool operator==(const UID&, const UID&) = default;
    };
    using Array = std::vector<PropertyList>;                             ///< in order
    using Dictionary = std::map<std::string, PropertyList, std::less<>>; ///< by key
    /// What a value can be.
    using Value = std::variant<bool, std::int64_t, double, std::string, Data, AbsoluteTime, UID,
                               Array, Dictionary>;

    /// The two forms of a file, "bplist00" and the one of PropertyList-1.0.dtd.
    enum class Format { binary, xml };

    /// A copy; std::bad_alloc when there is no memory for it.
    PropertyList(const PropertyList& other);
    /// The same; on failure nothing has changed.
    PropertyList& operator=(const PropertyList& other);
    PropertyList(PropertyList&&) noexcept = default;            ///< leaves some value behind
    PropertyList& operator=(PropertyList&&) noexcept = default; ///< leaves some value behind
    ~PropertyList() = default;

    // NOLINTBEGIN(google-explicit-constructor): a value of each kind is a property list
    /// A value of that kind, which is copied or moved in. Characters end at their NUL; null is not
    /// allowed.
    /// @{
    PropertyList(Value value)
        : m_value(std::move(value)) {}
    PropertyList(std::same_as<bool> auto flag)
        : m_value(std::in_place_type<bool>, flag) {}
    PropertyList(std::same_as<double> auto number)
        : m_value(std::in_place_type<double>, number) {}
    PropertyList(std::int64_t number)
        : m_value(number) {}
    PropertyList(UID reference)
        : m_value(reference) {}
    PropertyList(Data bytes)
        : m_value(std::move(bytes)) {}
    PropertyList(std::string text)
        : m_value(std::move(text)) {}
    PropertyList(const char* text)
        : m_value(std::string(text)) {}
    PropertyList(Array array)
        : m_value(std::move(array)) {}
    PropertyList(Dictionary dictionary)
        : m_value(std::move(dictionary)) {}
    /// @}
    // NOLINTEND(google-explicit-constructor)

    /// Reads a binary or XML property list. nullopt for everything else, for damaged ones, for
    /// more than 16 MiB, and for values nested deeper than 128 levels or that would grow out of
    /// proportion to their bytes. The bytes may be hostile.
    [[nodiscard]] static std::optional<PropertyList> parse(DataView bytes);

    /// Writes the value. Fails (empty bytes) beyond 128 levels and for texts that are not UTF-8.
    [[nodiscard]] Data serialized(Format format) const;

    /// The value, of whatever kind.
    [[nodiscard]] const Value& value() const { return m_value; }

    /// The text, or null when the value is of another kind. All of these live as long as it does.
    [[nodiscard]] const std::string* string() const { return std::get_if<std::string>(&m_value); }
    /// The same for bytes.
    [[nodiscard]] const Data* data() const { return std::get_if<Data>(&m_value); }
    /// The same for references.
    [[nodiscard]] const UID* uid() const { return std::get_if<UID>(&m_value); }
    /// The same for arrays.
    [[nodiscard]] const Array* array() const { return std::get_if<Array>(&m_value); }
    /// The same for dictionaries.
    [[nodiscard]] const Dictionary* dictionary() const { return std::get_if<Dictionary>(&m_value); }
    /// The value under `key` when this is a dictionary that has it, else null.
    [[nodiscard]] const PropertyList* valueForKey(std::string_view key) const;

    friend bool operator==(const PropertyList&, const PropertyList&) = default;

private:
    Value m_value;
};

} // namespace platform
