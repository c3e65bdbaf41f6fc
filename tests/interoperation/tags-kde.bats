#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Tags as KDE's own code reads and writes them.

load ../cli/helpers

setup() {
    pin_environment
    make_box
    make_file f
}

kde() {
    capture "$KDE_TAGS" "$@"
}

@test "KDE reads what qm writes" {
    qm tags '--set=Grün,two words' f
    kde f
    printf '%s\n' 'Grün' 'two words' | stdout_is
    qm tags --clear f
    kde f
    stdout_is_empty
}

@test "qm reads what KDE writes" {
    kde f Grün "two words"
    qm tags f
    stdout_is <<<"f: Grün, two words"
}

@test "an edit of KDE's after a Mac's list was written with ours counts" {
    setfattr -n user.com.apple.metadata:_kMDItemUserTags -v "0x$(python3 -c '
import plistlib
print(plistlib.dumps(["a\n6"], fmt=plistlib.FMT_BINARY).hex())')" f
    qm tags --set=a,b f
    kde f b c
    qm tags f
    stdout_is <<<"f: b, c"
}
