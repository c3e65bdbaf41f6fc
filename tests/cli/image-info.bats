#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# What the disk-image tool tells of images.

load helpers
load images

info() {
    hdiutil imageinfo "$1" -plist
    succeeds
}

@test "an ISO image" {
    make_tree
    genisoimage -quiet -J -R -V "My Disc" -o disc.iso tree
    info disc.iso
    plist_is "document['Format']" UDTO
    plist_is "document['Format Description']" "DVD/CD-R master"
    plist_is "document['Total Bytes']" "$(stat -c %s disc.iso)"
    plist_is "document['Size Information']['Total Bytes']" "$(stat -c %s disc.iso)"
    plist_is "document['Size Information']['Sector Count']" "$(($(stat -c %s disc.iso) / 512))"
    plist_is "document['Encrypted'], document['Properties']['Encrypted']" "(False, False)"
    plist_is "document['partitions']['partition-scheme']" none
    plist_is "document['partitions']['partitions'][0]['partition-filesystems']" \
        "{'cd9660': 'My Disc'}"
    plist_is "document['Backing Store Information']['Name']" disc.iso
}

@test "an image of a bare file system" {
    truncate -s 8M fs.img
    mkfs.ext4 -q -L Label fs.img
    info fs.img
    plist_is "document['Format'], document['Class Name']" "('UDRW', 'CRawDiskImage')"
    plist_is "document['Total Bytes'], document['Compressed Bytes']" "(8388608, 8388608)"
    plist_is "document['partitions']['partitions'][0]['partition-filesystems']" "{'ext4': 'Label'}"
    plist_is "document['Properties']['Partitioned']" False
}

@test "a raw image with a GUID partition map" {
    truncate -s 64M disk.img
    sgdisk -n 1:2048:+16M -t 1:EF00 -c 1:"EFI system" -n 2:0:0 -t 2:8300 -c 2:Data disk.img >/dev/null
    info disk.img
    plist_is "document['partitions']['partition-scheme']" GUID
    plist_is "[(p['partition-start'], p['partition-length']) for p in
        document['partitions']['partitions'] if 'partition-number' in p]" \
        "$(sfdisk -J disk.img | python3 -c '
import json, sys
print([(p["start"], p["size"]) for p in json.load(sys.stdin)["partitiontable"]["partitions"]])')"
    plist_is "[p['partition-name'] for p in document['partitions']['partitions']
        if 'partition-number' in p]" "['EFI system', 'Data']"
    plist_is "document['Properties']['Partitioned']" True
}

@test "a raw image with a DOS partition map" {
    truncate -s 64M disk.img
    printf 'label: dos\nsize=16M, type=c\nsize=16M, type=83\n' | sfdisk -q disk.img
    info disk.img
    plist_is "document['partitions']['partition-scheme']" fdisk
    plist_is "[p['partition-hint'] for p in document['partitions']['partitions']
        if 'partition-number' in p]" "['DOS_FAT_32', 'Linux']"
}

@test "a sparse bundle" {
    truncate -s 8M fs.img
    mkfs.ext4 -q -L Sparse fs.img
    make_bundle fs.img x.sparsebundle
    info x.sparsebundle
    plist_is "document['Format'], document['Total Bytes']" "('UDSB', 8388608)"
    plist_is "document['partitions']['partitions'][0]['partition-filesystems']" "{'ext4': 'Sparse'}"
}

@test "a sparse image" {
    truncate -s 8M fs.img
    mkfs.ext4 -q -L Sparse fs.img
    make_sparse_image fs.img x.sparseimage
    info x.sparseimage
    plist_is "document['Format'], document['Format Description']" "('UDSP', 'sparse disk image')"
    plist_is "document['Total Bytes'], document['Compressed Bytes']" "(8388608, 8388608)"
    plist_is "document['partitions']['partitions'][0]['partition-filesystems']" "{'ext4': 'Sparse'}"
}

@test "damaged sparse images and bundles" {
    truncate -s 1M disk.img
    make_sparse_image disk.img x.sparseimage
    truncate -s 2000 x.sparseimage
    hdiutil imageinfo x.sparseimage -plist
    fails_because imageinfo "the header of the sparse image is cut off"
    make_bundle disk.img x.sparsebundle
    sed -i 's|<integer>1048576</integer>|<integer>0</integer>|' x.sparsebundle/Info.plist
    hdiutil imageinfo x.sparsebundle -plist
    fails_because imageinfo "the description of the sparse bundle is damaged"
}

@test "a raw image with a partition map of older Macs" {
    make_tree
    genisoimage -quiet -hfs -part -V MyDisc -o disc.img tree 2>/dev/null
    info disc.img
    plist_is "document['partitions']['partition-scheme']" Apple
}

@test "encrypted images are recognised and not opened" {
    { printf encrcdsa; head -c 5000 /dev/urandom; } >new.dmg
    { head -c 5000 /dev/urandom; printf cdsaencr; } >old.dmg
    local image
    for image in new.dmg old.dmg; do
        info "$image"
        plist_is "document['Encrypted'], document['Properties']['Encrypted']" "(True, True)"
        plist_is "document['Total Bytes']" "$(stat -c %s "$image")"
        hdiutil attach "$image" -plist -noverify
        fails_because attach "the image is encrypted"
    done
    nothing_left
}

@test "an image of an empty disk" {
    : >disk.img
    "$MAKE_UDIF" disk.img x.dmg zlib
    info x.dmg
    plist_is "document['Total Bytes'], document['Size Information']['Compressed Ratio']" "(0, 1.0)"
}

@test "what cannot be written is an error" {
    truncate -s 1M disk.img
    "$MAKE_UDIF" disk.img x.dmg zlib
    capture bash -c 'exec "$0" imageinfo x.dmg -plist >/dev/full' "$HDIUTIL"
    fails_because imageinfo "the output could not be written"
}

@test "what is no image" {
    head -c 100000 /dev/urandom >random.dmg
    : >empty.img
    hdiutil imageinfo random.dmg -plist
    fails_because imageinfo "image not recognized"
    hdiutil imageinfo empty.img -plist
    fails_because imageinfo "image not recognized"
    hdiutil imageinfo missing.dmg -plist
    fails_because imageinfo "No such file or directory"
    mkdir folder.dmg
    hdiutil imageinfo folder.dmg -plist
    status_is 1
    mkfifo fifo.dmg
    hdiutil imageinfo fifo.dmg -plist
    status_is 1
    hdiutil imageinfo /dev/null -plist
    status_is 1
}

@test "what there is no memory for" {
    [ -z "${SANITIZERS:-}" ] || skip "sanitizers need memory of their own"
    python3 - <<'END'
import struct
list_size = 16 << 20
trailer = bytearray(512)
struct.pack_into(">4sLL", trailer, 0, b"koly", 4, 512)
struct.pack_into(">QQ", trailer, 216, 0, list_size)
open("large.dmg", "wb").write(bytes(list_size) + trailer)
END
    capture prlimit --data=$((8 << 20)) "$HDIUTIL" imageinfo large.dmg -plist
    fails_because imageinfo "std::bad_alloc"
}

@test "other words than the three invocations" {
    local words
    touch x.img
    for words in "" "attach" "attach x.img" "attach x.img -plist" "attach x.img -noverify -plist" \
        "imageinfo x.img" "imageinfo x.img -plist -x" "detach" "detach x y" "help" "-plist"; do
        # shellcheck disable=SC2086 # the words of one command
        hdiutil $words
        stdout_is_empty
        [ "$(head -1 "$seen/err")" = "Usage: hdiutil attach IMAGE -plist -noverify" ]
        status_is 1
    done
}
