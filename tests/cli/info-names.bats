#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Names are bytes: the text forms pass them on, JSON makes text of them.

load helpers

# Every byte that a name can hold, but for those of ASCII that are harmless.
names=(
    'with blanks' ' leading' 'trailing ' $'two\nlines' $'ends\n' $'\ttab' $'bell\a' $'esc\e[31m'
    $'\x01\x1f\x7f' 'double"quote' "single'quote" 'back\slash' '{}' '{0}' '{:x}' '%s%n%@' '$(x)'
    '*?[a]' '&lt;' '日本語.txt' $'e\xcc\x81' '😀' $'\xe2\x80\xa8' $'\xef\xbb\xbfbom'
)

@test "text forms show every name as it is" {
    for name in "${names[@]}"; do
        make_file "./$name"
        qm info -s "$name"
        printf '3 bytes  2024-01-15 12:34:56  %s\n' "$name" | stdout_is
        succeeds
    done
    qm info $'two\nlines'
    [ "$(head -c 10 "$seen/out")" = $'two\nlines' ] || complain "another name"
    grep -qF "  Path:         $box/two" "$seen/out" || complain "another path"
}

@test "JSON gives every name back" {
    for name in "${names[@]}"; do
        make_file "./$name"
    done
    qm info --json "${names[@]}"
    json_holds '[d["name"] for d in document] == wanted' "${names[@]}"
    json_holds 'all(d["path"] == wanted[0] + "/" + d["name"] for d in document)' "$box"
    json_holds 'all(d["size"] == 3 for d in document)'
    succeeds
}

@test "JSON escapes what must be escaped and nothing else" {
    local name=$'q"b\\t\tn\nc\x01d\x1fe\x7f/é'
    mkdir "${name%/*}"
    touch "$name"
    qm info --json "${name%/*}"
    grep -qF '"name": "q\"b\\t\tn\nc\u0001d\u001fe'$'\x7f"' "$seen/out" || complain "other escapes"
    succeeds
}

@test "bytes that are not UTF-8 pass through the text forms" {
    for name in $'bad\xff.txt' $'\xc3' $'\xed\xa0\x80' $'\xf8\x88\x80\x80\x80' $'\x80\xbf'; do
        make_file "$name"
        qm info -s "$name"
        printf '3 bytes  2024-01-15 12:34:56  %s\n' "$name" | stdout_is
        succeeds
        qm info "missing-$name"
        printf 'File not found: %s/missing-%s\n' "$box" "$name" | stderr_is
        status_is 0
    done
}

@test "bytes that are not UTF-8 become replacement characters in JSON" {
    make_file $'bad\xff.txt'
    qm info --json $'bad\xff.txt'
    json_holds 'document["name"] == "bad\ufffd.txt"'
    json_holds 'document["path"] == wanted[0] + "/bad\ufffd.txt"' "$box"
    json_holds 'document["size"] == 3 and document["uti"] == "public.plain-text"'
    succeeds
}

@test "an odd name costs no other record" {
    local -a odd=($'\xff' $'a\xc3' $'\xed\xa0\x80' $'\xc0\xaf' $'\xf4\x90\x80\x80' $'\xe2\x82')
    make_file first
    make_file last
    for name in "${odd[@]}"; do
        make_file "$name"
    done
    qm info --json first "${odd[@]}" last
    json_holds 'len(document) == 8 and all(d["size"] == 3 for d in document)'
    json_holds 'document[0]["name"] == "first" and document[-1]["name"] == "last"'
    json_holds 'all("\ufffd" in d["name"] for d in document[1:-1])'
    json_holds 'document[2]["name"] == "a\ufffd"'
    succeeds
}

@test "a missing file with an odd name has an empty record" {
    qm info --json $'\xff'
    { empty_record; echo; } | stdout_is
    printf 'File not found: %s/\xff\n' "$box" | stderr_is
    status_is 0
}

@test "an extension that is not UTF-8 is unknown and harmless" {
    touch $'a.\xff\xfe'
    qm info $'a.\xff\xfe'
    [[ $(line_of UTI) == dyn.a* ]] || complain "not a dynamic type"
    line_is Kind Document
    qm info --json $'a.\xff\xfe'
    json_holds 'document["name"] == "a.\ufffd\ufffd"'
    succeeds
}

@test "names of the greatest length" {
    local name
    name=$(printf 'n%.0s' {1..251}).txt
    make_file "$name"
    qm info -s "$name"
    echo "3 bytes  2024-01-15 12:34:56  $name" | stdout_is
    succeeds
    qm info "${name}x"
    stdout_is_empty
    echo "File not found: $box/${name}x" | stderr_is
    status_is 0
}
