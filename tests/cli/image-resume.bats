#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Expanding a disk that was interrupted: the next call goes on where the last one stopped. As root,
# with loop devices.

load helpers
load images

# make_disk [LABEL]: a file system, fs.img, with the files of tree. The first test that asks for one
# makes it for all. The disk begins with bytes that belong to no file system and are not zeros, so
# they are expanded like others; a test that changes them sees whether they are expanded again.
make_disk() {
    made=$BATS_FILE_TMPDIR/${1:-Resumed}
    if [ ! -d "$made" ]; then
        make_tree
        head -c 24M /dev/urandom >tree/large
        truncate -s 36M fs.img
        mkfs.ext4 -q -L "${1:-Resumed}" -d tree fs.img
        printf 'the image' | overwrite_start fs.img
        mkdir "$made"
        mv tree fs.img "$made"
    fi
    cp -r "$made/tree" "$made/fs.img" .
}

overwrite_start() {
    dd of="$1" conv=notrunc status=none
}

# settle IMAGE: nobody has written to it for a while.
settle() {
    find "$1" -exec touch -d '1 hour ago' {} +
}

# udif_image KIND: x.dmg, of the disk that was made last.
udif_image() {
    [ -e "$made/$1.dmg" ] || "$MAKE_UDIF" "$made/fs.img" "$made/$1.dmg" "$1"
    cp "$made/$1.dmg" x.dmg
    settle x.dmg
}

sparse_image() {
    make_sparse_image fs.img x.sparseimage
    settle x.sparseimage
}

bundle() {
    make_bundle fs.img x.sparsebundle
    settle x.sparsebundle
}

# attach_with SETTING... IMAGE: attaches under what tests/images/kill_midway.cpp knows.
attach_with() {
    capture env ASAN_OPTIONS="${ASAN_OPTIONS:-}:verify_asan_link_order=0" \
        LD_PRELOAD="$KILL_MIDWAY" "${@:1:$#-1}" "$HDIUTIL" attach "${@: -1}" -plist -noverify
}

# attach_killed WHEN IMAGE
attach_killed() {
    attach_with ONE_CORE=1 "$@"
    status_is 137
}

disks() {
    find "$XDG_CACHE_HOME/quillmere/disks" -name '*.disk'
}

# So many bytes are noted as written.
noted() {
    python3 -c 'import sys; print(int.from_bytes(open(sys.argv[1], "rb").read(8), "big"))' \
        "$(disks).progress"
}

noted_is_between() {
    local count
    count=$(noted)
    [ "$1" -le "$count" ] && [ "$count" -le "$2" ] || complain "$count bytes are noted"
}

# goes_on_with IMAGE: attaching takes up the one disk that is there, and shows the right files.
goes_on_with() {
    local disk
    disk=$(disks)
    printf 'the other' | overwrite_start "$disk"
    attach "$1"
    succeeds
    [ "$(disks)" = "$disk" ]
    [ ! -e "$disk.progress" ]
    [ "$(head -c 9 "$disk")" = "the other" ] || complain "what was written was written again"
    cmp -i 9 fs.img "$disk"
    diff -r -x lost+found tree "$(mount_point)"
    detaches "$(mount_point)"
}

resumes() {
    goes_on_with "$1"
    nothing_left
}

@test "an expansion that was killed is taken up, whatever the form of the image" {
    needs_loop_devices
    make_disk
    sparse_image
    bundle
    local image
    for image in zlib raw x.sparseimage x.sparsebundle; do
        if [ ! -e "$image" ]; then
            udif_image "$image"
            image=x.dmg
        fi
        attach_killed KILL_AFTER_BYTES=20000000 "$image"
        noted_is_between $((8 << 20)) 36000000
        resumes "$image"
    done
}

@test "an expansion that is killed again and again comes to its end" {
    needs_loop_devices
    make_disk
    udif_image zlib
    local before=0
    for _ in 1 2; do
        attach_killed KILL_AFTER_BYTES=10000000 x.dmg
        [ "$(noted)" -gt "$before" ] || complain "nothing new is noted"
        before=$(noted)
    done
    resumes x.dmg
}

@test "an expansion on all cores that is killed anywhere" {
    needs_loop_devices
    make_disk
    udif_image zlib
    local count
    for count in 3 9 11 10 14; do
        attach_with KILL_AFTER_BYTES="${count}000000" x.dmg
    done
    attach x.dmg
    succeeds
    cmp fs.img "$(disks)"
    detaches "$(mount_point)"
    nothing_left
}

