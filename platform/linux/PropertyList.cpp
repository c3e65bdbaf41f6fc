// SPDX-License-Identifier: Apache-2.0
#include "platform/PropertyList.h"

#include "platform/VariantCopy.h"
#include "platform/linux/PropertyListGuard.h"
#include "platform/linux/Utf8.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>

#include <plist/plist.h>

namespace platform {
namespace {

struct FreeNode {
    void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, FreeNode>;

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); } // NOLINT(*-no-malloc)
};
template <class T>
using Memory = std::unique_ptr<T, FreeMemory>;

std::optional<PropertyList> converted(plist_t node, std::size_t depth);

std::optional<PropertyList> convertedArray(plist_t node, std::size_t depth) {
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(node, &iterator);
    const Memory<void> owner(iterator);
    PropertyList::Array result;
    plist_t item = nullptr;
    for (plist_array_next_item(node, iterator, &item); item != nullptr;
         plist_array_next_item(node, iterator, &item)) {
        auto value = converted(item, depth + 1);
        if (!value) {
            return std::nullopt;
        }
        result.push_back(*std::move(value));
    }
    return std::optional<PropertyList>(std::in_place, std::move(result));
}

std::optional<PropertyList> convertedDictionary(plist_t node, std::size_t depth) {
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    const Memory<void> owner(iterator);
    PropertyList::Dictionary result;
    while (true) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator, &key, &item);
        const Memory<char> keyOwner(key);
        if (item == nullptr) {
            return std::optional<PropertyList>(std::in_place, std::move(result));
        }
        auto value = converted(item, depth + 1);
        if (key == nullptr || !isUTF8(key) || !value) {
            return std::nullopt;
        }
        result.insert_or_assign(key, *std::move(value));
    }
}

std::optional<PropertyList> convertedText(plist_t node) {
    char* text = nullptr;
    plist_get_string_val(node, &text);
    const Memory<char> owner(text);
    const bool isText = text != nullptr && isUTF8(text);
    return isText ? std::optional<PropertyList>(std::in_place, text) : std::nullopt;
}

std::optional<PropertyList> convertedData(plist_t node) {
    char* bytes = nullptr;
    std::uint64_t size = 0;
    plist_get_data_val(node, &bytes, &size);
    const Memory<char> owner(bytes);
    if (bytes == nullptr) {
        return PropertyList(Data());
    }
    const DataView view = bytesOf({bytes, static_cast<std::size_t>(size)});
    return PropertyList(Data(view.begin(), view.end()));
}

std::optional<PropertyList> convertedNumber(plist_t node, plist_type type) {
    std::uint64_t integer = 0;
    if (type == PLIST_UID) {
        plist_get_uid_val(node, &integer);
        return PropertyList(PropertyList::UID{integer});
    }
    if (type == PLIST_UINT) {
        plist_get_uint_val(node, &integer);
        return PropertyList(static_cast<std::int64_t>(integer));
    }
    if (type == PLIST_BOOLEAN) {
        std::uint8_t boolean = 0;
        plist_get_bool_val(node, &boolean);
        return PropertyList(PropertyList::Value(boolean != 0));
    }
    if (type == PLIST_REAL) {
        double real = 0;
        plist_get_real_val(node, &real);
        return PropertyList(PropertyList::Value(real));
    }
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    return PropertyList(PropertyList::Value(
        PropertyList::AbsoluteTime{static_cast<double>(seconds) + microseconds / 1e6}));
}

std::optional<PropertyList> converted(plist_t node, std::size_t depth) {
    if (depth > PropertyListGuard::maximumDepth) {
        return std::nullopt;
    }
    const plist_type type = plist_get_node_type(node);
    switch (type) {
    case PLIST_ARRAY: return convertedArray(node, depth);
    case PLIST_DICT: return convertedDictionary(node, depth);
    case PLIST_STRING: return convertedText(node);
    case PLIST_DATA: return convertedData(node);
    case PLIST_UID:
    case PLIST_UINT:
    case PLIST_BOOLEAN:
    case PLIST_REAL:
    case PLIST_DATE: return convertedNumber(node, type);
    default: return std::nullopt;
    }
}

