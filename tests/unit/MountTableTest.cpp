// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/MountTable.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::MountTable::localMounts;
using platform::MountTable::Mount;
using platform::MountTable::parse;

std::vector<std::string> pointsOf(const std::vector<Mount>& mounts) {
    std::vector<std::string> points;
    for (const Mount& mount : mounts) {
        points.push_back(mount.mountPoint);
    }
    return points;
}

Mount mount(const char* device, const char* root, const char* point, const char* type = "ext4") {
    return {1, device, root, point, type, device};
}

TEST(MountTable, ReadsTheKernelsLines) {
    EXPECT_EQ(parse("22 1 8:1 / / rw,noatime shared:1 - ext4 /dev/sda1 rw\n"
                    "36 35 98:0 /mnt1 /mnt2 rw master:1 propagate_from:2 - ext3 /dev/root rw\n"
                    "40 22 0:30 / /run rw - tmpfs tmpfs rw"),
              (std::vector<Mount>{{22, "8:1", "/", "/", "ext4", "/dev/sda1"},
                                  {36, "98:0", "/mnt1", "/mnt2", "ext3", "/dev/root"},
                                  {40, "0:30", "/", "/run", "tmpfs", "tmpfs"}}));
}

TEST(MountTable, UndoesEscapes) {
    const auto mounts = parse("1 1 8:1 /a\\011b /My\\040Disk\\134\\012x rw - vfat /dev/sdb rw\n");
    ASSERT_EQ(mounts.size(), 1U);
    EXPECT_EQ(mounts.front().root, "/a\tb");
    EXPECT_EQ(mounts.front().mountPoint, "/My Disk\\\nx");
}

TEST(MountTable, LeavesOutLinesOfAnotherForm) {
    EXPECT_TRUE(parse("").empty());
    EXPECT_TRUE(parse("\n\n").empty());
    EXPECT_TRUE(parse("x 1 8:1 / / rw - ext4 /dev/sda1 rw\n").empty());
    EXPECT_TRUE(parse("1 1 8:1 / relative rw - ext4 /dev/sda1 rw\n").empty());
    EXPECT_TRUE(parse("1 1 8:1 / / rw ext4 /dev/sda1 rw\n").empty());
    EXPECT_TRUE(parse("1 1 8:1 / /a\\000b rw - ext4 x rw\n").empty());
    EXPECT_TRUE(parse("99999999999999999999999 1 8:1 / / rw - ext4 x rw\n").empty());
    EXPECT_EQ(parse("1 1 8:1 / /a\\04 rw - ext4 x rw\n").front().mountPoint, "/a\\04");
}

TEST(MountTable, PseudoAndNetworkFileSystemsAreNotLocal) {
    for (const char* type : {"proc", "sysfs", "cgroup2", "nfs4", "cifs", "fuse.sshfs", "fuse",
                             "autofs", "devtmpfs", "9p"}) {
        EXPECT_TRUE(localMounts({mount("0:1", "/", "/x", type)}).empty()) << type;
    }
    for (const char* type :
         {"ext4", "btrfs", "xfs", "tmpfs", "overlay", "vfat", "fuseblk", "iso9660", "zfs"}) {
        EXPECT_EQ(localMounts({mount("0:1", "/", "/x", type)}).size(), 1U) << type;
    }
}

TEST(MountTable, EachFileSystemIsShownOnce) {
    EXPECT_EQ(pointsOf(localMounts({mount("8:1", "/home", "/bind"), mount("8:1", "/", "/"),
                                    mount("8:1", "/", "/again"), mount("8:2", "/", "/data")})),
              (std::vector<std::string>{"/", "/data"}));
}

TEST(MountTable, PartsOfAFileSystemCountUnlessOneHoldsTheOther) {
    EXPECT_EQ(pointsOf(localMounts({mount("8:1", "/a/b", "/1"), mount("8:1", "/a", "/2"),
                                    mount("8:1", "/ab", "/3"), mount("8:2", "/a", "/4")})),
              (std::vector<std::string>{"/2", "/4", "/3"}));
}

} // namespace
