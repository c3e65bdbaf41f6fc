#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# The manual pages: that they can be formatted, and that they tell the truth.

load ../cli/helpers
load ../cli/application

: "${MAN_PAGES:?must name the folder of the manual pages}"
MAN_PAGES=$(realpath "$MAN_PAGES")
documents=$(realpath "$BATS_TEST_DIRNAME/../../docs")
pages=(qm qm-info qm-checksum qm-tags qm-open)

teardown() {
    stop_all
}

@test "formatters find nothing wrong with the pages" {
    local page
    for page in "${pages[@]}"; do
        capture mandoc -T lint -W warning "$MAN_PAGES/$page.1"
        stdout_is_empty
        succeeds
        capture groff -ww -mdoc -T utf8 -z "$MAN_PAGES/$page.1"
        stdout_is_empty
        succeeds
        # Not all formatters take more.
        ! grep -nP '[^\x00-\x7F]' "$MAN_PAGES/$page.1" || complain "$page is not ASCII"
    done
}

@test "no mark of a template is left" {
    ! grep -n '^@' "$MAN_PAGES"/*.1 || complain "marks are left"
    local version
    version=$("$QM" --version)
    grep -qxF ".Os \"Quillmere ${version#qm }\"" "$MAN_PAGES/qm.1"
    grep -qxF ".It Pa applications/$APPLICATION_ID.desktop" "$MAN_PAGES/qm-open.1"
}

@test "what may surprise comes first" {
    local page
    for page in "${pages[@]}"; do
        sed -n 's/^\.Sh //p' "$MAN_PAGES/$page.1" | head -n 4 >"$seen/out"
        printf '%s\n' NAME SYNOPSIS 'WHAT MAY SURPRISE' DESCRIPTION | stdout_is
    done
}

@test "examples print what the pages say" {
    setfattr -n user.probe -v x . 2>/dev/null || skip "no extended attributes here"
    [ -n "$(creation_date .)" ] || skip "the file system keeps no dates of creation"
    start_bus
    start_application
    local page
    for page in "${pages[@]}"; do
        capture "$documents/record-examples" --check "$QM" "$MAN_PAGES/$page.1"
        stdout_is_empty
        succeeds
    done
}

@test "an example that is not true is found out" {
    sed 's/^qm 1\.0\.0$/qm 1.0.1/' "$MAN_PAGES/qm.1" >page.1
    capture "$documents/record-examples" --check "$QM" page.1
    grep -qx '+qm 1\.0\.0' "$seen/out"
    grep -qx -e '-qm 1\.0\.1' "$seen/out"
    status_is 1
}

# members_are PAGE: those of the record on standard output are those that the page lists, in order.
members_are() {
    sed -n '/^\.Ss JSON/,/^\.El/s/^\.It Sy //p' "$MAN_PAGES/$1.1" | sed 's/ , /\n/g' >"$seen/members"
    json_holds 'list(document) == open(wanted[0]).read().split()' "$seen/members"
}

@test "members of JSON records are those that the pages list" {
    make_file a.txt
    [ -n "$(creation_date a.txt)" ] || skip "the file system keeps no dates of creation"
    qm info --json a.txt
    members_are qm-info
    qm checksum --json a.txt
    members_are qm-checksum
    qm tags --json a.txt
    members_are qm-tags
}
