#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Images that the disk service of a desktop mounts, for root and for a user without any right.

load helpers
load images
load disk_service

teardown() {
    stop_system
}

hdiutil() {
    capture "${within[@]}" "${mantle[@]}" "$HDIUTIL" "$@"
}

# From here on the tool runs as a common user, in a folder that it can reach.
become_common_user() {
    inside install -m 755 "$HDIUTIL" /run/common/quillmere-hdiutil
    inside install -d -o "$common_user" -m 700 /run/common/home /run/common/runtime
    HDIUTIL=/run/common/quillmere-hdiutil
    mantle=(setpriv --reuid="$common_user" --regid="$common_user" --clear-groups
        env HOME=/run/common/home XDG_CACHE_HOME=/run/common/home/.cache
        XDG_RUNTIME_DIR=/run/common/runtime)
}

# hands_over IMAGE: lays it where the common user can have it, as that user's own.
hands_over() {
    inside install -o "$common_user" -m 600 "$1" "/run/common/${1##*/}"
}

make_ext4() {
    make_tree
    truncate -s 16M fs.img
    mkfs.ext4 -q -L ALBUM -E root_owner="$common_user:$common_user" -d tree fs.img
}

# Where the service has mounted something, as this test sees it.
seen_from_here() {
    printf '%s' "/proc/$system/root$1"
}

no_device_left() {
    ! losetup -nO BACK-FILE | grep -F -e "$box" -e /run/common || complain "a loop device is left"
    ! inside findmnt -rno SOURCE | grep /dev/loop || complain "still mounted"
}

@test "root's images are mounted by the service where it likes, once" {
    start_system yes
    make_ext4
    attach fs.img
    succeeds
    plist_is "[sorted(e) for e in document['system-entities']]" \
        "[['content-hint', 'dev-entry', 'mount-point', 'potentially-mountable', 'volume-kind']]"
    plist_is "document['system-entities'][0]['dev-entry'].startswith('/dev/loop')" True
    local point
    point=$(mount_point)
    [[ "$point" =~ ^(/run)?/media/root/ALBUM$ ]] || complain "mounted at $point"
    diff -r -x lost+found tree "$(seen_from_here "$point")"
    echo new >"$(seen_from_here "$point")/written"
    attach fs.img
    succeeds
    [ "$(mount_point)" = "$point" ]
    [ "$(losetup -nO NAME -j fs.img | wc -l)" = 1 ]
    detaches "$point"
    no_device_left
    nothing_left
    [ "$(debugfs -R "cat written" fs.img 2>/dev/null)" = new ]
}

@test "a user without rights gets the volumes of an image with partitions" {
    start_system yes
    make_ext4
    truncate -s 64M disk.img
    printf 'label: gpt\nstart=2048,size=32768,name=one\nstart=40960,size=32768,name=two\n' |
        sfdisk -q disk.img
    dd if=fs.img of=disk.img bs=1M seek=1 conv=notrunc status=none
    tune2fs -L SECOND fs.img >/dev/null
    dd if=fs.img of=disk.img bs=1M seek=20 conv=notrunc status=none
    hands_over disk.img
    become_common_user
    attach /run/common/disk.img
    succeeds
    local first second
    first=$(mount_point 0)
    second=$(mount_point 1)
    [ "${first##*/}" = ALBUM ] && [ "${second##*/}" = SECOND ]
    diff -r -x lost+found tree "$(seen_from_here "$first")"
    diff -r -x lost+found tree "$(seen_from_here "$second")"
    detaches "$second"
    no_device_left
}

@test "a compressed image is expanded for that user, and mounted for reading" {
    start_system yes
    make_ext4
    "$MAKE_UDIF" fs.img fs.dmg zlib
    hands_over fs.dmg
    become_common_user
    attach /run/common/fs.dmg
    succeeds
    inside findmnt -no OPTIONS "$(mount_point)" | grep -qw ro
    diff -r -x lost+found tree "$(seen_from_here "$(mount_point)")"
    detaches "$(mount_point)"
    no_device_left
    [ -z "$(inside find /run/common/home/.cache -type f ! -name lock)" ]
}

stands_in() {
    [ "$(readlink "/proc/$1/cwd")" = "$2" ]
}

@test "a busy volume is refused and stays whole" {
    start_system yes
    make_ext4
    hands_over fs.img
    become_common_user
    attach /run/common/fs.img
    local point
    point=$(mount_point)
    exec_inside sh -c 'cd "$1" && exec sleep 100' sh "$point" 3>&- &
    local user=$!
    wait_for stands_in "$user" "$point"
    hdiutil detach "$point"
    fails_because detach "Device or resource busy"
    diff -r -x lost+found tree "$(seen_from_here "$point")"
    kill "$user"
    wait "$user" || true
    detaches "$point"
    no_device_left
}

@test "volumes that were unmounted before a busy one are mounted again" {
    start_system yes
    local number
    truncate -s 16M disk.img
    printf 'label: gpt\nstart=2048, size=4096\nsize=4096\nsize=4096\n' | sfdisk -q disk.img
    for number in 0 1 2; do
        mkfs.ext4 -q -L "V$number" -E offset=$(((2048 + 4096 * number) * 512)) disk.img 2M
    done
    hands_over disk.img
    become_common_user
    attach /run/common/disk.img
    succeeds
    local user point
    for number in 0 1 2; do
        point=/media/nobody/V$number
        exec_inside sh -c 'cd "$1" && exec sleep 100' sh "$point" 3>&- &
        user=$!
        wait_for stands_in "$user" "$point"
        hdiutil detach /media/nobody/V1
        fails_because detach "Device or resource busy"
        [ "$(inside findmnt -rno TARGET | grep /media/nobody/ | sort | tr '\n' ' ')" = \
            "/media/nobody/V0 /media/nobody/V1 /media/nobody/V2 " ]
        kill "$user"
        wait "$user" || true
    done
    detaches /media/nobody/V1
    no_device_left
}

