#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Real images, really mounted by the disk-image tool. As root, with loop devices or FUSE.

load helpers
load images

# two_volumes IMAGE: partitions "A" and "B".
two_volumes() {
    truncate -s 64M "$1"
    printf 'label: gpt\nstart=2048, size=20480\nsize=20480\n' | sfdisk -q "$1"
    mkfs.ext4 -q -L A -E offset=$((2048 * 512)) "$1" 10M
    mkfs.ext4 -q -L B -E offset=$(((2048 + 20480) * 512)) "$1" 10M
}

@test "an ext4 image is mounted by the kernel, for writing" {
    needs_loop_devices
    make_tree
    truncate -s 16M fs.img
    mkfs.ext4 -q -L "My Volume" -d tree fs.img
    attach fs.img
    succeeds
    plist_is "[sorted(e) for e in document['system-entities']]" \
        "[['content-hint', 'dev-entry', 'mount-point', 'potentially-mountable', 'volume-kind']]"
    plist_is "document['system-entities'][0]['volume-kind']" ext4
    plist_is "document['system-entities'][0]['dev-entry'].startswith('/dev/loop')" True
    local point
    point=$(mount_point)
    [ "${point##*/}" = "My Volume" ]
    diff -r -x lost+found tree "$point"
    echo new >"$point/written"
    findmnt -no OPTIONS "$point" | grep -q nosuid
    findmnt -no OPTIONS "$point" | grep -q nodev
    detaches "$point"
    nothing_left
    [ "$(debugfs -R "cat written" fs.img 2>/dev/null)" = new ]
}

@test "an image that may not be written is mounted for reading" {
    needs_loop_devices
    make_tree
    truncate -s 16M fs.img
    mkfs.ext4 -q -d tree fs.img
    mkdir ro
    mount --bind . ro
    mount -o remount,bind,ro ro
    attach "$box/ro/fs.img"
    succeeds
    findmnt -no OPTIONS "$(mount_point)" | grep -qw ro
    detaches "$(mount_point)"
    umount ro
    nothing_left
}

@test "squashfs, xfs and btrfs images" {
    needs_loop_devices
    make_tree
    if kernel_has squashfs; then
        mksquashfs tree s.img -quiet -no-progress >/dev/null
        mounts_as s.img tree
    fi
    local type
    for type in xfs btrfs; do
        kernel_has "$type" || continue
        rm -f x.img
        truncate -s 320M x.img
        "mkfs.$type" -q x.img
        mkdir -p by-hand
        mount -o loop x.img by-hand
        cp -r tree/. by-hand
        umount by-hand
        mounts_as x.img tree
    done
}

@test "ISO images: plain, Joliet, Rock Ridge, hybrid" {
    needs_root
    make_tree
    genisoimage -quiet -J -R -V JOLIET -o joliet.iso tree
    genisoimage -quiet -R -V ROCK -o rock.iso tree
    xorriso -as mkisofs -quiet -R -V HYBRID -partition_offset 16 -o hybrid.iso tree 2>/dev/null
    local image
    for image in joliet rock hybrid; do
        mounts_as "$image.iso" tree
    done
    "$MAKE_UDIF" hybrid.iso hybrid.dmg zlib
    mounts_as hybrid.dmg tree
    genisoimage -quiet -V PLAIN -o plain.iso tree 2>/dev/null
    attach plain.iso
    succeeds
    [ -e "$(mount_point)" ]
    detaches "$(mount_point)"
    nothing_left
}

@test "every partition with a file system is mounted" {
    needs_loop_devices
    make_tree
    truncate -s 64M disk.img
    printf 'label: gpt\nstart=2048, size=40960\nsize=20480\nsize=20480\n' | sfdisk -q disk.img
    mkfs.ext4 -q -L One -d tree -E offset=$((2048 * 512)) disk.img 20M
    mkfs.ext4 -q -L One -E offset=$(((2048 + 40960) * 512)) disk.img 10M
    attach disk.img
    succeeds
    plist_is "len(document['system-entities'])" 3
    plist_is "[e['potentially-mountable'] for e in document['system-entities']]" \
        "[True, True, False]"
    [ "$(basename "$(mount_point 0)")" = "One" ]
    [ "$(basename "$(mount_point 1)")" = "One 1" ]
    diff -r -x lost+found tree "$(mount_point 0)"
    detaches "$(mount_point 1)"
    nothing_left
}

