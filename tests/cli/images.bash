# SPDX-License-Identifier: Apache-2.0
# Shared by the .bats files about disk images. HDIUTIL names the tool under test.

HDIUTIL=$(realpath "${HDIUTIL:?must name the disk-image tool to be tested}")

setup() {
    pin_environment
    make_box
    export XDG_RUNTIME_DIR="$BATS_TEST_TMPDIR/run"
    mkdir -m 700 "$XDG_RUNTIME_DIR"
}

# Whatever a failed test has left attached.
teardown() {
    cd /
    local mount
    while mount=$(findmnt -rno TARGET | grep -F "$BATS_TEST_TMPDIR/" | tail -1) && [ -n "$mount" ]; do
        umount -l "$(printf '%b' "$mount")"
    done
}

hdiutil() {
    capture "$HDIUTIL" "$@"
}

# A folder with files of several kinds.
make_tree() {
    mkdir -p tree/folder/deeper
    echo hello >tree/file.txt
    head -c 300000 /dev/urandom >tree/folder/random
    head -c 100000 /dev/zero >tree/folder/deeper/zeros
    : >tree/empty
}

# plist EXPRESSION: prints a Python expression about `document`, the property list on standard
# output.
plist() {
    python3 -c '
import plistlib, sys
document = plistlib.load(open(sys.argv[1], "rb"))
print(eval(sys.argv[2]))' "$seen/out" "$1"
}

plist_is() {
    local value
    value=$(plist "$1")
    [ "$value" = "$2" ] || complain "$1 is '$value' instead of '$2'"
}

attach() {
    hdiutil attach "$1" -plist -noverify
}

# The mount point of the Nth volume that was attached last.
mount_point() {
    plist "[e['mount-point'] for e in document['system-entities'] if 'mount-point' in e][${1:-0}]"
}

# mounts_as IMAGE TREE: attaching shows exactly these files, and detaching takes them away.
mounts_as() {
    attach "$1"
    succeeds
    local point
    point=$(mount_point)
    diff -r --no-dereference -x lost+found "$2" "$point"
    detaches "$point"
    [ ! -e "$point" ]
    nothing_left
}

# make_bundle DISK BUNDLE: with bands of a megabyte, without the zeros at the ends of these.
make_bundle() {
    python3 - "$@" <<'END'
import os, plistlib, sys
with open(sys.argv[1], "rb") as file:
    disk = file.read()
band = 1 << 20
os.makedirs(f"{sys.argv[2]}/bands")
for number in range(len(disk) // band):
    if data := disk[number * band:(number + 1) * band].rstrip(b"\0"):
        open(f"{sys.argv[2]}/bands/{number:x}", "wb").write(data)
plistlib.dump({"diskimage-bundle-type": "com.apple.diskimage.sparsebundle", "band-size": band,
               "size": len(disk)}, open(f"{sys.argv[2]}/Info.plist", "wb"))
END
}

# make_sparse_image DISK IMAGE: with the disk in one band.
make_sparse_image() {
    python3 - "$@" <<'END'
import struct, sys
with open(sys.argv[1], "rb") as file:
    disk = file.read()
sectors = len(disk) // 512
header = b"sprs" + struct.pack(">IIII", 3, sectors, 1, sectors)
with open(sys.argv[2], "wb") as file:
    file.write((header.ljust(64, b"\0") + b"\0\0\0\1").ljust(4096, b"\0") + disk)
END
}

# Nothing is attached, and nothing is left of what was.
nothing_left() {
    local left
    left=$(find "$XDG_RUNTIME_DIR" "$XDG_CACHE_HOME" -mindepth 3 ! -name lock 2>/dev/null) || true
    [ -z "$left" ] || complain "left: $left"
    ! findmnt -rno TARGET | grep -F "$BATS_TEST_TMPDIR/" || complain "still mounted"
    ! losetup -nO BACK-FILE | grep -F "$BATS_TEST_TMPDIR/" || complain "a loop device is left"
}

# detaches PATH: everything of that image is gone.
detaches() {
    hdiutil detach "$1"
    stdout_is_empty
    succeeds
}

# said VERB REASON: the line of a failure.
said() {
    printf 'hdiutil: %s failed - %s\n' "$@"
}

# fails_because VERB REASON
fails_because() {
    stdout_is_empty
    said "$@" | stderr_is
    status_is 1
}

needs_loop_devices() {
    needs_root
    [ -e /dev/loop-control ] || skip "no loop devices here"
}

kernel_has() {
    grep -qw "$1" /proc/filesystems || modprobe -q "$1" 2>/dev/null
}
