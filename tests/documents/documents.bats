#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# The documents beside the manual: the README, its picture, the index, the metainfo, the reference.

load ../cli/helpers
load ../cli/application

: "${METAINFO:?must name the metainfo}"
METAINFO=$(realpath "$METAINFO")
top=$(realpath "$BATS_TEST_DIRNAME/../..")

teardown() {
    stop_all
}

needs_attributes_and_dates() {
    setfattr -n user.probe -v x . 2>/dev/null || skip "no extended attributes here"
    [ -n "$(creation_date .)" ] || skip "the file system keeps no dates of creation"
}

@test "examples in the README print what it says" {
    needs_attributes_and_dates
    start_bus
    start_application
    capture "$top/docs/record-examples" --check "$QM" "$top/README.md"
    stdout_is_empty
    succeeds
}

@test "the picture shows what qm prints" {
    needs_attributes_and_dates
    capture "$top/docs/make-terminal-picture" "$QM" picture.svg
    stdout_is_empty
    succeeds
    python3 -c 'import sys, xml.dom.minidom; xml.dom.minidom.parse(sys.argv[1])' picture.svg
    cp picture.svg "$seen/out"
    stdout_is <"$top/docs/terminal.svg"
}

# Links in a document that name files, with their fragments cut off.
links_in() {
    grep -oE '\]\([^) ]+\)' "$1" | sed 's/^](//; s/)$//; s/#.*//' | grep -vE '^(https?:|$)'
}

@test "documents refer to files that are there" {
    local document link count=0
    for document in "$top"/*.md "$top"/docs/*.md; do
        for link in $(links_in "$document"); do
            [ -e "${document%/*}/$link" ] || complain "${document##*/} refers to $link"
            count=$((count + 1))
        done
    done
    [ "$count" -gt 20 ]
}

@test "the index lists every document" {
    local document
    for document in "$top"/docs/*.md "$top/README.md" "$top/SECURITY.md" "$top/CHANGELOG.md" \
        "$top/CONTRIBUTING.md"; do
        [ "$document" != "$top/docs/README.md" ] || continue
        links_in "$top/docs/README.md" | grep -qxE "(\.\./)?${document##*/}" ||
            complain "${document##*/} is not listed"
    done
}

@test "the newest version in the changelog is the tool's" {
    sed -n 's/^## \[\([^]]*\)\].*/qm \1/p' "$top/CHANGELOG.md" | head -n 1 >"$seen/out"
    "$QM" --version | stdout_is
}

@test "software centres can read the metainfo" {
    capture appstreamcli validate --no-net --strict --no-color "$METAINFO"
    status_is 0
    grep -qx "  <id>$APPLICATION_ID.qm</id>" "$METAINFO"
}

@test "every public header says what a caller has to know, in a form that can be read" {
    cd "$top"
    { cat docs/Doxyfile; echo "OUTPUT_DIRECTORY = $BATS_TEST_TMPDIR"; } >"$seen/Doxyfile"
    capture doxygen "$seen/Doxyfile"
    stdout_is_empty
    succeeds
    grep -q 'QMTagService' "$BATS_TEST_TMPDIR/html/annotated.html"
}
