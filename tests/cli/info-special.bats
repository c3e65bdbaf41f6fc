#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# What is no ordinary file: nothing of it is opened, so nothing blocks.

load helpers

teardown() {
    if [ -n "${memory_folder-}" ]; then
        rm -rf "$memory_folder"
    fi
}

@test "the root folder" {
    qm info /
    [ "$(head -n 1 "$seen/out")" = / ] || complain "another name"
    line_is Path /
    line_is Size 'Zero KB (0 bytes)'
    line_is Owner "$(owner_name /):$(group_name /)"
    line_is Modified "$(date -d "@$(stat -c %Y /)" '+%F %T')"
    succeeds
    qm info --json /
    json_holds 'document["name"] == "/" and document["path"] == "/"'
    json_holds 'document["isDirectory"] is True and document["isHidden"] is False'
    succeeds
}

@test "files of the kernel have no size and perhaps no birth" {
    qm info /proc/self/status
    [ "$(head -n 1 "$seen/out")" = status ] || complain "another name"
    line_is Path /proc/self/status
    line_is Size 'Zero KB (0 bytes)'
    line_is Permissions '-r--r--r-- (444)'
    if [ "$(stat -c %w /proc/version)" = - ]; then
        line_is Created —
    fi
    succeeds
}

@test "an absent creation date is a dash in text and no key in JSON" {
    [ "$(stat -c %w /proc/version)" = - ] || skip "a birth time in /proc"
    qm info /proc/version
    line_is Created —
    qm info --json /proc/version
    json_holds '"created" not in document and list(document)[-1] == "modified"'
    succeeds
}

@test "the links of /proc are described as links" {
    qm info --json /proc/self/exe
    json_holds 'document["isSymlink"] is True and document["permissions"][0] == "l"'
    succeeds
}

@test "a FIFO does not block" {
    mkfifo fifo
    chmod 640 fifo
    qm info fifo
    line_is UTI public.named-pipe
    line_is Size 'Zero KB (0 bytes)'
    line_is Permissions '-rw-r----- (640)'
    succeeds
    qm info -s fifo
    succeeds
    qm info --json fifo
    json_holds 'document["name"] == "fifo" and document["isDirectory"] is False'
    succeeds
}

@test "a socket does not block" {
    # Sockets have short paths, so it is made from within its folder.
    python3 -c 'import socket; socket.socket(socket.AF_UNIX).bind("sock")'
    qm info sock
    line_is UTI public.socket
    line_is Path "$box/sock"
    succeeds
    qm info --json sock
    json_holds 'document["uti"] == "public.socket" and document["size"] == 0'
    succeeds
}

@test "a device" {
    qm info /dev/null
    [ "$(head -n 1 "$seen/out")" = null ] || complain "another name"
    line_is UTI public.character-special
    line_is Owner "$(owner_name /dev/null):$(group_name /dev/null)"
    succeeds
    qm info -s /dev/zero /dev/full
    [ "$(wc -l <"$seen/out")" -eq 2 ] || complain "not two lines"
    succeeds
}

@test "a file system in memory" {
    memory_folder=$(mktemp -d -p /dev/shm 2>/dev/null) || skip "no /dev/shm"
    make_file "$memory_folder/a.txt"
    qm info "$memory_folder/a.txt"
    file_block "$memory_folder/a.txt" | stdout_is
    succeeds
    qm info --json "$memory_folder/a.txt"
    { file_record "$memory_folder/a.txt"; echo; } | stdout_is
    succeeds
}

@test "a mount point is a volume" {
    mountpoint -q /proc || skip "/proc is no mount point"
    qm info /proc
    line_is Kind Volume
    line_is UTI public.volume
}
