// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Accounts.h"

#include "platform/FileStatus.h"

#include <cerrno>
#include <chrono>
#include <mutex>
#include <unordered_map>
#include <vector>

#include <grp.h>
#include <pwd.h>

namespace platform {
namespace {

using Clock = std::chrono::steady_clock;

// Every look-up in the account database opens files or asks a service, and a listing asks for the
// same few accounts over and over.
class NameCache {
public:
    using Lookup = std::optional<std::string> (*)(std::uint32_t);
    explicit NameCache(Lookup lookup)
        : m_lookup(lookup) {}

    std::optional<std::string> name(std::uint32_t number) {
        const auto now = Clock::now();
        const std::lock_guard lock(m_mutex);
        const auto known = m_names.find(number);
        if (known != m_names.end() && now - known->second.read < lifetime) {
            return known->second.name;
        }
        if (m_names.size() >= maximumSize) {
            m_names.clear();
        }
        return m_names.insert_or_assign(number, Entry{m_lookup(number), now}).first->second.name;
    }

private:
    static constexpr std::chrono::seconds lifetime{60};
    static constexpr std::size_t maximumSize = 4096;
    struct Entry {
        std::optional<std::string> name;
        Clock::time_point read;
    };

    Lookup m_lookup;
    std::mutex m_mutex;
    std::unordered_map<std::uint32_t, Entry> m_names;
};

// Calls `query(buffer)`, which fills `record` as getpwuid_r and its kin do, with a buffer that
// grows until the record fits.
template <class Record, class Query>
bool readRecord(const Query& query, std::vector<char>& buffer) {
    constexpr std::size_t maximumSize = std::size_t{1} << 20;
    for (buffer.resize(1024); buffer.size() <= maximumSize; buffer.resize(buffer.size() * 2)) {
        Record* found = nullptr;
        const int error = query(buffer, &found);
        if (error != ERANGE) {
            return error == 0 && found != nullptr;
        }
    }
    return false;
}

template <class Key, class Function>
std::optional<passwd> readUser(Function function, const Key& key, std::vector<char>& buffer) {
    passwd record{};
    const auto query = [&](std::vector<char>& space, passwd** found) {
        return function(key, &record, space.data(), space.size(), found);
    };
    if (!readRecord<passwd>(query, buffer)) {
        return std::nullopt;
    }
    return record;
}

std::optional<std::string> lookUpUser(std::uint32_t userID) {
    std::vector<char> buffer;
    const auto record = readUser(::getpwuid_r, userID, buffer);
    return record ? std::optional<std::string>(record->pw_name) : std::nullopt;
}

std::optional<std::string> lookUpGroup(std::uint32_t groupID) {
    std::vector<char> buffer;
    group record{};
    const auto query = [&](std::vector<char>& space, group** found) {
        return ::getgrgid_r(groupID, &record, space.data(), space.size(), found);
    };
    return readRecord<group>(query, buffer) ? std::optional<std::string>(record.gr_name)
                                            : std::nullopt;
}

} // namespace

// Never destroyed: threads may still ask while the process ends.
std::optional<std::string> userName(std::uint32_t userID) {
    static NameCache& cache = *new NameCache(lookUpUser);
    return cache.name(userID);
}

std::optional<std::string> groupName(std::uint32_t groupID) {
    static NameCache& cache = *new NameCache(lookUpGroup);
    return cache.name(groupID);
}

std::optional<std::string> homeOfUser(std::uint32_t userID) {
    std::vector<char> buffer;
    const auto record = readUser(::getpwuid_r, userID, buffer);
    return record ? std::optional<std::string>(record->pw_dir) : std::nullopt;
}

std::optional<std::string> homeOfUser(const std::string& userName) {
    std::vector<char> buffer;
    const auto record = readUser(::getpwnam_r, userName.c_str(), buffer);
    return record ? std::optional<std::string>(record->pw_dir) : std::nullopt;
}

} // namespace platform