@test "a volume that the service has mounted for another program is unmounted by it" {
    start_system yes
    make_ext4
    hands_over fs.img
    become_common_user
    inside "${mantle[@]}" udisksctl loop-setup -f /run/common/fs.img
    local device
    device=$(losetup -nO NAME,BACK-FILE | awk '$2 == "/run/common/fs.img" { print $1 }')
    inside "${mantle[@]}" udisksctl mount -b "$device"
    hdiutil detach /media/nobody/ALBUM
    succeeds
    ! inside findmnt -rno SOURCE | grep "$device" || complain "still mounted"
    hdiutil detach /media
    fails_because detach "not on a disk image or a removable disk"
}

@test "whom the service does not let gets another way, or nothing" {
    start_system no
    make_tree
    truncate -s 320M fs.img
    mkfs.xfs -q -L ALBUM fs.img
    hands_over fs.img
    become_common_user
    attach /run/common/fs.img
    fails_because attach "no mountable file systems"
    no_device_left
    [ -z "$(inside find /run/common/runtime -type f ! -name lock)" ]
}

# record_is EXPRESSION: changes `record`, the one that is kept, as an unfinished call leaves it.
record_is() {
    python3 - "$XDG_RUNTIME_DIR" "$1" <<'CHANGE'
import pathlib, plistlib, sys
[path] = pathlib.Path(sys.argv[1]).rglob("*.plist")
record = plistlib.loads(path.read_bytes())
exec(sys.argv[2])
path.write_bytes(plistlib.dumps(record))
CHANGE
}

@test "what a killed call has left at the service is taken back by the next one" {
    start_system yes
    make_ext4
    attach fs.img
    succeeds
    local device
    device=$(plist "document['system-entities'][0]['dev-entry']")
    # Killed before the device was noted.
    inside udisksctl unmount -b "$device"
    record_is "record['complete'] = False; record['volumes'][0]['device'] = b''; record['volumes'][0]['mount-point'] = b''"
    attach fs.img
    succeeds
    [ "$(losetup -nO NAME -j fs.img | wc -l)" = 1 ]
    # Killed after it was mounted.
    record_is "record['complete'] = False; record['volumes'][0]['mount-point'] = b''"
    attach fs.img
    succeeds
    [ "$(losetup -nO NAME -j fs.img | wc -l)" = 1 ]
    [ "$(inside findmnt -rno TARGET | grep -c /media/root/)" = 1 ]
    detaches "$(mount_point)"
    no_device_left
    nothing_left
}

@test "an image that was ejected elsewhere is attached anew, and another's device is left alone" {
    start_system yes
    make_ext4
    cp fs.img other.img
    attach fs.img
    local device
    device=$(plist "document['system-entities'][0]['dev-entry']")
    inside udisksctl unmount -b "$device"
    inside udisksctl loop-delete -b "$device"
    losetup "$device" other.img
    hdiutil detach "$(mount_point)"
    succeeds
    [ "$(losetup -nO BACK-FILE "$device")" = "$box/other.img" ]
    losetup -d "$device"
    attach fs.img
    succeeds
    diff -r -x lost+found tree "$(seen_from_here "$(mount_point)")"
    detaches "$(mount_point)"
    no_device_left
}

@test "an image that was renamed or removed meanwhile is detached all the same" {
    start_system yes
    make_ext4
    local way
    for way in "mv copy.img away.img" "rm copy.img"; do
        cp fs.img copy.img
        attach copy.img
        succeeds
        $way
        detaches "$(mount_point)"
        no_device_left
        nothing_left
    done
}

@test "what was mounted by another program in the place of an ejected volume is unmounted" {
    start_system yes
    make_ext4
    cp fs.img other.img
    attach fs.img
    local device point
    point=$(mount_point)
    device=$(plist "document['system-entities'][0]['dev-entry']")
    inside udisksctl unmount -b "$device"
    inside udisksctl loop-delete -b "$device"
    losetup "$device" other.img
    wait_for inside udisksctl mount -b "$device"
    inside mountpoint -q "$point"
    detaches "$point"
    ! inside mountpoint -q "$point" || complain "still mounted"
    [ "$(losetup -nO BACK-FILE "$device")" = "$box/other.img" ]
    losetup -d "$device"
    nothing_left
}

@test "where the mounts of the service are not seen, it unmounts them, and another way is taken" {
    start_system yes
    make_ext4
    local -a mantle=(unshare --mount --propagation private)
    attach fs.img
    succeeds
    [ "$(mount_point)" = "$XDG_RUNTIME_DIR/quillmere/volumes/ALBUM" ]
    # The mount that was made instead went with its process.
    no_device_left
}

service_is_gone() {
    ! service_answers
}

@test "without the service, what it has mounted stays whole" {
    start_system yes
    make_ext4
    attach fs.img
    succeeds
    local point
    point=$(mount_point)
    pkill -f -P $$ "$udisksd" || true
    wait_for service_is_gone
    hdiutil detach "$point"
    fails_because detach "Transport endpoint is not connected"
    diff -r -x lost+found tree "$(seen_from_here "$point")"
    serve "$udisksd"
    wait_for service_answers
    detaches "$point"
    no_device_left
}
