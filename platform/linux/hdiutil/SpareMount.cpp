// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/SpareMount.h"

#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include <sys/mount.h>

namespace platform::hdiutil {

std::optional<SpareMount> SpareMount::of(const std::string& mountPoint) {
    const int descriptor = ::open_tree(AT_FDCWD, mountPoint.c_str(),
                                       OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC | AT_SYMLINK_NOFOLLOW);
    return descriptor < 0 ? std::nullopt : std::optional(SpareMount(descriptor));
}

SpareMount::SpareMount(SpareMount&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

SpareMount& SpareMount::operator=(SpareMount&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

SpareMount::~SpareMount() {
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

bool SpareMount::moveTo(const std::string& mountPoint) const {
    return ::move_mount(m_descriptor, "", AT_FDCWD, mountPoint.c_str(), MOVE_MOUNT_F_EMPTY_PATH) ==
           0;
}

} // namespace platform::hdiutil
