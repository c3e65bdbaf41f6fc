#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# What the disk-image tool tells of images, compared with what other tools tell of them.

load helpers
load images

# agrees_with IMAGE TOOL...: see image_facts.py.
agrees_with() {
    hdiutil imageinfo "$1" -plist
    succeeds
    differs_not "$@"
}

# The same of what was printed last.
differs_not() {
    python3 "$BATS_TEST_DIRNAME/image_facts.py" "$seen/out" "$@" >&2
}

# same_tree FOLDER IMAGE: what the image shows when it is attached.
same_tree() {
    attach "$2"
    succeeds
    local point
    point=$(mount_point)
    diff -r --no-dereference "$1" "$point"
    detaches "$point"
}

@test "ISO images: plain, Joliet, Rock Ridge, UDF" {
    make_tree
    genisoimage -quiet -V "PLAIN DISC" -o plain.iso tree 2>/dev/null
    genisoimage -quiet -J -V "Joliet" -o joliet.iso tree
    genisoimage -quiet -R -V ROCK -o rock.iso tree
    genisoimage -quiet -R -J -V BOTH -o both.iso tree
    xorriso -as mkisofs -quiet -R -V XORRISO -o xorriso.iso tree 2>/dev/null
    local image
    for image in *.iso; do
        agrees_with "$image" file 7z isoinfo
        plist_is "document['partitions']['partition-scheme']" none
    done
    genisoimage -quiet -udf -V BRIDGE -o udf.img tree 2>/dev/null
    # Which can be read either way. isoinfo knows the older one only.
    agrees_with udf.img file 7z
}

@test "ISO images for machines to start from: of discs, and of hard disks as well" {
    make_tree
    head -c 2048 /dev/urandom >tree/boot.img
    genisoimage -quiet -R -V BOOT -b boot.img -no-emul-boot -o boot.iso tree
    agrees_with boot.iso file 7z isoinfo
    xorriso -as mkisofs -quiet -R -V HYBRID -partition_offset 16 -o hybrid.iso tree 2>/dev/null
    agrees_with hybrid.iso file 7z isoinfo sfdisk
    truncate -s 4M esp.img
    mkfs.vfat -n ESP esp.img >/dev/null
    xorriso -as mkisofs -quiet -R -V APPENDED -append_partition 2 0xef esp.img \
        -o appended.iso tree 2>/dev/null
    # The volume ends before the partition.
    agrees_with appended.iso file 7z:longer isoinfo:longer sfdisk
    plist_is "[p['partition-filesystems'] for p in document['partitions']['partitions']][-1]" \
        "{'msdos': 'ESP'}"
    xorriso -as mkisofs -quiet -R -V GPT -append_partition 2 0xef esp.img -appended_part_as_gpt \
        -o gpt.iso tree 2>/dev/null
    agrees_with gpt.iso file 7z:longer isoinfo:longer sfdisk
    plist_is "document['partitions']['partition-scheme']" GUID
}

@test "bare file systems" {
    make_tree
    local type
    for type in ext2 ext3 ext4; do
        truncate -s 8M "$type.img"
        "mkfs.$type" -q -L "A $type" "$type.img"
        agrees_with "$type.img" file 7z
    done
    for type in xfs btrfs; do
        truncate -s 320M "$type.img"
        "mkfs.$type" -q -L "A $type" "$type.img"
        agrees_with "$type.img" file
    done
    mksquashfs tree squash.img -quiet -no-progress >/dev/null
    agrees_with squash.img file 7z
    truncate -s 16M fat.img udf.img
    truncate -s 40M fat32.img
    mkfs.vfat -n "FAT DISK" fat.img >/dev/null
    mkfs.vfat -F 32 -s 1 -n "FAT 32" fat32.img >/dev/null
    mkfs.udf -l "A UDF" udf.img >/dev/null
    agrees_with fat.img file 7z
    agrees_with fat32.img file 7z
    # It has no volume descriptors of ISO 9660, by which `file` knows UDF.
    agrees_with udf.img 7z
}

@test "GUID partition maps" {
    truncate -s 64M sgdisk.img sfdisk.img
    sgdisk -n 1:2048:+16M -t 1:EF00 -c 1:"EFI system" -n 4:0:+8M -t 4:AF00 -c 4:"A Mac's" \
        -n 2:0:0 -t 2:8300 -c 2:"Gr""$(printf '\303\274')""n" sgdisk.img >/dev/null
    printf '%s\n' 'label: gpt' 'first-lba: 34' 'start=34, size=1, name=first' 'size=8M, type=uefi' \
        'start=131038, size=1, name="last sector"' | sfdisk -q sfdisk.img
    local image
    for image in sgdisk sfdisk; do
        agrees_with "$image.img" file 7z sfdisk sgdisk
    done
}