@test "a kill after the expanding costs none of it, and the volume is taken back" {
    needs_loop_devices
    make_disk
    udif_image zlib
    attach_killed KILL_AT_UNLINK=.progress x.dmg
    [ "$(noted)" = "$(stat -c %s fs.img)" ]
    findmnt -rno TARGET | grep -qF "$BATS_TEST_TMPDIR/" || complain "was killed too early"
    resumes x.dmg
}

@test "what was killed and is in use meanwhile is not attached a second time" {
    needs_loop_devices
    make_disk
    udif_image zlib
    attach_killed KILL_AT_UNLINK=.progress x.dmg
    exec 5<"$(findmnt -rno TARGET | grep -F "$BATS_TEST_TMPDIR/")/large"
    attach x.dmg
    fails_because attach "Device or resource busy"
    exec 5<&-
    resumes x.dmg
}

@test "volumes of what was killed are taken back at once, whatever is attached next" {
    needs_loop_devices
    make_disk
    udif_image zlib
    attach_killed KILL_AT_UNLINK=.progress x.dmg
    : >none.img
    attach none.img
    fails_because attach "image not recognized"
    ! findmnt -rno TARGET | grep -F "$BATS_TEST_TMPDIR/" || complain "still mounted"
    [ -z "$(find "$XDG_RUNTIME_DIR/quillmere/volumes" -mindepth 1)" ]
    [ -z "$(find "$XDG_RUNTIME_DIR/quillmere/attached" -name '*.plist')" ]
    resumes x.dmg
}

@test "an expansion that filled the disk is taken up when there is room" {
    needs_loop_devices
    make_disk
    udif_image zlib
    mkdir -p "$XDG_CACHE_HOME"
    mount -t tmpfs -o size=12m,mode=700 none "$XDG_CACHE_HOME"
    attach_with ONE_CORE=1 x.dmg
    fails_because attach "No space left on device"
    noted_is_between $((10 << 20)) 36000000
    # Only what counts is kept.
    [ "$(stat -c %s "$(disks)")" = "$(noted)" ]
    attach x.dmg
    fails_because attach "No space left on device"
    mount -o remount,size=64m "$XDG_CACHE_HOME"
    goes_on_with x.dmg
    [ -z "$(find "$XDG_CACHE_HOME/quillmere/disks" -mindepth 1)" ]
    umount "$XDG_CACHE_HOME"
    nothing_left
}

@test "what is wanted now takes the room of what was interrupted" {
    needs_loop_devices
    make_disk
    udif_image zlib
    cp x.dmg first.dmg
    settle first.dmg
    mkdir -p "$XDG_CACHE_HOME"
    mount -t tmpfs -o size=34m,mode=700 none "$XDG_CACHE_HOME"
    attach_killed KILL_AFTER_BYTES=20000000 first.dmg
    attach x.dmg
    succeeds
    cmp fs.img "$(disks)"
    detaches "$(mount_point)"
    [ -z "$(find "$XDG_CACHE_HOME/quillmere/disks" -mindepth 1)" ]
    umount "$XDG_CACHE_HOME"
}

@test "only for room is what was interrupted thrown away" {
    needs_loop_devices
    make_disk
    udif_image zlib
    cp x.dmg first.dmg
    settle first.dmg
    attach_killed KILL_AFTER_BYTES=20000000 first.dmg
    local first
    first=$(disks)
    capture prlimit --fsize=9000000 env -- "$HDIUTIL" attach x.dmg -plist -noverify
    fails_because attach "File too large"
    [ -e "$first" ] || complain "the disk of another image is gone"
    attach first.dmg
    succeeds
    [ "$(disks)" = "$first" ]
    detaches "$(mount_point)"
}

