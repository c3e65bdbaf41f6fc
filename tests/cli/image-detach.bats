#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# The tool in the hands of an ordinary user, to whom the system does not tell beforehand what is in
# use.

load helpers
load images

# The words that run a command as an ordinary user, who may work in the box.
find_user() {
    user=()
    is_root || return 0
    user=("$(command -v setpriv)" --reuid=65534 --regid=65534 --clear-groups)
    local folder=$BATS_TEST_TMPDIR
    while [ "$folder" != "${BATS_RUN_TMPDIR%/*}" ]; do
        chmod o+x "$folder"
        folder=${folder%/*}
    done
    chown -R 65534:65534 "$BATS_TEST_TMPDIR"
    "${user[@]}" test -x "$HDIUTIL" -a -x "$box" || skip "an ordinary user does not get here"
}

# three_volumes IMAGE: partitions "V0", "V1" and "V2", each with a file that has that name in it.
three_volumes() {
    local number
    truncate -s 16M "$1"
    printf 'label: gpt\nstart=2048, size=4096\nsize=4096\nsize=4096\n' | sfdisk -q "$1"
    mkdir content
    for number in 0 1 2; do
        echo "V$number" >content/name
        mkfs.ext4 -q -L "V$number" -d content -E offset=$(((2048 + 4096 * number) * 512)) "$1" 2M
    done
}

as_user() {
    capture "${user[@]}" "$HDIUTIL" "$@"
}

# Runs a command while a file is open.
while_open() {
    coproc holder { "${user[@]}" sh -c 'exec 5<"$1" && echo open && read -r _' - "$1" 3>&-; }
    local answer process=$holder_PID
    read -r answer <&"${holder[0]}"
    [ "$answer" = open ]
    "${@:2}"
    echo >&"${holder[1]}"
    wait "$process"
}

# Each volume is mounted, once, and shows what is its own.
all_there() {
    local name
    for name in V0 V1 V2; do
        [ "$(grep -cF " $volumes/$name " /proc/self/mounts)" -eq 1 ]
        [ "$("${user[@]}" cat "$volumes/$name/name")" = "$name" ]
    done
}

@test "volumes that were unmounted before a busy one are mounted again" {
    command -v fuse2fs >/dev/null && command -v fusermount >/dev/null && [ -c /dev/fuse ] ||
        skip "no FUSE here"
    three_volumes disk.img
    find_user
    as_user attach disk.img -plist -noverify
    succeeds
    local volumes="$XDG_RUNTIME_DIR/quillmere/volumes" busy
    all_there
    for busy in V0 V1 V2; do
        while_open "$volumes/$busy/name" as_user detach "$volumes/V1"
        fails_because detach "Device or resource busy"
        all_there
    done
    as_user detach "$volumes/V1"
    stdout_is_empty
    succeeds
    nothing_left
}

@test "without a folder for what is attached, that is the reason" {
    truncate -s 8M fs.img
    find_user
    unset XDG_RUNTIME_DIR
    as_user attach fs.img -plist -noverify
    fails_because attach "No such file or directory"
    as_user detach /nowhere
    fails_because detach "No such file or directory"
}

@test "root has a folder for what is attached all the same" {
    needs_root
    unshare --mount --propagation private true 2>/dev/null ||
        skip "mounts cannot be kept from others here"
    capture env -u XDG_RUNTIME_DIR unshare --mount --propagation private \
        sh -c 'mount -t tmpfs none /run; "$0" detach "$1"; ls /run/quillmere' "$HDIUTIL" "$box"
    echo attached | stdout_is
    said detach "not a mount point" | stderr_is
}