// Builds libplist's tree; null for what it cannot hold.
struct Builder {
    std::size_t depth;

    [[nodiscard]] Node below(const PropertyList& value) const {
        return depth >= PropertyListGuard::maximumDepth
                   ? Node()
                   : std::visit(Builder{depth + 1}, value.value());
    }

    Node operator()(bool value) const { return Node(plist_new_bool(value ? 1 : 0)); }
    Node operator()(std::int64_t value) const {
        return Node(plist_new_uint(static_cast<std::uint64_t>(value)));
    }
    Node operator()(double value) const { return Node(plist_new_real(value)); }
    Node operator()(const std::string& text) const {
        return Node(isUTF8WithoutNul(text) ? plist_new_string(text.c_str()) : nullptr);
    }
    Node operator()(const Data& bytes) const {
        return Node(plist_new_data(charactersOf(bytes).data(), bytes.size()));
    }
    Node operator()(PropertyList::AbsoluteTime time) const {
        const double whole = std::floor(time.seconds);
        if (!(whole >= std::numeric_limits<std::int32_t>::min() &&
              whole <= std::numeric_limits<std::int32_t>::max())) {
            return nullptr;
        }
        return Node(plist_new_date(static_cast<std::int32_t>(whole),
                                   static_cast<std::int32_t>((time.seconds - whole) * 1e6)));
    }
    Node operator()(PropertyList::UID uid) const { return Node(plist_new_uid(uid.index)); }
    Node operator()(const PropertyList::Array& array) const {
        Node node(plist_new_array());
        for (const PropertyList& element : array) {
            Node item = below(element);
            if (!item) {
                return nullptr;
            }
            plist_array_append_item(node.get(), item.release());
        }
        return node;
    }
    Node operator()(const PropertyList::Dictionary& dictionary) const {
        Node node(plist_new_dict());
        for (const auto& [key, value] : dictionary) {
            Node item = below(value);
            if (!item || !isUTF8WithoutNul(key)) {
                return nullptr;
            }
            plist_dict_set_item(node.get(), key.c_str(), item.release());
        }
        return node;
    }
};

} // namespace

PropertyList::PropertyList(const PropertyList& other)
    : m_value(copyOf(other.m_value)) {}

PropertyList& PropertyList::operator=(const PropertyList& other) {
    return *this = PropertyList(other);
}

std::optional<PropertyList> PropertyList::parse(DataView bytes) {
    const bool isBinary = PropertyListGuard::isBinary(bytes);
    const bool isSafe =
        isBinary ? PropertyListGuard::isSafeBinary(bytes) : PropertyListGuard::isSafeXML(bytes);
    if (bytes.empty() || !isSafe) {
        return std::nullopt;
    }
    // The form is not left to the library to find out: later versions know more than were checked.
    const auto read = isBinary ? plist_from_bin : plist_from_xml;
    plist_t root = nullptr;
    read(charactersOf(bytes).data(), static_cast<std::uint32_t>(bytes.size()), &root);
    const Node owner(root);
    return root == nullptr ? std::nullopt : converted(root, 1);
}

Data PropertyList::serialized(Format format) const {
    const Node root = std::visit(Builder{1}, m_value);
    if (!root) {
        return {};
    }
    char* bytes = nullptr;
    std::uint32_t size = 0;
    if (format == Format::binary) {
        plist_to_bin(root.get(), &bytes, &size);
    } else {
        plist_to_xml(root.get(), &bytes, &size);
    }
    const Memory<char> owner(bytes);
    const DataView view = bytes == nullptr ? DataView() : bytesOf({bytes, size});
    return {view.begin(), view.end()};
}

const PropertyList* PropertyList::valueForKey(std::string_view key) const {
    const Dictionary* const all = dictionary();
    if (all == nullptr) {
        return nullptr;
    }
    const auto found = all->find(key);
    return found == all->end() ? nullptr : &found->second;
}

} // namespace platform
