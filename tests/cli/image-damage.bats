#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Two thousand damaged images: the disk-image tool tells what is in them or why it cannot, in one
# line. They are expanded, too, but never mounted: what a kernel makes of them is not tested here.

load helpers
load images

@test "damaged images are described or refused" {
    make_tree
    truncate -s 4M fs.img
    mkfs.ext4 -q -d tree fs.img
    "$MAKE_UDIF" fs.img seed-zlib.dmg zlib 2
    "$MAKE_UDIF" fs.img seed-lzma.dmg lzma
    "$MAKE_UDIF" fs.img seed-adc.dmg adc
    genisoimage -quiet -J -R -o seed.iso tree
    truncate -s 4M seed-gpt.img
    printf 'label: gpt\nsize=1024\nsize=1024\n' | sfdisk -q seed-gpt.img
    truncate -s 4M seed-mbr.img
    printf 'label: dos\nsize=1024\n,,E\n,1024\n' | sfdisk -q seed-mbr.img
    # With sanitizers each takes several times as long.
    local count=2000
    [ -z "${SANITIZERS:-}" ] || count=400
    PATH="/nowhere:$PATH" timeout 600 python3 "$BATS_TEST_DIRNAME/damage.py" "$HDIUTIL" "$count" seed*
    nothing_left
}
