// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

/// The bytes of objects in a PDF, as far as they have to be told apart to find other objects
/// (ISO 32000-2, 7.2 and 7.3). Whatever is not as it should be is taken for damage: those who ask
/// leave it to poppler then. Nothing here is kept; what is returned are parts of what is given. Any
/// thread.
namespace platform::pdf {

/// The largest number of an object, and of a generation, that poppler can hold.
inline constexpr std::uint64_t largestNumber = 0x7FFFFFFF;

struct Reference {
    std::uint32_t number = 0;
    std::uint32_t generation = 0;

    bool operator==(const Reference&) const = default;
};

/// The first value in `text`, which is left without it: an array, a dictionary, a string, a name, a
/// number, a reference as a whole, or a word. nullopt when it is damaged, deeper than 32 levels, or
/// when the text might end within it.
[[nodiscard]] std::optional<std::string_view> takeValue(std::string_view& text);

/// The first token in `text`, likewise: a bracket, or a value that has none and is no reference.
[[nodiscard]] std::optional<std::string_view> takeToken(std::string_view& text);

/// What a value says; nullopt for others, and for numbers beyond 18 digits.
[[nodiscard]] std::optional<std::uint64_t> integerOf(std::string_view value);
[[nodiscard]] std::optional<Reference> referenceOf(std::string_view value);
[[nodiscard]] bool isArray(std::string_view value);
[[nodiscard]] bool isDictionary(std::string_view value);

/// How many references there are in an array of nothing else; nullopt for other values, and when
/// one is not written as usual: nine digits at most, and the generation 0.
[[nodiscard]] std::optional<std::uint64_t> countOfReferences(std::string_view array);

/// Goes through the values in an array, or through keys and values of a dictionary, as returned by
/// takeValue(), which must outlive this.
class ValueReader {
public:
    explicit ValueReader(std::string_view container);

    /// nullopt at the end, or where there is no end to be seen.
    [[nodiscard]] std::optional<std::string_view> next();

private:
    std::string_view m_rest;
};

/// A dictionary with few entries, which are found by keys with their slashes.
class Dictionary {
public:
    struct Entry {
        std::string_view key;
        std::string_view value;
    };

    /// nullopt for other values, and for dictionaries of which readers might think differently: a
    /// key is there twice, or spelled with the numbers of its characters.
    [[nodiscard]] static std::optional<Dictionary> of(std::string_view value);

    /// Empty when there is no such entry.
    [[nodiscard]] std::string_view operator[](std::string_view key) const;
    [[nodiscard]] const std::vector<Entry>& entries() const { return m_entries; }

private:
    bool add(std::string_view key, std::string_view value);

    std::vector<Entry> m_entries;
};

} // namespace platform::pdf
