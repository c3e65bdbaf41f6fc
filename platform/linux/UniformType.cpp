// SPDX-License-Identifier: Apache-2.0
#include "platform/UniformType.h"

#include "platform/linux/Ascii.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace platform::UniformType {
namespace {

/// One declared type. Its parents are `parents[firstParent]` and the following ones, each an
/// index into `types`. Empty texts mean that the type has none.
struct TypeRecord {
    std::string_view identifier;
    std::string_view description;
    std::string_view mime;
    std::uint16_t firstParent;
    std::uint16_t parentCount;
};

/// What an extension stands for: indices into `types`, or `noType`.
struct ExtensionRecord {
    std::string_view extension;
    std::uint16_t file;
    std::uint16_t folder;
};

constexpr std::uint16_t noType = std::numeric_limits<std::uint16_t>::max();

// NOLINTBEGIN(modernize-avoid-c-arrays): their lengths are known to the generator alone.
#include "UniformTypeTable.inc" // types, parents, extensions
// NOLINTEND(modernize-avoid-c-arrays)

constexpr std::string_view documentKind = "Document";
constexpr std::string_view dynamicPrefix = "dyn.a";
constexpr std::string_view dynamicAlphabet = "abcdefghkmnpqrstuvwxyz0123456789";

/// What dynamic identifiers spell: conformance to plain data, then the extension.
constexpr std::string_view dynamicDataTag = "?0=6";
constexpr std::string_view dynamicExtensionTag = "?0=6:1=";
constexpr unsigned bitsPerDigit = 5;
constexpr unsigned bitsPerByte = 8;

constexpr bool precedesIgnoringCase(std::string_view left, std::string_view right) {
    return std::lexicographical_compare(
        left.begin(), left.end(), right.begin(), right.end(), [](char first, char second) {
            return static_cast<unsigned char>(lowercaseASCII(first)) <
                   static_cast<unsigned char>(lowercaseASCII(second));
        });
}

/// Whether `records` are in the strict order that binary search by `textOf` relies on.
template <typename Record, std::size_t count>
constexpr bool isSearchable(const Record (&records)[count], // NOLINT(*-avoid-c-arrays)
                            std::string_view Record::*textOf) {
    return std::adjacent_find(std::begin(records), std::end(records),
                              [textOf](const Record& left, const Record& right) {
                                  return !precedesIgnoringCase(left.*textOf, right.*textOf);
                              }) == std::end(records);
}

static_assert(isSearchable(types, &TypeRecord::identifier));
static_assert(isSearchable(extensions, &ExtensionRecord::extension));

/// The record in the sorted `records` whose text, chosen by `textOf`, is `text` in any case.
template <typename Record, std::size_t count>
constexpr const Record* findRecord(const Record (&records)[count], // NOLINT(*-avoid-c-arrays)
                                   std::string_view Record::*textOf, std::string_view text) {
    const Record* const record =
        std::lower_bound(std::begin(records), std::end(records), text,
                         [textOf](const Record& candidate, std::string_view wanted) {
                             return precedesIgnoringCase(candidate.*textOf, wanted);
                         });
    const bool found = record != std::end(records) && equalsIgnoringCase(record->*textOf, text);
    return found ? record : nullptr;
}

constexpr const TypeRecord* findType(std::string_view identifier) {
    return findRecord(types, &TypeRecord::identifier, identifier);
}

constexpr std::uint16_t indexOf(const TypeRecord& type) {
    return static_cast<std::uint16_t>(&type - std::begin(types));
}

/// The index of a type the rules below name. That it is declared is checked while compiling.
consteval std::uint16_t declared(std::string_view identifier) {
    return indexOf(*findType(identifier));
}

constexpr std::uint16_t dataType = declared("public.data");

/// Types whose word for users is not their description.
struct FixedKind {
    std::uint16_t type;
    std::string_view kind;
};

constexpr std::array fixedKinds{
    FixedKind{declared("public.folder"), "Folder"},
    FixedKind{declared("public.volume"), "Volume"},
    FixedKind{declared("com.apple.application-bundle"), "Application"},
    FixedKind{declared("public.symlink"), "Alias"},
    FixedKind{declared("com.apple.alias-file"), "Alias"},
    FixedKind{dataType, documentKind},
};

/// Whether the declared type `start` is `wanted` or descends from it. Every type is opened at
/// most once, so the work is bounded by the table, whatever its shape.
bool descends(std::uint16_t start, std::uint16_t wanted) {
    std::array<std::uint16_t, std::size(types)> open; // NOLINT(*-member-init): filled as it grows
    std::bitset<std::size(types)> seen;
    std::size_t openCount = 0;
    open[openCount++] = start;
    seen.set(start);
    while (openCount > 0 && !seen.test(wanted)) {
        const TypeRecord& type = types[open[--openCount]];
        for (std::size_t place = 0; place < type.parentCount; ++place) {
            const std::uint16_t parent = parents[type.firstParent + place];
            if (!seen.test(parent)) {
                seen.set(parent);
                open[openCount++] = parent;
            }
        }
    }
    return seen.test(wanted);
}

/// Writes the bits of the text, most significant first, as digits of five bits each.
std::string dynamicIdentifier(std::string_view extension) {
    std::string text(dynamicExtensionTag);
    text.append(lowercaseASCII(extension));
    std::string identifier(dynamicPrefix);
    unsigned bits = 0;
    unsigned bitCount = 0;
    for (const char character : text) {
        // No more than four bits are ever left over, so older ones may fall off the far end.
        bits = (bits << bitsPerByte) | static_cast<unsigned char>(character);
        for (bitCount += bitsPerByte; bitCount >= bitsPerDigit;) {
            bitCount -= bitsPerDigit;
            identifier += dynamicAlphabet[(bits >> bitCount) % dynamicAlphabet.size()];
        }
    }
    if (bitCount > 0) {
        identifier += dynamicAlphabet[(bits << (bitsPerDigit - bitCount)) % dynamicAlphabet.size()];
    }
    return identifier;
}

bool isDynamic(std::string_view identifier) {
    if (identifier.size() <= dynamicPrefix.size() ||
        !startsWithIgnoringCase(identifier, dynamicPrefix)) {
        return false;
    }
    identifier.remove_prefix(dynamicPrefix.size());
    return std::all_of(identifier.begin(), identifier.end(), [](char digit) {
        return dynamicAlphabet.find(lowercaseASCII(digit)) != std::string_view::npos;
    });
}

/// Whether the text spelt by a well-formed dynamic identifier begins with the mark of plain data.
bool spellsData(std::string_view identifier) {
    identifier.remove_prefix(dynamicPrefix.size());
    std::size_t matched = 0;
    unsigned bits = 0;
    unsigned bitCount = 0;
    for (const char digit : identifier) {
        bits = (bits << bitsPerDigit) |
               static_cast<unsigned>(dynamicAlphabet.find(lowercaseASCII(digit)));
        bitCount += bitsPerDigit;
        if (bitCount < bitsPerByte) {
            continue;
        }
        bitCount -= bitsPerByte;
        if (((bits >> bitCount) & 0xFFU) != static_cast<unsigned char>(dynamicDataTag[matched])) {
            return false;
        }
        if (++matched == dynamicDataTag.size()) {
            return true;
        }
    }
    return false;
}

bool dynamicConformsTo(std::string_view identifier, std::string_view other) {
    if (equalsIgnoringCase(identifier, other)) {
        return true;
    }
    const TypeRecord* const type = findType(other);
    return type != nullptr && spellsData(identifier) && descends(dataType, indexOf(*type));
}

std::string fileIdentifier(std::string_view extension, bool executable) {
    const auto* const record = findRecord(extensions, &ExtensionRecord::extension, extension);
    if (record != nullptr && record->file != noType) {
        return std::string(types[record->file].identifier);
    }
    if (executable) {
        return "public.unix-executable";
    }
    return extension.empty() ? "public.data" : dynamicIdentifier(extension);
}

std::string folderIdentifier(std::string_view extension) {
    const auto* const record = findRecord(extensions, &ExtensionRecord::extension, extension);
    const bool known = record != nullptr && record->folder != noType;
    return known ? std::string(types[record->folder].identifier) : "public.folder";
}

} // namespace

