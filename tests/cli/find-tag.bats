#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# The search for tags over the whole computer, as examples/find_tag drives it.

load helpers

setup() {
    pin_environment
    make_box
    FIND_TAG=$(realpath "${FIND_TAG:?must name the example to be tested}")
    tag="tag-$$-$RANDOM$RANDOM"
    make_file f
    setfattr -n user.xdg.tags -v "other,$tag" f 2>/dev/null || skip "no extended attributes here"
}

find_tag() {
    capture "$FIND_TAG" "$@"
}

@test "files, folders and hidden items are found, in order" {
    mkdir -p d/.hidden
    make_file d/.hidden/g
    "$QM" tags "--add=$tag" d d/.hidden d/.hidden/g >/dev/null
    find_tag "$tag"
    printf '%s\n' "$box/d" "$box/d/.hidden" "$box/d/.hidden/g" "$box/f" | stdout_is
    succeeds
}

@test "tags of a Mac are found, and names are compared exactly" {
    make_file g
    "$QM" tags "--set=$tag,x" g >/dev/null
    make_file h
    "$QM" tags "--add=$tag,with a comma" h >/dev/null
    find_tag "$tag,with a comma"
    stdout_is <<<"$box/h"
    find_tag "${tag^^}"
    stdout_is_empty
}

@test "folders that may not be read are passed over" {
    mkdir closed
    make_file closed/g
    "$QM" tags "--add=$tag" closed/g >/dev/null
    chmod 000 closed
    local -a mantle=()
    [ "$(id -u)" != 0 ] || find_mantle
    capture "${mantle[@]}" "$FIND_TAG" "$tag"
    chmod 755 closed
    stdout_is <<<"$box/f"
    succeeds
}

@test "what is mounted twice is found once, and other mounts are searched" {
    [ "$(id -u)" = 0 ] && unshare -m true 2>/dev/null || skip "mounting needs root"
    mkdir d twice disk
    make_file d/g
    "$QM" tags "--add=$tag" d/g >/dev/null
    capture unshare -m sh -c 'mount --bind d twice && mount -t tmpfs none disk &&
        touch disk/h && { setfattr -n user.xdg.tags -v "$2" disk/h || exit 77; } &&
        exec "$1" "$2"' sh "$FIND_TAG" "$tag"
    [ "$status" != 77 ] || skip "this kernel keeps no user attributes on tmpfs"
    printf '%s\n' "$box/d/g" "$box/disk/h" "$box/f" | stdout_is
}

@test "an empty tag finds nothing, and no tag is an error" {
    find_tag ""
    stdout_is_empty
    succeeds
    find_tag
    stdout_is_empty
    stderr_is <<<"Usage: find_tag TAG"
    status_is 10
}
