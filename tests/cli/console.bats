#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Styles: there when standard output is a terminal and nobody said otherwise, for both streams.

load helpers

bold=$'\e[1m'
dim=$'\e[2m'
red=$'\e[31m'
reset=$'\e[0m'

styled_help() {
    "$QM" --help | sed -E "s/^(qm —.*|[A-Z][A-Za-z]+ (Commands|Options):)$/$bold\\1$reset/"
}

@test "the help has four bold lines on a terminal" {
    qm_on_terminal stdout --help
    styled_help | stdout_is
    [ "$(grep -c $'\e' "$seen/out")" -eq 4 ] || complain "not four bold lines"
    succeeds
}

@test "output to a file has no styles" {
    make_file a.txt
    ln -s a.txt link
    for words in --help "info a.txt link missing" nonsense "checksum a.txt missing"; do
        # shellcheck disable=SC2086 # the words of one line
        qm $words
        cat "$seen/out" "$seen/err" >"$seen/both"
        if grep -q $'\e' "$seen/both"; then
            complain "an escape sequence after: $words"
        fi
    done
}

@test "--no-color takes the styles away" {
    qm_on_terminal both --no-color --help
    "$QM" --help | stdout_is
    succeeds
}

@test "--no-color works from every place before the help" {
    qm_on_terminal both nonsense --no-color --json --help
    "$QM" --help | stdout_is
    succeeds
}

@test "--no-color comes too late behind --help" {
    qm_on_terminal both --help --no-color
    styled_help | stdout_is
    succeeds
}

@test "the version is never styled" {
    for words in --version "--version --no-color" "--no-color --version"; do
        # shellcheck disable=SC2086 # the words of one line
        qm_on_terminal both $words
        echo 'qm 1.0.0' | stdout_is
        succeeds
    done
}

@test "the name of a file is bold" {
    make_file a.txt
    qm_on_terminal stdout info a.txt
    file_block "$box/a.txt" | sed "1s/.*/$bold&$reset/" | stdout_is
    succeeds
}

@test "the remarks below a block are dim" {
    make_file a.txt
    ln -s a.txt link
    mkdir Paint.app
    qm_on_terminal stdout info link Paint.app
    sed "s/^  (.*/$dim&$reset/; 1s/.*/$bold&$reset/; s/^Paint.app/$bold&$reset/" \
        <("$QM" info link Paint.app) | stdout_is
    [ "$(grep -cF "$dim  (" "$seen/out")" -eq 2 ] || complain "not two dim lines"
    succeeds
}

@test "--no-color works before and after the command" {
    make_file a.txt
    ln -s a.txt link
    for words in "--no-color info link missing" "info --no-color link missing" \
        "info link missing --no-color"; do
        # shellcheck disable=SC2086 # the words of one line
        qm_on_terminal both $words
        "$QM" info link missing 2>/dev/null | stdout_is
        echo "File not found: $box/missing" | stderr_is
        status_is 0
    done
}

@test "short lines, digests and JSON are never styled" {
    make_file a.txt
    for words in "info -s a.txt" "info --json a.txt" "checksum a.txt" "checksum --json a.txt"; do
        # shellcheck disable=SC2086 # the words of one line
        qm_on_terminal both $words
        # shellcheck disable=SC2086
        "$QM" $words | stdout_is
        succeeds
    done
}

@test "errors are red on a terminal" {
    qm_on_terminal both info missing
    stdout_is_empty
    printf '%sFile not found: %s/missing%s\n' "$red" "$box" "$reset" | stderr_is
    status_is 0
}

@test "errors go red into a file when the output is on a terminal" {
    qm_on_terminal stdout checksum missing
    stdout_is_empty
    printf '%sFile not found: %s/missing%s\n' "$red" "$box" "$reset" | stderr_is
    status_is 4
}

@test "errors on a terminal are plain when the output goes elsewhere" {
    qm_on_terminal stderr checksum missing
    stdout_is_empty
    echo "File not found: $box/missing" | stderr_is
    status_is 4
}

@test "errors are plain with --no-color" {
    qm_on_terminal both checksum --no-color missing
    stdout_is_empty
    echo "File not found: $box/missing" | stderr_is
    status_is 4
}

@test "an unknown command is red, the advice plain" {
    qm_on_terminal both nonsense
    echo "Run 'qm --help' for available commands." | stdout_is
    printf '%sUnknown command: nonsense%s\n' "$red" "$reset" | stderr_is
    status_is 10
}

@test "usage lines are red" {
    qm_on_terminal both info
    stdout_is_empty
    printf '%sNo file specified. Usage: qm info [--json] [--short] <file> [file2 ...]%s\n' \
        "$red" "$reset" | stderr_is
    status_is 10
}

@test "a style ends before the line does, whatever the name holds" {
    mkdir $'two\nlines'
    qm_on_terminal stdout info $'two\nlines'
    head -n 2 "$seen/out" >"$seen/head" && mv "$seen/head" "$seen/out"
    printf '%stwo\nlines%s\n' "$bold" "$reset" | stdout_is
}