@test "attaching twice gives the same mount point" {
    needs_loop_devices
    truncate -s 8M fs.img
    mkfs.ext4 -q fs.img
    ln -s fs.img link.img
    attach fs.img
    cp "$seen/out" first
    attach link.img
    succeeds
    cmp first "$seen/out"
    detaches "$(mount_point)"
    nothing_left
}

@test "a volume is detached by its path as it was told, and by the same without links" {
    needs_loop_devices
    make_tree
    truncate -s 8M fs.img
    mkfs.ext4 -q -L ALBUM -d tree fs.img
    mv "$XDG_RUNTIME_DIR" "$BATS_TEST_TMPDIR/elsewhere"
    ln -s elsewhere "$XDG_RUNTIME_DIR"
    attach fs.img
    succeeds
    detaches "$(mount_point)"
    attach fs.img
    succeeds
    detaches "$(realpath "$(mount_point)")"
}

@test "several at the same time do not disturb one another" {
    needs_loop_devices
    local number
    for number in $(seq 6); do
        truncate -s 8M "$number.img"
        mkfs.ext4 -q -L Same "$number.img"
        "$HDIUTIL" attach "$number.img" -plist -noverify >"$number.out" 3>&- &
    done
    wait
    [ "$(find "$XDG_RUNTIME_DIR/quillmere/volumes" -mindepth 1 -maxdepth 1 | wc -l)" -eq 6 ]
    for number in $(seq 6); do
        cp "$number.out" "$seen/out"
        detaches "$(mount_point)"
    done
    nothing_left
}

@test "a busy volume is refused and stays whole" {
    needs_loop_devices
    two_volumes disk.img
    attach disk.img
    local first second
    first=$(mount_point 0)
    second=$(mount_point 1)
    exec 5<"$first"
    hdiutil detach "$second"
    fails_because detach "Device or resource busy"
    mountpoint -q "$first" && mountpoint -q "$second"
    exec 5<&-
    detaches "$first"
    nothing_left
}

@test "what was killed in the middle is cleared away by the next call" {
    needs_loop_devices
    local number
    truncate -s 8M fs.img other.img
    mkfs.ext4 -q -L Killed fs.img
    mkfs.ext4 -q -L Other other.img
    for number in $(seq 40); do
        "$HDIUTIL" attach fs.img -plist -noverify >/dev/null 2>&1 3>&- &
        sleep "0.0$(printf %02d "$number")"
        kill -KILL $! 2>/dev/null || true
        wait $! 2>/dev/null || true
    done
    attach other.img
    succeeds
    [ "$(basename "$(mount_point)")" = Other ]
    detaches "$(mount_point)"
    attach fs.img
    [ "$(basename "$(mount_point)")" = Killed ]
    detaches "$(mount_point)"
    nothing_left
}

@test "a volume that somebody else has unmounted is forgotten" {
    needs_loop_devices
    truncate -s 8M fs.img
    mkfs.ext4 -q -L Gone fs.img
    attach fs.img
    umount "$(mount_point)"
    attach fs.img
    succeeds
    mountpoint -q "$(mount_point)"
    detaches "$(mount_point)"
    nothing_left
}

@test "who has unmounted one volume of an image keeps the others" {
    needs_loop_devices
    two_volumes disk.img
    truncate -s 8M other.img
    mkfs.ext4 -q -L Other other.img
    attach disk.img
    local first second
    first=$(mount_point 0)
    second=$(mount_point 1)
    umount "$first"
    attach other.img
    detaches "$(mount_point)"
    mountpoint -q "$second"
    attach disk.img
    succeeds
    mountpoint -q "$first" && mountpoint -q "$second"
    detaches "$first"
    nothing_left
}

@test "an image is not attached again while some of it is in use" {
    needs_loop_devices
    two_volumes disk.img
    "$MAKE_UDIF" disk.img disk.dmg zlib
    attach disk.dmg
    local second
    second=$(mount_point 1)
    umount "$(mount_point 0)"
    exec 5<"$second"
    attach disk.dmg
    fails_because attach "Device or resource busy"
    mountpoint -q "$second"
    exec 5<&-
    attach disk.dmg
    succeeds
    [ "$(mount_point 1)" = "$second" ]
    detaches "$second"
    nothing_left
}

