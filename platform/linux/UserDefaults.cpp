// SPDX-License-Identifier: Apache-2.0
#include "platform/UserDefaults.h"

#include "platform/Application.h"
#include "platform/FileManager.h"
#include "platform/PropertyListReadings.h"
#include "platform/linux/FileIdentity.h"
#include "platform/linux/PropertyListGuard.h"
#include "platform/linux/PropertyListTexts.h"
#include "platform/linux/XdgFolders.h"

#include <atomic>
#include <cstddef>
#include <utility>
#include <variant>

namespace platform {
namespace {

std::atomic<UserDefaults*>& replacement() {
    static std::atomic<UserDefaults*> other = nullptr;
    return other;
}

using Dictionary = PropertyList::Dictionary;

/// Nothing where the bytes are no property list of a dictionary.
Dictionary dictionaryIn(DataView contents) {
    const auto list = PropertyList::parse(contents);
    const Dictionary* const dictionary = list ? list->dictionary() : nullptr;
    return dictionary == nullptr ? Dictionary() : *dictionary;
}

/// The value at `key`, which keeps all of `values` alive; null when there is none.
std::shared_ptr<const PropertyList> valueIn(const std::shared_ptr<const Dictionary>& values,
                                            std::string_view key) {
    const auto found = values->find(key);
    return found == values->end() ? nullptr
                                  : std::shared_ptr<const PropertyList>(values, &found->second);
}

template <class Kind>
std::optional<Kind> valueOfKind(const std::shared_ptr<const PropertyList>& value) {
    const auto* const wanted = value ? std::get_if<Kind>(&value->value()) : nullptr;
    return wanted == nullptr ? std::nullopt : std::optional<Kind>(*wanted);
}

} // namespace

/// One state of the file; without an identity when it could not be read, so that it is tried anew.
struct UserDefaults::File {
    std::optional<FileIdentity> identity;
    Dictionary values;
};

UserDefaults::File UserDefaults::read(const std::optional<FileIdentity>& identity) const {
    if (!identity || identity->size > static_cast<std::int64_t>(PropertyListGuard::maximumSize)) {
        return {identity, {}};
    }
    const auto contents = FileManager::contentsAtPath(m_path, PropertyListGuard::maximumSize);
    return contents ? File{identity, dictionaryIn(*contents)} : File();
}

UserDefaults& UserDefaults::standard() {
    // Never destroyed: threads may still read while the process ends.
    static UserDefaults& user = *new UserDefaults(pathOfStandard());
    UserDefaults* const other = replacement().load();
    return other == nullptr ? user : *other;
}

std::string UserDefaults::pathOfStandard() {
    auto path = XdgFolders::configurationFolder();
    if (!path) {
        return {};
    }
    return path->append("/").append(applicationIdentifier()).append(".plist");
}

void UserDefaults::setStandard(UserDefaults* other) {
    replacement() = other;
}

UserDefaults::UserDefaults(std::string path)
    : m_path(std::move(path))
    , m_file(std::make_shared<const File>())
    , m_registered(std::make_shared<const Dictionary>()) {}

void UserDefaults::registerDefaults(Dictionary defaults) {
    const std::lock_guard lock(m_mutex);
    // What is registered already comes second: merging keeps the values that are there.
    defaults.insert(m_registered->begin(), m_registered->end());
    m_registered = std::make_shared<const Dictionary>(std::move(defaults));
}

/// The file is asked for its state first and read then, without the mutex. When it changes in
/// between, or when another thread was later and yet stores first, what is stored does not fit the
/// file, and the next read notices.
UserDefaults::Values UserDefaults::valuesInFile() const {
    const auto identity = identityOfFile(m_path);
    std::shared_ptr<const File> file;
    {
        const std::lock_guard lock(m_mutex);
        file = m_file;
    }
    if (file->identity != identity) {
        file = std::make_shared<const File>(read(identity));
        const std::lock_guard lock(m_mutex);
        m_file = file;
    }
    return {file, &file->values};
}

std::shared_ptr<const PropertyList> UserDefaults::find(std::string_view key) const {
    if (auto set = valueIn(valuesInFile(), key)) {
        return set;
    }
    const std::lock_guard lock(m_mutex);
    return valueIn(m_registered, key);
}

std::optional<PropertyList> UserDefaults::objectForKey(std::string_view key) const {
    const auto value = find(key);
    return value ? std::optional(*value) : std::nullopt;
}

bool UserDefaults::boolForKey(std::string_view key) const {
    const auto value = find(key);
    return value && boolValue(*value);
}

std::int64_t UserDefaults::integerForKey(std::string_view key) const {
    const auto value = find(key);
    return value ? integerValue(*value) : 0;
}

double UserDefaults::doubleForKey(std::string_view key) const {
    const auto value = find(key);
    return value ? doubleValue(*value) : 0;
}

std::optional<std::string> UserDefaults::stringForKey(std::string_view key) const {
    const auto value = find(key);
    return value ? stringValue(*value) : std::nullopt;
}

std::optional<Dictionary> UserDefaults::dictionaryForKey(std::string_view key) const {
    return valueOfKind<Dictionary>(find(key));
}

std::optional<Data> UserDefaults::dataForKey(std::string_view key) const {
    return valueOfKind<Data>(find(key));
}

std::shared_ptr<const PropertyList::Array> UserDefaults::arrayForKey(std::string_view key) const {
    auto value = find(key);
    const PropertyList::Array* const array = value ? value->array() : nullptr;
    return array == nullptr ? nullptr
                            : std::shared_ptr<const PropertyList::Array>(std::move(value), array);
}

std::optional<std::vector<std::string>>
UserDefaults::stringArrayForKey(std::string_view key) const {
    return textsIn(find(key));
}

} // namespace platform
