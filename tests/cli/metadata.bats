#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# What is in files, as an application is told it.

load helpers
load images
load metadata

@test "a text file has entries of its own and a category" {
    printf '#!/bin/sh\necho hello world\n' >run.sh
    show run.sh
    succeeds
    json_holds '[list(d) for d in document] == [["path", "category", "categoryName", "entries"]]'
    json_holds 'document[0]["path"] == "run.sh" and document[0]["category"] == 5'
    json_holds 'document[0]["categoryName"] == "meta.cat.text"'
    json_holds 'all(list(e) == ["key", "localizedKey", "value", "isPrimary"]
                    for e in document[0]["entries"])'
    json_holds '[e["key"] for e in document[0]["entries"] if e["isPrimary"]] ==
                ["lineCount", "language"]'
    values_are 'encoding=Unicode (UTF-8),lineCount=3,charCount=27,wordCount=5,lineEnding=LF,language=Shell,shebang=#!/bin/sh'
}

@test "files come in the order in which they were named, however many are read at a time" {
    local i
    for i in {1..200}; do
        yes word | head -n "$i" >"$i.txt"
    done
    local jobs
    for jobs in 1 3 8 500; do
        show --jobs "$jobs" {200..1}.txt
        succeeds
        json_holds '[e["value"] for d in document for e in d["entries"] if e["key"] == "lineCount"]
                    == [str(i + 1) for i in range(200, 0, -1)]'
    done
}

@test "what nothing can be told of is null" {
    mkdir folder.jpg
    echo >plain
    echo >a.zip
    show folder.jpg plain missing.txt a.zip
    succeeds
    json_holds 'document[:3] == [None, None, None]'
    json_holds 'document[3]["category"] == 8 and document[3]["entries"] == []'
}

@test "only the keys that are asked for" {
    echo 'a b' >a.txt
    show --keys wordCount,encoding,nonsense a.txt
    succeeds
    values_are 'encoding=Unicode (UTF-8),wordCount=2'
    show --keys '' a.txt
    succeeds
    values_are ''
}

@test "the user's settings count" {
    echo 'a b' >a.txt
    mkdir -p "$XDG_CONFIG_HOME"
    local settings="$XDG_CONFIG_HOME/$APPLICATION_ID.plist"
    python3 -c 'import plistlib, sys
plistlib.dump({"QMMetadataEnabled_5": ["wordCount"]}, open(sys.argv[1], "wb"))' "$settings"
    show a.txt
    succeeds
    values_are 'wordCount=2'
    show --keys lineCount a.txt
    values_are 'lineCount=2'
    python3 -c 'import plistlib, sys
plistlib.dump({"QMMetadataEnabled": False}, open(sys.argv[1], "wb"))' "$settings"
    show a.txt
    succeeds
    json_holds 'document == [None]'
    echo damaged >"$settings"
    show a.txt
    json_holds 'len(document[0]["entries"]) == 5'
}

@test "arguments that are not understood" {
    local -a wrong
    for wrong in "" "--jobs 0 a.txt" "--jobs x a.txt" "--jobs 1x a.txt" "--jobs" "--keys" "--keys a"; do
        # shellcheck disable=SC2086 # the words of one command line
        show $wrong
        stdout_is_empty
        status_is 10
        [ "$(wc -l <"$seen/err")" = 1 ]
    done
}

@test "neither FIFOs nor devices hang it" {
    mkfifo fifo.txt
    ln -s /dev/zero zero.txt
    ln -s /dev/tty tty.txt
    ln -s /proc/self/status status.txt
    ln -s nowhere dangling.txt
    show fifo.txt zero.txt tty.txt status.txt dangling.txt
    succeeds
    json_holds '[len(d["entries"]) for d in document] == [0, 0, 0, 5, 0]'
}

@test "few descriptors end nothing, however many files are read at a time" {
    [ -z "${SANITIZERS:-}${COVERAGE:-}" ] || skip "what watches the program needs descriptors, too"
    local i descriptors
    for i in {1..200}; do
        echo a >"$i.txt"
        echo a >"$i.dmg"
    done
    for descriptors in 6 7 8 12 40; do
        capture bash -c 'ulimit -n "$1"; exec "$0" --jobs 500 "${@:2}"' \
            "$SHOW_METADATA" "$descriptors" ./*.dmg ./*.txt
        succeeds
        json_holds 'len(document) == 400 and None not in document'
    done
}

@test "what cannot be written is an error" {
    echo a >a.txt
    capture bash -c 'exec "$0" a.txt >/dev/full' "$SHOW_METADATA"
    status_is 1
    [ "$(cat "$seen/err")" = 'show_metadata: No space left on device' ]
}

@test "disk images through the tool" {
    make_tree
    genisoimage -quiet -V DISC -o disc.iso tree
    truncate -s 4M disk.img
    printf 'label: gpt\nsize=1024\n' | sfdisk -q disk.img
    "$MAKE_UDIF" disk.img disk.dmg zlib
    show disk.img disk.dmg
    succeeds
    json_holds 'document[0]["category"] == 13 and document[0]["categoryName"] == "meta.cat.diskImage"'
    json_holds '[e["key"] for e in document[0]["entries"] if e["isPrimary"]] == ["imageFormat"]'
    values_are 'imageFormat=raw read/write,compressedSize=4.2 MB,diskImageEncrypted=no,partitionScheme=GUID'
    show disk.dmg
    values_are 'imageFormat=UDIF read-only compressed (zlib),compressedSize=4.2 MB,diskImageEncrypted=no,partitionScheme=GUID'
    show disc.iso
    json_holds 'document[0]["entries"][0]["value"] == "DVD/CD-R master"'
    printf encrcdsa >locked.dmg
    head -c 10000 /dev/zero >>locked.dmg
    echo nonsense >broken.dmg
    show locked.dmg broken.dmg
    succeeds
    json_holds '[e["value"] for e in document[0]["entries"] if e["key"] == "diskImageEncrypted"]
                == ["yes"]'
    json_holds 'document[1]["entries"] == []'
}

@test "two thousand damaged texts" {
    timeout 120 python3 "$BATS_TEST_DIRNAME/damage_texts.py" "$SHOW_METADATA" 2000
}