@test "an image that somebody else has mounted for writing is left alone" {
    needs_loop_devices
    truncate -s 8M fs.img
    mkfs.ext4 -q fs.img
    mkdir by-hand
    mount -o loop fs.img by-hand
    attach fs.img
    fails_because attach "Device or resource busy"
    umount by-hand
    mount -o loop,ro fs.img by-hand
    attach fs.img
    succeeds
    detaches "$(mount_point)"
    umount by-hand
    truncate -s 16M disk.img
    printf 'label: gpt\nstart=2048, size=20480\n' | sfdisk -q disk.img
    mkfs.ext4 -q -E offset=$((2048 * 512)) disk.img 10M
    mount -o loop,offset=$((2048 * 512)) disk.img by-hand
    attach disk.img
    fails_because attach "Device or resource busy"
    umount by-hand
    nothing_left
}

@test "what attaching did not make" {
    needs_loop_devices
    truncate -s 8M fs.img
    mkfs.ext4 -q fs.img
    mkdir by-hand
    mount -o loop fs.img by-hand
    detaches "$box/by-hand"
    ! mountpoint -q by-hand || complain "still mounted"
    hdiutil detach "$box/by-hand"
    fails_because detach "not a mount point"
    hdiutil detach "$box/nowhere"
    fails_because detach "No such file or directory"
    mount -t tmpfs none by-hand
    hdiutil detach "$box/by-hand"
    fails_because detach "not on a disk image or a removable disk"
    umount by-hand
}

@test "labels that are no names of folders" {
    needs_loop_devices
    local label
    for label in "../.." "." "a/b" $'\xff\xfe' ""; do
        rm -f fs.img
        truncate -s 8M fs.img
        mkfs.ext4 -q -L "$label" fs.img
        attach fs.img
        succeeds
        [ "$(dirname "$(mount_point)")" = "$XDG_RUNTIME_DIR/quillmere/volumes" ]
        detaches "$(mount_point)"
    done
    nothing_left
}

@test "a file system that nothing here can mount leaves nothing behind" {
    truncate -s 8M fs.img
    mkfs.ext4 -q fs.img
    local -a mantle=()
    if is_root; then
        mantle=("$(command -v setpriv)" --bounding-set=-sys_admin)
    fi
    capture env PATH=/nowhere "${mantle[@]}" "$HDIUTIL" attach fs.img -plist -noverify
    fails_because attach "no mountable file systems"
    nothing_left
}

@test "the service mounts, announces and unmounts a real image" {
    needs_loop_devices
    make_tree
    truncate -s 8M fs.img
    mkfs.ext4 -q -L "End to end" -d tree fs.img
    "$MAKE_UDIF" fs.img "an image.dmg" zlib
    capture "$MOUNT_IMAGE" "$box/an image.dmg"
    succeeds
    local point="$XDG_RUNTIME_DIR/quillmere/volumes/End to end"
    printf '%s\n' "QMDiskImageDidMountNotification mountPoint=file://${point// /%20}/\
 sourcePath=$box/an image.dmg" "$point" | stdout_is
    diff -r -x lost+found tree "$point"
    capture "$UNMOUNT_VOLUME" "$point"
    stdout_is <<<"QMDiskImageDidUnmountNotification mountPath=$point"
    succeeds
    nothing_left
}

@test "the service tells why it did not mount" {
    head -c 100000 /dev/urandom >bad.dmg
    capture "$MOUNT_IMAGE" "$box/bad.dmg"
    stdout_is_empty
    printf '%s\n\n' "QMDiskImage -4: diskImage.error.mountFailed: $(said attach "image not recognized")" |
        stderr_is
    status_is 1
    capture "$MOUNT_IMAGE" "$box/none.dmg"
    stderr_is <<<"QMDiskImage -1: diskImage.error.notFound"
    status_is 1
    capture "$UNMOUNT_VOLUME" /
    printf '%s\n\n' "QMDiskImage -4: Failed to unmount: $(said detach \
        "not on a disk image or a removable disk")" | stderr_is
    status_is 1
}
