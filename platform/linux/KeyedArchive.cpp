// SPDX-License-Identifier: Apache-2.0
#include "platform/KeyedArchive.h"

#include "platform/PropertyList.h"
#include "platform/linux/Utf8.h"

#include <cstdint>
#include <utility>

namespace platform {
namespace {

using Dictionary = PropertyList::Dictionary;
using Array = PropertyList::Array;
using UID = PropertyList::UID;

constexpr const char* archiverName = "NSKeyedArchiver";
constexpr std::int64_t archiveVersion = 100000;

// A list of objects always begins with the one that stands for nil.
constexpr const char* nullObject = "$null";

PropertyList textOrData(const std::string& text) {
    if (isUTF8WithoutNul(text)) {
        return text;
    }
    const DataView bytes = bytesOf(text);
    return Data(bytes.begin(), bytes.end());
}

std::optional<std::string> textOf(const PropertyList& value) {
    if (const std::string* text = value.string()) {
        return *text;
    }
    if (const Data* data = value.data()) {
        return std::string(charactersOf(*data));
    }
    return std::nullopt;
}

UID append(Array& objects, PropertyList object) {
    objects.push_back(std::move(object));
    return UID{objects.size() - 1};
}

// The object that `value` refers to; null when it refers to none.
const PropertyList* referredObject(const PropertyList* value, const Array& objects) {
    const UID* const uid = value == nullptr ? nullptr : value->uid();
    return uid == nullptr || uid->index >= objects.size()
               ? nullptr
               : &objects[static_cast<std::size_t>(uid->index)];
}

bool isOfClass(const PropertyList& object, const Array& objects, std::string_view className) {
    const PropertyList* const description = referredObject(object.valueForKey("$class"), objects);
    const PropertyList* const name =
        description == nullptr ? nullptr : description->valueForKey("$classname");
    return name != nullptr && name->string() != nullptr && *name->string() == className;
}

} // namespace

void KeyedArchiver::encodeString(std::string_view key, std::string text) {
    m_fields.insert_or_assign(std::string(key), std::move(text));
}

Data KeyedArchiver::encodedData() const {
    Array objects{nullObject, Dictionary()};
    const UID root{1};
    Dictionary fields;
    for (const auto& [key, text] : m_fields) {
        fields.emplace(key, append(objects, textOrData(text)));
    }
    fields.emplace("$class", append(objects, Dictionary{{"$classname", m_className},
                                                        {"$classes", Array{m_className}}}));
    objects[root.index] = std::move(fields);
    return PropertyList(Dictionary{{"$archiver", archiverName},
                                   {"$version", archiveVersion},
                                   {"$top", Dictionary{{"root", root}}},
                                   {"$objects", std::move(objects)}})
        .serialized(PropertyList::Format::binary);
}

std::optional<KeyedUnarchiver> KeyedUnarchiver::forReadingFromData(DataView archive,
                                                                   std::string_view className) {
    const auto list = PropertyList::parse(archive);
    const PropertyList* const all = list ? list->valueForKey("$objects") : nullptr;
    const PropertyList* const top = list ? list->valueForKey("$top") : nullptr;
    if (all == nullptr || all->array() == nullptr || top == nullptr) {
        return std::nullopt;
    }
    const Array& objects = *all->array();
    const PropertyList* const root = referredObject(top->valueForKey("root"), objects);
    if (root == nullptr || root->dictionary() == nullptr || !isOfClass(*root, objects, className)) {
        return std::nullopt;
    }
    KeyedUnarchiver result;
    for (const auto& [key, value] : *root->dictionary()) {
        const PropertyList* const object = referredObject(&value, objects);
        if (auto text = textOf(object == nullptr ? value : *object)) {
            result.m_fields.emplace(key, *std::move(text));
        }
    }
    return result;
}

std::optional<std::string> KeyedUnarchiver::decodeString(std::string_view key) const {
    const auto found = m_fields.find(key);
    return found == m_fields.end() ? std::nullopt : std::optional(found->second);
}

} // namespace platform
