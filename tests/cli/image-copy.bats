#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Images that no file system of the machine can mount, so that their files are copied.

load helpers
load images

@test "what can only be copied is copied" {
    command -v 7z >/dev/null || skip "no 7z here"
    make_tree
    truncate -s 16M fat.img
    mkfs.vfat -n FATDISK fat.img >/dev/null
    mcopy -si fat.img tree ::/ || skip "no mtools here"
    attach fat.img
    succeeds
    diff -r tree "$(mount_point)/tree"
    detaches "$(mount_point)"
    nothing_left
}

# vfat_image NAME CONTENTS: with one file of that name in it.
vfat_image() {
    truncate -s 4M made.img
    mkfs.vfat made.img >/dev/null
    echo x >"$2"
    mcopy -i made.img "$2" :: || skip "no mtools here"
    mv made.img "$1"
}

# attach_by_copy IMAGE PATH: without the system's own drivers and the rights of root.
attach_by_copy() {
    local -a mantle=()
    if is_root; then
        mantle=("$(command -v setpriv)" --bounding-set=-sys_admin,-dac_override)
    fi
    capture env PATH="$2" "${mantle[@]}" "$HDIUTIL" attach "$1" -plist -noverify
}

@test "a copy is that of the image alone, whatever its name" {
    command -v 7z >/dev/null || skip "no 7z here"
    vfat_image 'a?.img' one
    vfat_image ab.img other
    attach_by_copy 'a?.img' "$PATH"
    succeeds
    local point
    point=$(mount_point)
    [ "$(ls "$point")" = one ]
    attach_by_copy 'a?.img' "$PATH"
    succeeds
    [ "$(mount_point)" = "$point" ] || complain "it was copied a second time"
    detaches "$point"
    nothing_left
}

@test "a copy that was not finished is removed" {
    vfat_image fat.img one
    mkdir bin
    local end
    for end in 'exit 2' 'kill -KILL $PPID'; do
        cat >bin/7z <<END
#!/bin/sh
PATH=$PATH
for word; do
    case \$word in -o*) cd "\${word#-o}" ;; esac
done
mkdir folder
: >folder/file
chmod 500 folder
touch "$box/was here"
$end
END
        chmod +x bin/7z
        attach_by_copy fat.img "$box/bin"
        rm "was here"
        attach_by_copy fat.img /nowhere
        fails_because attach "no mountable file systems"
        nothing_left
    done
}
