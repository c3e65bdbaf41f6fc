// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/PDFAnswer.h"

#include "platform/linux/Cbor.h"
#include "platform/linux/Utf8.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <limits>
#include <string_view>
#include <utility>
#include <variant>

namespace platform::worker {
namespace {

using Properties = PDFDocumentProperties;
using Version = Properties::Version;

// An object number has ten digits in a file, but no program counts pages beyond this.
constexpr std::int64_t largest = std::numeric_limits<std::int32_t>::max();

// What may pass.
bool isAllowed(const std::string& text) {
    return isUTF8WithoutNul(text);
}
bool isAllowed(std::int64_t number) {
    return number >= 0 && number <= largest;
}

// Each answers the value that stands for a property, nullopt for one that is left out.
std::optional<Json> jsonOf(const std::optional<std::string>& text) {
    return text && isAllowed(*text) ? std::optional<Json>(*text) : std::nullopt;
}
std::optional<Json> jsonOf(const std::optional<bool>& value) {
    return value ? std::optional<Json>(*value) : std::nullopt;
}
std::optional<Json> jsonOf(bool value) {
    return Json(value);
}
std::optional<Json> jsonOf(std::uint64_t count) {
    return Json(count <= static_cast<std::uint64_t>(largest) ? static_cast<std::int64_t>(count)
                                                             : std::int64_t{0});
}
std::optional<Json> jsonOf(const std::optional<Version>& version) {
    if (!version || version->major < 0 || version->minor < 0) {
        return std::nullopt;
    }
    Json::Array numbers;
    numbers.emplace_back(std::int64_t{version->major});
    numbers.emplace_back(std::int64_t{version->minor});
    return Json(std::move(numbers));
}

// A number that may pass; nullopt for anything else.
std::optional<std::int64_t> numberIn(const Json& json) {
    const auto* number = std::get_if<std::int64_t>(&json.value());
    return number != nullptr && isAllowed(*number) ? std::optional(*number) : std::nullopt;
}

// Each takes over a value; false for one that is not allowed.
bool take(const Json& json, std::optional<std::string>& text) {
    const auto* content = std::get_if<std::string>(&json.value());
    if (content == nullptr || !isAllowed(*content)) {
        return false;
    }
    text = *content;
    return true;
}
template <class Value>
bool takeTruth(const Json& json, Value& value) {
    const auto* content = std::get_if<bool>(&json.value());
    if (content == nullptr) {
        return false;
    }
    value = *content;
    return true;
}
bool take(const Json& json, bool& value) {
    return takeTruth(json, value);
}
bool take(const Json& json, std::optional<bool>& value) {
    return takeTruth(json, value);
}
bool take(const Json& json, std::uint64_t& count) {
    const auto number = numberIn(json);
    count = static_cast<std::uint64_t>(number.value_or(0));
    return number.has_value();
}
bool take(const Json& json, std::optional<Version>& version) {
    const auto* array = std::get_if<Json::Array>(&json.value());
    if (array == nullptr || array->size() != 2) {
        return false;
    }
    const auto major = numberIn(array->front());
    const auto minor = numberIn(array->back());
    if (!major || !minor) {
        return false;
    }
    version = {static_cast<std::int32_t>(*major), static_cast<std::int32_t>(*minor)};
    return true;
}

struct Member {
    std::string_view name;
    std::variant<std::uint64_t Properties::*, bool Properties::*, std::optional<bool> Properties::*,
                 std::optional<Version> Properties::*, std::optional<std::string> Properties::*>
        place;
    bool isNeeded = false;
};

constexpr std::array<Member, 7> members{{
    {"pageCount", &Properties::pageCount, true},
    {"version", &Properties::version},
    {"title", &Properties::title},
    {"author", &Properties::author},
    {"creator", &Properties::creator},
    {"isEncrypted", &Properties::isEncrypted, true},
    {"hasText", &Properties::hasText},
}};

using Found = std::bitset<members.size()>;

bool readMember(const Json::Object::value_type& member, Properties& properties, Found& found) {
    const auto* const known = std::ranges::find(members, member.first, &Member::name);
    if (known == members.end()) {
        return false;
    }
    const auto number = static_cast<std::size_t>(known - members.begin());
    const bool isRepeated = found.test(number);
    found.set(number);
    return !isRepeated &&
           std::visit([&](auto place) { return take(member.second, properties.*place); },
                      known->place);
}

bool hasAllThatIsNeeded(const Found& found) {
    for (std::size_t number = 0; number < members.size(); ++number) {
        if (members.at(number).isNeeded && !found.test(number)) {
            return false;
        }
    }
    return true;
}

} // namespace

Data encodedPDFProperties(const PDFDocumentProperties& properties) {
    Json::Object object;
    for (const Member& member : members) {
        auto value =
            std::visit([&](auto place) { return jsonOf(properties.*place); }, member.place);
        if (value) {
            object.emplace_back(member.name, *std::move(value));
        }
    }
    // Two levels, so it never fails.
    return Cbor::encoded(Json(std::move(object))).value_or(Data());
}

std::optional<PDFDocumentProperties> decodedPDFProperties(DataView bytes) {
    const auto json = Cbor::decoded(bytes);
    const auto* object = json ? std::get_if<Json::Object>(&json->value()) : nullptr;
    if (object == nullptr) {
        return std::nullopt;
    }
    Properties properties;
    Found found;
    const bool isRead = std::ranges::all_of(
        *object, [&](const auto& member) { return readMember(member, properties, found); });
    return isRead && hasAllThatIsNeeded(found) ? std::optional(properties) : std::nullopt;
}

} // namespace platform::worker
