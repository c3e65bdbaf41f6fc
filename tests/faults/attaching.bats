#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Calls of the system fail in the disk-image tool. As root, with loop devices.

load faults
load ../cli/images

@test "whatever fails, an image is attached or not, and the next call leaves nothing behind" {
    needs_loop_devices
    unshare --mount --propagation private true 2>/dev/null ||
        skip "mounts cannot be kept from others here"
    mkdir tree
    printf 'three words here\n' >tree/f
    truncate -s 4M disk
    mkfs.ext4 -q -L Disk -d tree disk
    "$MAKE_UDIF" disk disk.dmg zlib
    # Who looks through all file systems would keep some of them busy.
    inject attaching unshare --mount --propagation private
}
