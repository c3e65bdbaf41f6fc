#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Tags in qm info, from either convention of storing them.

load helpers

xdg=user.xdg.tags
finder=user.com.apple.metadata:_kMDItemUserTags

# The tags given, as a binary property list in the notation of setfattr.
finder_value() {
    python3 -c '
import plistlib, sys
tags = [text.replace("\\n", "\n") for text in sys.argv[1:]]
print("0x" + plistlib.dumps(tags, fmt=plistlib.FMT_BINARY).hex())' "$@"
}

tags_are() {
    qm info --json f
    json_holds 'document["tags"] == wanted' "$@"
    succeeds
}

setup() {
    pin_environment
    make_box
    touch f
}

@test "a file without tags has no line for them" {
    qm info f
    if grep -q Tags "$seen/out"; then
        complain "a line of tags"
    fi
    qm info --json f
    grep -qxF '  "tags": [],' "$seen/out" || complain "not an empty array in one line"
    succeeds
}

@test "tags are the tenth line" {
    set_attribute -n $xdg -v 'Red,Work to do,Grün' f
    qm info f
    [ "$(sed -n 10p "$seen/out")" = '  Tags:         Red, Work to do, Grün' ] ||
        complain "another tenth line"
    [ "$(wc -l <"$seen/out")" -eq 10 ] || complain "not ten lines"
    succeeds
}

@test "tags in JSON stand one in a line" {
    set_attribute -n $xdg -v 'Red,"quoted"' f
    qm info --json f
    sed -n '/"tags"/,/\]/p' "$seen/out" >"$seen/part" && mv "$seen/part" "$seen/out"
    stdout_is <<'END'
  "tags": [
    "Red",
    "\"quoted\""
  ],
END
    succeeds
}

@test "one tag" {
    set_attribute -n $xdg -v Red f
    qm info f
    line_is Tags Red
    tags_are Red
}

@test "tags do not show in the short line" {
    set_attribute -n $xdg -v Red f
    touch -d '2024-01-15 12:34:56 UTC' f
    qm info -s f
    echo 'Zero KB  2024-01-15 12:34:56  f' | stdout_is
    succeeds
}

@test "empty parts are no tags" {
    set_attribute -n $xdg -v ',Red,,Blue,' f
    tags_are Red Blue
    set_attribute -n $xdg -v ',' f
    tags_are
    set_attribute -n $xdg -v '' f
    tags_are
    qm info f
    [ "$(wc -l <"$seen/out")" -eq 9 ] || complain "not nine lines"
}

@test "a value as long as an attribute may be" {
    local long
    long=$(printf 'x%.0s' {1..3000})
    set_attribute -n $xdg -v "Red,$long" f
    tags_are Red "$long"
}

@test "the Finder's tags come without their colours" {
    set_attribute -n $finder -v "$(finder_value 'Red\n6' 'Plain' 'With, comma\n0')" f
    tags_are Red Plain 'With, comma'
    qm info f
    line_is Tags 'Red, Plain, With, comma'
}

@test "two conventions that agree give the Finder's names" {
    set_attribute -n $xdg -v 'Red,With, comma' f
    set_attribute -n $finder -v "$(finder_value 'Red\n6' 'With, comma')" f
    tags_are Red 'With, comma'
}

@test "two conventions that differ are united" {
    set_attribute -n $xdg -v 'Blue,Red' f
    set_attribute -n $finder -v "$(finder_value 'Red\n6' Green)" f
    tags_are Blue Red Green
}

@test "an attribute that is no property list is no tags and no harm" {
    set_attribute -n $finder -v 'bplist00rubbish' f
    tags_are
    set_attribute -n $finder -v '' f
    tags_are
    set_attribute -n $finder -v "0x$(printf '%02x' {0..255})" f
    tags_are
    set_attribute -n $xdg -v Red f
    tags_are Red
}

@test "tags that are not UTF-8 cost no record" {
    set_attribute -n $xdg -v 0x5265642cff f
    touch g
    qm info --json f g
    json_holds 'document[0]["tags"] == ["Red", "\ufffd"] and document[1]["name"] == "g"'
    succeeds
    qm info f
    [ "$(line_of Tags)" = $'Red, \xff' ] || complain "other bytes"
}

@test "a folder's tags" {
    mkdir sub
    set_attribute -n $xdg -v Red sub
    qm info sub
    line_is Tags Red
}

@test "a link does not show the tags of its target" {
    set_attribute -n $xdg -v Red f
    ln -s f link
    qm info link
    if grep -q Tags "$seen/out"; then
        complain "the tags of the target"
    fi
    [ "$(tail -n 1 "$seen/out")" = '  (Symbolic link)' ] || complain "not the link"
    succeeds
}

@test "tags come before the remark on a package" {
    mkdir Paint.app
    set_attribute -n $xdg -v Red Paint.app
    qm info Paint.app
    tail -n 2 "$seen/out" >"$seen/part" && mv "$seen/part" "$seen/out"
    printf '%s\n' '  Tags:         Red' '  (macOS Package/Bundle)' | stdout_is
}

@test "tags that nobody may read are no tags" {
    set_attribute -n $xdg -v Red f
    chmod 000 f
    qm_unprivileged info --json f
    json_holds 'document["tags"] == [] and document["name"] == "f"'
    succeeds
}
