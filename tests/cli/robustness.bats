#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Hostile and plentiful arguments.

load helpers

setup_file() {
    mkdir "$BATS_FILE_TMPDIR/many"
    (cd "$BATS_FILE_TMPDIR/many" && touch -d '2024-01-15 12:34:56 UTC' f{00000..09999})
}

in_many() {
    cd "$BATS_FILE_TMPDIR/many"
    box=$(pwd -P)
    printf '%s\n' f* >"$seen/names"
}

@test "ten thousand operands in long blocks" {
    in_many
    qm info f*
    awk 'NR % 10 == 1' "$seen/out" | cmp - "$seen/names"
    awk 'NR % 10 == 2' "$seen/out" | cmp - <(sed "s|^|  Path:         $box/|" "$seen/names")
    [ "$(awk 'NR % 10 == 0' "$seen/out" | sort -u | tr -d '\n')" = '' ] || complain "no empty line"
    [ "$(wc -l <"$seen/out")" -eq 100000 ] || complain "not 100000 lines"
    succeeds
}

@test "ten thousand operands in short lines" {
    in_many
    qm info -s f*
    sed 's/^/Zero KB  2024-01-15 12:34:56  /' "$seen/names" | stdout_is
    succeeds
}

@test "ten thousand operands in JSON" {
    in_many
    qm info --json f*
    json_holds '[d["name"] for d in document] == ["f%05d" % i for i in range(10000)]'
    json_holds 'all(d["path"] == wanted[0] + "/" + d["name"] for d in document)' "$box"
    succeeds
}

@test "ten thousand digests" {
    in_many
    qm checksum f*
    sha256sum f* | stdout_is
    succeeds
}

@test "ten thousand digests in JSON" {
    in_many
    qm checksum --json --md5 f*
    json_holds 'len(document) == 10000 and document[-1]["file"] == "f09999"'
    json_holds '{d["hash"] for d in document} == {"d41d8cd98f00b204e9800998ecf8427e"}'
    succeeds
}

@test "ten thousand missing files" {
    local -a missing=(g{00000..09999})
    qm info "${missing[@]}"
    stdout_is_empty
    printf "File not found: $box/%s\n" "${missing[@]}" | stderr_is
    status_is 0
    qm checksum "${missing[@]}"
    stdout_is_empty
    status_is 4
}

@test "files are closed again" {
    in_many
    capture bash -c 'ulimit -n 64; exec "$0" checksum "$@"' "$QM" f*
    sha256sum f* | stdout_is
    succeeds
}

@test "what cannot be read is closed again" {
    make_file a.txt
    # shellcheck disable=SC2046 # many words
    capture bash -c 'ulimit -n 64; exec "$0" checksum "$@"' "$QM" $(printf '/ %.0s' {1..100}) a.txt
    sha256sum a.txt | stdout_is
    status_is 1
}

@test "a command word that is not UTF-8" {
    qm $'\xff\xfe'
    echo "Run 'qm --help' for available commands." | stdout_is
    printf 'Unknown command: \xff\xfe\n' | stderr_is
    status_is 10
    qm $'info\xc3'
    printf 'Unknown command: info\xc3\n' | stderr_is
    status_is 10
}

@test "options that are not UTF-8" {
    make_file a.txt
    qm info $'--\xff=\xfe' $'-\xff' $'--verify=\xc3' a.txt
    file_block "$box/a.txt" | stdout_is
    succeeds
}

@test "operands that are not UTF-8" {
    qm checksum $'\xff'
    stdout_is_empty
    printf 'File not found: %s/\xff\n' "$box" | stderr_is
    status_is 4
}

@test "words that look like formats" {
    for word in '%s%n%s%n' '{}' '{0}{1}' '{:' '}' '%@'; do
        qm "$word"
        printf 'Unknown command: %s\n' "$word" | stderr_is
        status_is 10
        qm info "$word"
        printf 'File not found: %s/%s\n' "$box" "$word" | stderr_is
        status_is 0
    done
}

@test "empty words" {
    make_file a.txt
    qm info '' a.txt
    [ "$(head -n 1 "$seen/out")" = "${box##*/}" ] || complain "not the current folder"
    [ "$(tail -n 10 "$seen/out" | head -n 1)" = a.txt ] || complain "not the file"
    succeeds
    qm --json ''
    echo 'Unknown command: ' | stderr_is
    status_is 10
}

@test "a very long word" {
    local long
    long=$(head -c 120000 /dev/zero | tr '\0' x)
    qm "$long"
    echo "Unknown command: $long" | stderr_is
    status_is 10
    qm info "$long"
    echo "File not found: $box/$long" | stderr_is
    status_is 0
    qm checksum "/$long"
    echo "File not found: /$long" | stderr_is
    status_is 4
    qm info "--$long" "--json=$long"
    status_is 10
}

@test "very many slashes and dots" {
    local dots
    dots=$(printf './%.0s' {1..30000})
    qm info "${dots}x"
    echo "File not found: $box/x" | stderr_is
    status_is 0
    dots=$(printf 'a/../%.0s' {1..20000})
    qm info "${dots}x"
    echo "File not found: $box/x" | stderr_is
    status_is 0
    dots=$(printf '/%.0s' {1..100000})
    qm info "a${dots}x"
    echo "File not found: $box/a/x" | stderr_is
    status_is 0
}

@test "a path deeper than the system can open" {
    local deep
    deep=$(printf 'd/%.0s' {1..3000})x
    qm info "$deep"
    stdout_is_empty
    echo "File not found: $box/$deep" | stderr_is
    status_is 0
}

@test "no arguments at all, not even a name" {
    capture python3 -c '
import ctypes, sys
none = (ctypes.c_char_p * 1)(None)
ctypes.CDLL(None).execv(sys.argv[1].encode(), none)
sys.exit(99)' "$QM"
    [ "$(head -n 1 "$seen/out")" = 'qm — Quillmere CLI Tool' ] || complain "not the help"
    succeeds
}

@test "the name of the program does not matter" {
    (exec -a info "$QM" --version) >"$seen/out" 2>"$seen/err"
    echo 'qm 1.0.0' | stdout_is
    (exec -a '' "$QM" --version) >"$seen/out" 2>"$seen/err"
    echo 'qm 1.0.0' | stdout_is
}

@test "an empty environment" {
    make_file a.txt
    capture env -i "$QM" checksum a.txt
    sha256sum a.txt | stdout_is
    succeeds
    capture env -i TZ=UTC "$QM" info a.txt
    file_block "$box/a.txt" | stdout_is
    succeeds
}

@test "an environment full of rubbish" {
    make_file a.txt
    capture env LC_ALL=$'\xff' LANG="$(head -c 5000 /dev/zero | tr '\0' x)" HOME=nowhere \
        XDG_CONFIG_HOME=$'\xff' "$QM" info a.txt
    file_block "$box/a.txt" | stdout_is
    succeeds
    capture env TZ="$(head -c 5000 /dev/zero | tr '\0' x)" "$QM" info -s a.txt
    grep -q '  a.txt$' "$seen/out" || complain "no line"
    succeeds
}

@test "reading changes nothing about a file" {
    make_file a.txt
    touch -a -d '2030-01-01 UTC' a.txt
    before=$(stat -c '%a %u %g %s %Y %Z' a.txt)
    qm info a.txt
    qm info --json a.txt
    qm checksum a.txt
    [ "$(stat -c '%a %u %g %s %Y %Z' a.txt)" = "$before" ] || complain "the file has changed"
    [ "$(ls -A)" = a.txt ] || complain "something was left behind"
}
