#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# The JSON form of qm checksum.

load helpers

setup() {
    pin_environment
    make_box
    printf 'hi\n' >a.txt
    : >b.txt
}

digest() {
    "$1sum" <"$2" | cut -d ' ' -f 1
}

@test "one file is an object, byte by byte" {
    qm checksum --json a.txt
    stdout_is <<END
{
  "file": "a.txt",
  "path": "$box/a.txt",
  "algorithm": "SHA-256",
  "hash": "98ea6e4f216f2fb4b69fff9b3a44842c38686ca685f3f55dc48c5d3fb1107be4"
}
END
    succeeds
}

@test "two files are an array, byte by byte" {
    qm checksum --json --md5 b.txt a.txt
    stdout_is <<END
[
  {
    "file": "b.txt",
    "path": "$box/b.txt",
    "algorithm": "MD5",
    "hash": "d41d8cd98f00b204e9800998ecf8427e"
  },
  {
    "file": "a.txt",
    "path": "$box/a.txt",
    "algorithm": "MD5",
    "hash": "$(digest md5 a.txt)"
  }
]
END
    succeeds
}

@test "the algorithm is named" {
    qm checksum --json --sha1 a.txt
    json_holds 'document["algorithm"] == "SHA-1" and document["hash"] == wanted[0]' \
        "$(digest sha1 a.txt)"
    qm checksum --json --sha1 --md5 a.txt
    json_holds 'document["algorithm"] == "MD5"'
    qm checksum --json --sha512 a.txt
    json_holds 'document["algorithm"] == "SHA-256"'
    succeeds
}

@test "no success prints nothing" {
    qm checksum --json missing
    stdout_is_empty
    echo "File not found: $box/missing" | stderr_is
    status_is 4
    qm checksum --json missing "$box"
    stdout_is_empty
    printf '%s\n' "File not found: $box/missing" "Could not read: $box" | stderr_is
    status_is 1
}

@test "one success among failures is an object" {
    qm checksum --json missing a.txt gone
    json_holds 'document["file"] == "a.txt"'
    printf 'File not found: %s\n' "$box/missing" "$box/gone" | stderr_is
    status_is 4
}

@test "two successes among failures are an array of two" {
    qm checksum --json b.txt missing a.txt
    json_holds '[d["file"] for d in document] == ["b.txt", "a.txt"]'
    status_is 4
}

@test "the path is absolute, the file its last part" {
    mkdir sub
    : >sub/c.txt
    qm checksum --json sub/../sub/./c.txt
    json_holds 'document["file"] == "c.txt" and document["path"] == wanted[0]' "$box/sub/c.txt"
    qm checksum --json "$box/sub/../sub//c.txt"
    json_holds 'document["file"] == "c.txt" and document["path"] == wanted[0]' \
        "$box/sub/../sub//c.txt"
    succeeds
}

@test "odd names cost no record" {
    : >$'\xff'
    : >$'q"\n'
    qm checksum --json a.txt $'\xff' $'q"\n' b.txt
    json_holds '[d["file"] for d in document] == ["a.txt", "\ufffd", "q\"\n", "b.txt"]'
    succeeds
}

@test "--json counts only when it is true" {
    qm checksum --json=yes a.txt
    sha256sum a.txt | stdout_is
    qm checksum --json=true a.txt
    json_holds 'document["file"] == "a.txt"'
    succeeds
}