@test "a GUID partition map that counts in sectors of 4,096 bytes" {
    needs_loop_devices
    truncate -s 64M disk.img
    local device result=0
    device=$(losetup --find --show --sector-size 4096 disk.img)
    # Which complains that nobody reads the partitions of such a device again.
    printf '%s\n' 'label: gpt' 'size=4096, name=A' 'size=2048' | sfdisk -q "$device" 2>/dev/null
    hdiutil imageinfo disk.img -plist
    # The other tools see such sectors on a device only, and some do not even there.
    differs_not "$device" sfdisk || result=$?
    losetup --detach "$device"
    [ "$result" -eq 0 ]
    plist_is "len(document['partitions']['partitions'])" 2
}

@test "DOS partition maps" {
    truncate -s 64M primary.img logical.img
    printf '%s\n' 'label: dos' 'size=16M, type=c' 'size=16M, type=83, bootable' 'type=7' |
        sfdisk -q primary.img
    printf '%s\n' 'label: dos' 'size=8M, type=6' 'type=f' 'size=8M, type=83' 'size=8M, type=83' \
        'size=8M, type=82' | sfdisk -q logical.img
    agrees_with primary.img file 7z sfdisk
    agrees_with logical.img file sfdisk
}

@test "UDIF images of every kind" {
    make_tree
    truncate -s 32M disk.img
    printf '%s\n' 'label: gpt' 'size=8M, type=uefi, name=One' 'size=8M, name=Two' |
        sfdisk -q disk.img
    mkfs.ext4 -q -L Two -d tree -E offset=$((18432 * 512)) disk.img 8M
    local kind tables
    for tables in 1 3; do
        for kind in raw zlib bzip2 adc lzma; do
            "$MAKE_UDIF" disk.img "$kind.dmg" "$kind" "$tables"
            agrees_with "$kind.dmg" 7z
        done
        for kind in raw zlib bzip2 adc; do
            agrees_with "$kind.dmg" dmg2img
            cmp disk.img "$kind.dmg.expanded"
        done
    done
    # By their first chunk; that of ADC is nothing to `file`, and lzma nothing to dmg2img.
    for kind in raw zlib bzip2 lzma; do
        agrees_with "$kind.dmg" file
    done
}

@test "UDIF images of a bare file system" {
    truncate -s 8M fs.img
    mkfs.ext4 -q -L Inside fs.img
    "$MAKE_UDIF" fs.img fs.dmg zlib
    agrees_with fs.dmg 7z
    dmg2img -s fs.dmg expanded.img
    local within
    hdiutil imageinfo fs.dmg -plist
    within=$(plist "document['partitions']")
    agrees_with expanded.img file 7z
    plist_is "document['partitions']" "$within"
}

# Made by others, with programs and options of theirs.
@test "images in packages of Debian: discs to start a machine from" {
    local image count=0
    for image in /usr/lib/grub-rescue/grub-rescue-cdrom.iso \
        /usr/lib/grub-rescue/grub-rescue-floppy.img; do
        [ -e "$image" ] || continue
        agrees_with "$image" file 7z isoinfo sfdisk
        count=$((count + 1))
    done
    # Behind the volume lie a partition, or zeros up to a full cylinder.
    for image in /usr/lib/memtest86+/*.iso /usr/lib/ipxe/ipxe.iso; do
        [ -e "$image" ] || continue
        agrees_with "$image" file 7z isoinfo:longer sfdisk
        count=$((count + 1))
    done
    [ "$count" -gt 0 ] || skip "none of these packages is here"
}

@test "images in packages of Debian show the same files as to xorriso" {
    needs_root
    local image count=0
    for image in /usr/lib/grub-rescue/grub-rescue-cdrom.iso /usr/lib/memtest86+/memtest86+x64.iso \
        /usr/lib/ipxe/ipxe.iso; do
        [ -e "$image" ] || continue
        rm -rf extracted
        xorriso -osirrox on -indev "$image" -extract / extracted >/dev/null 2>&1
        [ -n "$(find extracted -type f)" ]
        same_tree extracted "$image"
        chmod -R u+w extracted
        count=$((count + 1))
    done
    [ "$count" -gt 0 ] || skip "none of these packages is here"
    nothing_left
}
