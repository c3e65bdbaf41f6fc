#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# The words that are global wherever they stand, and the choice of the command.

load helpers

help_text() {
    cat <<'END'
qm — Quillmere CLI Tool

Usage: qm <command> [options] [arguments]

File Commands:
  info          Show file metadata and properties
  checksum      Calculate file checksums (SHA-256, SHA-1, MD5)
  tags          View and manage macOS file tags

GUI Commands:
  open          Open path or URL in Quillmere

Global Options:
  --version     Show version
  --help        Show help
  --json        JSON output format
  --verbose     Verbose output
  --quiet       Suppress non-essential output
  --no-color    Disable colored output
END
}

prints_help() {
    qm "$@"
    help_text | stdout_is
    succeeds
}

prints_version() {
    qm "$@"
    echo 'qm 1.0.0' | stdout_is
    succeeds
}

fails_as_unknown() {
    local word=$1
    shift
    qm "$@"
    echo "Run 'qm --help' for available commands." | stdout_is
    printf 'Unknown command: %s\n' "$word" | stderr_is
    status_is 10
}

@test "no word at all prints the help" {
    prints_help
}

@test "--help and -h print the help" {
    prints_help --help
    prints_help -h
}

@test "global options without a command print the help" {
    prints_help --json
    prints_help --verbose
    prints_help --quiet
    prints_help --no-color
    prints_help --json --quiet --verbose --no-color
}

@test "the help of the whole tool comes before that of a command" {
    prints_help tags --help file
    prints_help info --help
    prints_help info -h
    prints_help checksum file --help
    prints_help open --json /tmp -h
}

@test "the help is printed whatever else is on the line" {
    prints_help nonsense --help
    prints_help --help nonsense --json
    prints_help --json --no-color --help
}

@test "--version and -v print the version" {
    prints_version --version
    prints_version -v
}

@test "the version is printed wherever the word stands" {
    prints_version info -v x
    prints_version info missing --version
    prints_version checksum -v
    prints_version nonsense --version
    prints_version --json --quiet --verbose --version
    prints_version --no-color --version
    prints_version --version --no-color
}

@test "the first of help and version wins" {
    prints_help --help --version
    prints_help -h -v
    prints_help info --help f --version
    prints_version --version --help
    prints_version -v -h
    prints_version info -v f --help
}

@test "words that merely resemble global ones are not global" {
    fails_as_unknown --Version --Version
    fails_as_unknown --versions --versions
    fails_as_unknown --help=yes --help=yes
    fails_as_unknown --json=true --json=true info f
    fails_as_unknown -V -V
    fails_as_unknown -hv -hv
}

@test "an unknown command is told on both streams" {
    fails_as_unknown nonsense nonsense
    fails_as_unknown nonsense nonsense --json a b
    fails_as_unknown nonsense --json --quiet nonsense
    fails_as_unknown 'two words' 'two words'
}

@test "command words are exact" {
    fails_as_unknown INFO INFO f
    fails_as_unknown Info Info f
    fails_as_unknown inf inf f
    fails_as_unknown 'info ' 'info ' f
    fails_as_unknown infos infos
}

@test "the first word that is not global is the command, whatever it looks like" {
    fails_as_unknown --md5 --md5 checksum f
    fails_as_unknown -s -s info f
    fails_as_unknown -- -- info f
    fails_as_unknown - - info f
    fails_as_unknown -p -p left open /
    fails_as_unknown ./info ./info
}

@test "an empty command word is an unknown command" {
    fails_as_unknown '' ''
    fails_as_unknown '' '' info f
    fails_as_unknown '' --json ''
}

@test "global words may stand before and after the command" {
    make_file a.txt
    qm --json info a.txt
    cp "$seen/out" "$seen/before"
    qm info --json a.txt
    stdout_is <"$seen/before"
    qm info a.txt --json
    stdout_is <"$seen/before"
    { file_record "$box/a.txt"; echo; } | stdout_is
}

@test "--verbose and --quiet change no output" {
    make_file a.txt
    qm --verbose info a.txt --quiet missing
    { file_block "$box/a.txt"; echo; } | stdout_is
    echo "File not found: $box/missing" | stderr_is
    status_is 0
}

@test "--no-color is no operand" {
    make_file a.txt
    qm info --no-color a.txt
    file_block "$box/a.txt" | stdout_is
    succeeds
}

@test "info without an operand tells its usage" {
    qm info
    stdout_is_empty
    echo 'No file specified. Usage: qm info [--json] [--short] <file> [file2 ...]' | stderr_is
    status_is 10
}

@test "info with options alone tells its usage" {
    for option in --json --short -s --; do
        qm info "$option"
        stdout_is_empty
        echo 'No file specified. Usage: qm info [--json] [--short] <file> [file2 ...]' | stderr_is
        status_is 10
    done
}

@test "checksum without an operand tells its usage" {
    for option in --quiet --json --md5 --sha1 --sha256; do
        qm checksum "$option"
        stdout_is_empty
        stderr_is <<'END'
No file specified. Usage: qm checksum [--sha256|--sha1|--md5] [--json] [--verify=file] <file> [file2 ...]
END
        status_is 10
    done
}

@test "tags without an operand tells its usage" {
    qm tags
    stdout_is_empty
    stderr_is <<'END'
No file specified. Usage: qm tags [--add=TAG|--remove=TAG|--set=TAGS|--clear|--list] [--json] <file>
END
    status_is 10
}

@test "open without an operand tells its usage" {
    qm open
    stdout_is_empty
    stderr_is <<'END'
No path specified. Usage: qm open [-p left|right] [-t] [-w] [-b] <path> [path2]
END
    status_is 10
}
