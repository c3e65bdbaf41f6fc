#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# The words after the command: which are options, which take a value, which are operands.

load helpers

setup() {
    pin_environment
    make_box
    make_file a.txt
}

# What a.txt gives when it is the only operand, by form.
prints_block() {
    file_block "$box/a.txt" | stdout_is
    succeeds
}

prints_line() {
    echo '3 bytes  2024-01-15 12:34:56  a.txt' | stdout_is
    succeeds
}

prints_record() {
    { file_record "$box/a.txt"; echo; } | stdout_is
    succeeds
}

@test "options may follow their operands" {
    qm info a.txt -s
    prints_line
    qm info a.txt --short
    prints_line
}

@test "a flag counts when its value is true" {
    qm info --short=true a.txt
    prints_line
    qm info --s=true a.txt
    prints_line
    qm info --json=true a.txt
    prints_record
}

@test "a flag with any other value does not count" {
    for value in false yes TRUE 1 '' true=; do
        qm info "--short=$value" a.txt
        prints_block
        qm info "--json=$value" a.txt
        prints_block
        qm info "--s=$value" a.txt
        prints_block
    done
}

@test "the value begins after the first equals sign" {
    qm info --short=true=true a.txt
    prints_block
    qm checksum --verify=a=b
    stdout_is_empty
    succeeds
}

@test "the last of repeated options counts" {
    qm info --short=no --short a.txt
    prints_line
    qm info --short --short=no a.txt
    prints_block
    qm info --json=true --json=no a.txt
    prints_block
    qm --json info --json=no a.txt
    prints_block
    # The global word is read before all others, wherever it stands.
    qm info --json=no --json a.txt
    prints_block
}

@test "-s and --short are two options with one meaning" {
    qm info --short=no -s a.txt
    prints_line
    qm info --s=no --short a.txt
    prints_line
}

@test "two dashes alone end nothing" {
    qm info -- a.txt
    prints_block
    qm info -- -s a.txt
    prints_line
    qm info a.txt -- --short
    prints_line
    qm info -- a.txt --json
    prints_record
}

@test "options with an empty name are accepted" {
    qm info --=x a.txt
    prints_block
    qm info --= -s a.txt
    prints_line
}

@test "unknown options change nothing" {
    qm info --nonsense --other=3 -x -9 a.txt
    prints_block
    qm info --version=2 --help=x a.txt
    prints_block
    qm info --no-color=true a.txt
    prints_block
    qm info --SHORT -S a.txt
    prints_block
}

@test "-p takes the next word for its value" {
    qm info -p left a.txt
    prints_block
    qm info -p a.txt a.txt
    prints_block
    qm info -p '' a.txt
    prints_block
}

@test "-p takes no word that begins with a dash" {
    qm info -p -s a.txt
    prints_line
    qm info -p --short a.txt
    prints_line
    qm info -p - a.txt
    file_block "$box/a.txt" '' | stdout_is
    echo "File not found: $box/-" | stderr_is
}

@test "-p may end the line" {
    qm info a.txt -p
    prints_block
}

@test "-p finds its value behind global words" {
    qm info -p --json left a.txt
    prints_record
}

@test "no other short option takes a value" {
    for option in -t -w -b -x -P; do
        qm info "$option" a.txt
        prints_block
    done
}

@test "one dash and one letter is an option also beyond ASCII" {
    qm info -é a.txt
    prints_block
    qm info -– a.txt
    prints_block
}

@test "short options are not clustered" {
    qm info -abc
    stdout_is_empty
    echo "File not found: $box/-abc" | stderr_is
    status_is 0
    qm info -ss a.txt
    file_block "$box/a.txt" '' | stdout_is
    echo "File not found: $box/-ss" | stderr_is
    status_is 0
}

@test "an operand may begin with one dash" {
    make_file -abc.txt
    qm info -s -abc.txt
    echo '3 bytes  2024-01-15 12:34:56  -abc.txt' | stdout_is
    succeeds
}

@test "a lone dash is an operand" {
    qm info -
    stdout_is_empty
    echo "File not found: $box/-" | stderr_is
    status_is 0
    make_file ./-
    qm info -s -
    echo '3 bytes  2024-01-15 12:34:56  -' | stdout_is
    succeeds
}

@test "a word without a dash is never an option" {
    qm info json a.txt short=true
    file_block "$box/a.txt" '' | stdout_is
    stderr_is <<END
File not found: $box/json
File not found: $box/short=true
END
    status_is 0
}
