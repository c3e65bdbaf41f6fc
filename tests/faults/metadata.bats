#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Calls of the system fail in an application that has files looked at.

load faults

@test "whatever fails, a file has its entries or none, and the application goes on" {
    printf 'three words here\n' >f.txt
    head -c 100000 /dev/zero >disk
    "$MAKE_UDIF" disk disk.dmg zlib
    inject metadata
}