@test "an image that was written to in between is expanded from its start" {
    needs_loop_devices
    local way old
    for way in over anew; do
        make_disk Before
        udif_image raw
        attach_killed KILL_AFTER_BYTES=20000000 x.dmg
        noted_is_between $((8 << 20)) 36000000
        old=$(disks)
        rm -r tree fs.img
        make_disk After
        if [ "$way" = over ]; then
            # The same file, of the same size and time.
            cp -p x.dmg old.dmg
            "$MAKE_UDIF" fs.img new.dmg raw
            python3 -c 'open("x.dmg", "r+b").write(open("new.dmg", "rb").read())'
            truncate -r new.dmg x.dmg
            touch -r old.dmg x.dmg
        else
            rm x.dmg
            udif_image raw
        fi
        attach x.dmg
        succeeds
        [ ! -e "$old" ]
        cmp fs.img "$(disks)"
        [ "$(basename "$(mount_point)")" = After ]
        diff -r -x lost+found tree "$(mount_point)"
        detaches "$(mount_point)"
        nothing_left
        rm -r tree fs.img
    done
}

@test "a bundle with another band is expanded from its start" {
    needs_loop_devices
    make_disk
    bundle
    attach_killed KILL_AFTER_BYTES=20000000 x.sparsebundle
    printf 'new bytes' | overwrite_start x.sparsebundle/bands/0
    printf 'new bytes' | overwrite_start fs.img
    settle x.sparsebundle
    attach x.sparsebundle
    succeeds
    cmp fs.img "$(disks)"
    detaches "$(mount_point)"
    nothing_left
}

@test "what nobody takes up is cleared away by the next call, and nothing else" {
    needs_loop_devices
    make_disk
    udif_image zlib
    truncate -s 8M other.img
    mkfs.ext4 -q other.img
    attach_killed KILL_AFTER_BYTES=20000000 x.dmg
    attach other.img
    detaches "$(mount_point)"
    noted_is_between $((8 << 20)) 36000000
    touch -d '25 hours ago' "$(disks).progress"
    attach other.img
    detaches "$(mount_point)"
    nothing_left

    attach_killed KILL_AFTER_BYTES=20000000 x.dmg
    mv x.dmg away.dmg
    attach other.img
    detaches "$(mount_point)"
    nothing_left
    mv away.dmg x.dmg

    attach_killed KILL_AFTER_BYTES=20000000 x.dmg
    head -c 300 /dev/urandom >"$(disks).progress"
    attach other.img
    detaches "$(mount_point)"
    nothing_left
}

@test "disks of a run of the system before this one are cleared away by the next call" {
    needs_loop_devices
    truncate -s 8M fs.img
    mkfs.ext4 -q -L Forgotten fs.img
    "$MAKE_UDIF" fs.img x.dmg zlib
    settle x.dmg
    cp x.dmg known.dmg
    attach x.dmg
    local forgotten new
    forgotten=$(disks)
    umount "$(mount_point)"
    # What a restart takes away.
    rm -r "$XDG_RUNTIME_DIR/quillmere"
    attach known.dmg
    new=${forgotten%/*}/0.disk
    : >"$new"
    attach x.dmg
    [ -e "$forgotten" ]
    find "${forgotten%/*}" -name '*.disk' ! -path "$new" -exec touch -d '10 years ago' {} +
    detaches "$(mount_point)"
    attach x.dmg
    succeeds
    [ ! -e "$forgotten" ] && [ -e "$new" ]
    [ "$(disks | wc -l)" = 3 ]
    detaches "$(mount_point)"
    rm "$new"
    attach known.dmg
    cmp fs.img "$(disks)"
    detaches "$(mount_point)"
    nothing_left
}

@test "nothing is kept of an image that somebody may still be writing" {
    needs_loop_devices
    make_disk
    udif_image zlib
    touch -d '1 hour' x.dmg
    attach_killed KILL_AFTER_BYTES=20000000 x.dmg
    [ "$(noted)" = 0 ]
    attach x.dmg
    succeeds
    cmp fs.img "$(disks)"
    detaches "$(mount_point)"
    nothing_left
}

@test "damage that is found behind what was written leaves nothing" {
    needs_loop_devices
    make_disk
    udif_image zlib
    python3 - <<'END'
import os
size = os.path.getsize("x.dmg")
with open("x.dmg", "r+b") as file:
    for offset in range(size * 9 // 10, size * 9 // 10 + 900000, 9973):
        file.seek(offset)
        file.write(b"damage")
END
    settle x.dmg
    attach_killed KILL_AFTER_BYTES=12000000 x.dmg
    noted_is_between $((8 << 20)) 36000000
    attach x.dmg
    stdout_is_empty
    grep -qE 'the chunk at sector [0-9]+ is damaged' "$seen/err"
    status_is 1
    nothing_left
}
