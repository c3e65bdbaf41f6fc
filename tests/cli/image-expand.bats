#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Images whose disks are expanded before they are mounted. As root, with loop devices.

load helpers
load images

@test "UDIF images of every kind are expanded, and the disk is gone when they are detached" {
    needs_loop_devices
    make_tree
    truncate -s 8M fs.img
    mkfs.ext4 -q -L "In a dmg" -d tree fs.img
    local kind
    for kind in raw zlib bzip2 lzma adc; do
        "$MAKE_UDIF" fs.img "$kind.dmg" "$kind" 3
        attach "$kind.dmg"
        succeeds
        cmp -n 8388608 fs.img "$XDG_CACHE_HOME"/quillmere/disks/*.disk
        detaches "$(mount_point)"
        mounts_as "$kind.dmg" tree
    done
}

@test "a UDIF image with partitions" {
    needs_loop_devices
    make_tree
    truncate -s 32M disk.img
    printf 'label: gpt\nsize=20480\nsize=20480\n' | sfdisk -q disk.img
    mkfs.ext4 -q -L Parted -d tree -E offset=$((2048 * 512)) disk.img 10M
    "$MAKE_UDIF" disk.img x.dmg zlib
    mounts_as x.dmg tree
}

@test "a sparse bundle is expanded" {
    needs_loop_devices
    make_tree
    truncate -s 8M fs.img
    mkfs.ext4 -q -L Bundle -d tree fs.img
    make_bundle fs.img x.sparsebundle
    mounts_as x.sparsebundle tree
}

@test "of a sparse bundle only what was ever written is expanded, however large its disk" {
    needs_loop_devices
    make_tree
    truncate -s 8M fs.img
    mkfs.ext4 -q -L Grown -d tree fs.img
    make_bundle fs.img x.sparsebundle
    # A byte in the last of eight million bands, and in between nothing.
    python3 - x.sparsebundle/Info.plist <<'END'
import plistlib, sys
path = sys.argv[1]
description = plistlib.load(open(path, "rb"))
plistlib.dump(description | {"size": 8 << 40}, open(path, "wb"))
END
    printf x >x.sparsebundle/bands/7fffff
    attach x.sparsebundle
    succeeds
    local disk
    disk=$(echo "$XDG_CACHE_HOME"/quillmere/disks/*.disk)
    [ "$(stat -c %s "$disk")" -eq $((8 << 40)) ]
    [ "$(tail -c 1048576 "$disk" | head -c 1)" = x ]
    detaches "$(mount_point)"
    mounts_as x.sparsebundle tree
}

@test "a sparse bundle that cannot be expanded leaves nothing behind" {
    make_tree
    head -c 2M /dev/urandom >tree/more
    truncate -s 8M fs.img
    mkfs.ext4 -q -d tree fs.img
    make_bundle fs.img x.sparsebundle
    capture prlimit --fsize=4000000 env -- "$HDIUTIL" attach x.sparsebundle -plist -noverify
    fails_because attach "File too large"
    nothing_left
    rm -f x.sparsebundle/bands/3
    mkdir x.sparsebundle/bands/3
    attach x.sparsebundle
    fails_because attach "the image is damaged"
    nothing_left
}

@test "a sparse bundle that there is no room for is refused" {
    needs_root
    make_tree
    head -c 2M /dev/urandom >tree/more
    truncate -s 8M fs.img
    mkfs.ext4 -q -d tree fs.img
    make_bundle fs.img x.sparsebundle
    mkdir -p "$XDG_CACHE_HOME"
    mount -t tmpfs -o size=1m,mode=700 none "$XDG_CACHE_HOME"
    attach x.sparsebundle
    fails_because attach "No space left on device"
    [ -z "$(find "$XDG_CACHE_HOME/quillmere/disks" -mindepth 1)" ]
    umount "$XDG_CACHE_HOME"
    nothing_left
}

@test "damaged UDIF images are refused and leave nothing behind" {
    make_tree
    truncate -s 8M fs.img
    mkfs.ext4 -q -d tree fs.img
    "$MAKE_UDIF" fs.img x.dmg zlib
    python3 - <<'END'
data = bytearray(open("x.dmg", "rb").read())
for offset in range(3000, 200000, 997):
    data[offset] ^= 0x55
open("x.dmg", "wb").write(data)
END
    attach x.dmg
    stdout_is_empty
    [ "$(wc -l <"$seen/err")" -eq 1 ]
    status_is 1
    nothing_left
}
