// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/TagSearch.h"

#include "platform/FileTags.h"
#include "platform/linux/Descriptor.h"

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <cstring>
#include <exception>
#include <iterator>
#include <mutex>
#include <new>
#include <string_view>
#include <thread>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <sys/stat.h>

namespace platform {
namespace {

constexpr std::size_t readSize = std::size_t{64} * 1024;

// Most of the time is spent waiting for the file system, so more threads than cores help.
std::size_t threadCount() {
    return std::clamp<std::size_t>(std::size_t{2} * std::thread::hardware_concurrency(), 8, 16);
}

bool carriesTag(const std::string& path, const std::string& tag) {
    const auto names = FileTags::read(path);
    return names && std::ranges::find(*names, tag) != names->end();
}

class Folder {
public:
    explicit Folder(const std::string& path)
        : m_folder(
              ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK)) {}

    // Calls `use(name, isFolder)` for every entry; for none when the folder cannot be read.
    template <class Use>
    void forEachEntry(std::vector<std::byte>& buffer, const Use& use) const {
        while (m_folder.number() >= 0) {
            const ssize_t size = ::getdents64(m_folder.number(), buffer.data(), buffer.size());
            if (size <= 0) {
                return;
            }
            useEntries(buffer.data(), static_cast<std::size_t>(size), use);
        }
    }

private:
    template <class Use>
    void useEntries(const std::byte* entries, std::size_t size, const Use& use) const {
        while (size > offsetof(dirent64, d_name)) {
            dirent64 head{};
            std::memcpy(&head, entries, offsetof(dirent64, d_name));
            const std::size_t length = head.d_reclen;
            if (length <= offsetof(dirent64, d_name) || length > size) {
                return;
            }
            // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes as characters
            const auto* text = reinterpret_cast<const char*>(entries + offsetof(dirent64, d_name));
            const std::string_view name(text, ::strnlen(text, length - offsetof(dirent64, d_name)));
            if (name != "." && name != "..") {
                use(name, isFolder(name, head.d_type));
            }
            entries += length;
            size -= length;
        }
    }

    [[nodiscard]] bool isFolder(std::string_view name, unsigned char type) const {
        if (type != DT_UNKNOWN) {
            return type == DT_DIR;
        }
        struct stat status {};
        return ::fstatat(m_folder.number(), std::string(name).c_str(), &status,
                         AT_SYMLINK_NOFOLLOW) == 0 &&
               S_ISDIR(status.st_mode);
    }

    Descriptor m_folder;
};

// One search: folders that wait, and threads that take the last of them, so that few ever wait.
class Search {
public:
    Search(const SearchScope& scope, const std::string& tag)
        : m_scope(scope)
        , m_tag(tag)
        , m_waiting(scope.startingPoints) {
        for (const std::string& path : scope.startingPoints) {
            if (carriesTag(path, tag)) {
                m_found.push_back(path);
            }
        }
    }

    std::vector<std::string> run() {
        std::vector<std::thread> threads;
        try {
            while (threads.size() + 1 < threadCount()) {
                threads.emplace_back([this] { serve(); });
            }
        } catch (const std::exception&) {
            // Fewer threads take longer, no more.
        }
        serve();
        for (std::thread& thread : threads) {
            thread.join();
        }
        if (m_lacksMemory) {
            throw std::bad_alloc();
        }
        std::ranges::sort(m_found);
        return std::move(m_found);
    }

private:
    void serve() noexcept {
        std::vector<std::byte> buffer;
        std::unique_lock lock(m_mutex);
        while (true) {
            m_changed.wait(lock, [this] { return !m_waiting.empty() || isOver(); });
            if (m_waiting.empty() || m_lacksMemory) {
                return;
            }
            ++m_busy;
            try {
                takeFolder(lock, buffer);
            } catch (const std::bad_alloc&) {
                if (!lock.owns_lock()) {
                    lock.lock();
                }
                m_lacksMemory = true;
            }
            --m_busy;
            if (!m_waiting.empty() || isOver()) {
                m_changed.notify_all();
            }
        }
    }

    // Whichever thread runs out of memory ends the search for all.
    [[nodiscard]] bool isOver() const { return m_busy == 0 || m_lacksMemory; }

    // `lock` is held on entry and on return, but not while the folder is looked at.
    void takeFolder(std::unique_lock<std::mutex>& lock, std::vector<std::byte>& buffer) {
        const std::string folder = std::move(m_waiting.back());
        m_waiting.pop_back();
        lock.unlock();
        buffer.resize(readSize);
        Findings findings = look(folder, buffer);
        lock.lock();
        std::ranges::move(findings.tagged, std::back_inserter(m_found));
        std::ranges::move(findings.folders, std::back_inserter(m_waiting));
    }

    struct Findings {
        std::vector<std::string> folders;
        std::vector<std::string> tagged;
    };

    Findings look(const std::string& folder, std::vector<std::byte>& buffer) const {
        Findings findings;
        std::string path = folder == "/" ? folder : folder + "/";
        const std::size_t stem = path.size();
        Folder(folder).forEachEntry(buffer, [&](std::string_view name, bool isFolder) {
            path.resize(stem);
            path.append(name);
            const bool isExcluded = isFolder && m_scope.excludedPaths.contains(path);
            if (!isExcluded && carriesTag(path, m_tag)) {
                findings.tagged.push_back(path);
            }
            if (isFolder && !isExcluded) {
                findings.folders.push_back(path);
            }
        });
        return findings;
    }

    const SearchScope& m_scope;
    const std::string& m_tag;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_waiting;
    std::vector<std::string> m_found;
    std::size_t m_busy = 0;
    bool m_lacksMemory = false;
};

// Whether the path leads to this mount, and not to another one on top of it.
bool isReachable(const MountTable::Mount& mount) {
    struct statx status {};
    const int result = ::statx(AT_FDCWD, mount.mountPoint.c_str(),
                               AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, STATX_MNT_ID, &status);
    return result == 0 && ((status.stx_mask & STATX_MNT_ID) == 0 || status.stx_mnt_id == mount.id);
}

} // namespace

SearchScope scopeOf(const std::vector<MountTable::Mount>& mounts,
                    std::vector<MountTable::Mount> reachable) {
    SearchScope scope;
    for (const MountTable::Mount& mount : mounts) {
        scope.excludedPaths.insert(mount.mountPoint);
    }
    if (!scope.excludedPaths.contains("/")) {
        // In a changed root that is no mount point, the table does not tell of "/".
        scope.startingPoints.emplace_back("/");
    }
    for (MountTable::Mount& mount : MountTable::localMounts(std::move(reachable))) {
        scope.startingPoints.push_back(std::move(mount.mountPoint));
    }
    return scope;
}

SearchScope localComputerScope() {
    const std::vector<MountTable::Mount> mounts = MountTable::current();
    std::vector<MountTable::Mount> reachable;
    std::ranges::copy_if(mounts, std::back_inserter(reachable), isReachable);
    return scopeOf(mounts, std::move(reachable));
}

std::vector<std::string> itemsWithTag(const SearchScope& scope, const std::string& tag) {
    return Search(scope, tag).run();
}

} // namespace platform
