// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/SpareMount.h"

#include <fcntl.h>

#include <sys/mount.h>

namespace platform::hdiutil {

std::optional<SpareMount> SpareMount::of(const std::string& mountPoint) {
    Descriptor mount(::open_tree(AT_FDCWD, mountPoint.c_str(),
                                 OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC | AT_SYMLINK_NOFOLLOW));
    return mount.number() < 0 ? std::nullopt : std::optional(SpareMount(std::move(mount)));
}

bool SpareMount::moveTo(const std::string& mountPoint) const {
    return ::move_mount(m_descriptor.number(), "", AT_FDCWD, mountPoint.c_str(),
                        MOVE_MOUNT_F_EMPTY_PATH) == 0;
}

} // namespace platform::hdiutil