std::string identifierForItem(ItemKind kind, std::string_view extension) {
    switch (kind) {
    case ItemKind::file: return fileIdentifier(extension, false);
    case ItemKind::executableFile: return fileIdentifier(extension, true);
    case ItemKind::folder: return folderIdentifier(extension);
    case ItemKind::volume: return "public.volume";
    case ItemKind::symbolicLink: return "public.symlink";
    case ItemKind::namedPipe: return "public.named-pipe";
    case ItemKind::socket: return "public.socket";
    case ItemKind::characterDevice: return "public.character-special";
    case ItemKind::blockDevice: return "public.block-special";
    }
    return fileIdentifier(extension, false);
}

std::string_view kindForIdentifier(std::string_view identifier) {
    const TypeRecord* const type = findType(identifier);
    if (type == nullptr || type->description.empty()) {
        return documentKind;
    }
    const auto* const fixed = std::find_if(
        fixedKinds.begin(), fixedKinds.end(),
        [index = indexOf(*type)](const FixedKind& kind) { return kind.type == index; });
    return fixed == fixedKinds.end() ? type->description : fixed->kind;
}

bool conformsTo(std::string_view identifier, std::string_view other) {
    if (isDynamic(identifier)) {
        return dynamicConformsTo(identifier, other);
    }
    const TypeRecord* const type = findType(identifier);
    const TypeRecord* const ancestor = findType(other);
    return type != nullptr && ancestor != nullptr && descends(indexOf(*type), indexOf(*ancestor));
}

std::optional<std::string_view> mimeType(std::string_view identifier) {
    const TypeRecord* const type = findType(identifier);
    if (type == nullptr || type->mime.empty()) {
        return std::nullopt;
    }
    return type->mime;
}

} // namespace platform::UniformType
