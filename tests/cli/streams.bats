#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Streams that are closed, full or no longer read.

load helpers

# Runs a line of the shell with qm as "$0"; a redirection in it wins over those of `capture`.
line() {
    capture bash -c "$1" "$QM" "${@:2}"
}

@test "closed standard output is a failure told in one line" {
    make_file a.txt
    for words in --help --version "info a.txt" "info --json a.txt" "checksum a.txt"; do
        line "exec \"\$0\" $words >&-"
        stdout_is_empty
        echo 'qm: write error: Bad file descriptor' | stderr_is
        status_is 1
    done
}

@test "a full device is a failure told in one line" {
    make_file a.txt
    for words in --help --version "info a.txt" "info -s a.txt" "info --json a.txt" \
        "checksum a.txt" "checksum --json a.txt"; do
        line "exec \"\$0\" $words >/dev/full"
        stdout_is_empty
        echo 'qm: write error: No space left on device' | stderr_is
        status_is 1
    done
}

@test "a full device is noticed also by those who write much" {
    make_file a.txt
    # shellcheck disable=SC2046 # many words
    line 'exec "$0" info "$@" >/dev/full' $(printf 'a.txt %.0s' {1..5000})
    stdout_is_empty
    echo 'qm: write error: No space left on device' | stderr_is
    status_is 1
}

@test "the reason of a failed write is not that of another call" {
    make_file a.txt
    ln -s a.txt link
    # The last of many operands fails in other ways after the write has failed.
    # shellcheck disable=SC2046 # many words
    line 'exec "$0" info -s "$@" >/dev/full' $(printf 'link %.0s' {1..5000}) missing
    printf '%s\n' "File not found: $box/missing" 'qm: write error: No space left on device' |
        stderr_is
    status_is 1
}

@test "where there is nothing to write, a closed or full output does not matter" {
    for target in '&-' /dev/full; do
        line "exec \"\$0\" info missing >$target"
        echo "File not found: $box/missing" | stderr_is
        status_is 0
        line "exec \"\$0\" checksum --verify >$target"
        stderr_is_empty
        status_is 0
    done
}

@test "the status of the command is kept when its output is lost" {
    make_file a.txt
    line 'exec "$0" checksum missing a.txt >/dev/full'
    printf '%s\n' "File not found: $box/missing" 'qm: write error: No space left on device' |
        stderr_is
    status_is 4
    line 'exec "$0" nonsense >/dev/full'
    printf '%s\n' 'Unknown command: nonsense' 'qm: write error: No space left on device' |
        stderr_is
    status_is 10
}

@test "closed or full standard error costs nothing but the messages" {
    make_file a.txt
    for target in '&-' /dev/full; do
        line "exec \"\$0\" info missing a.txt 2>$target"
        file_block "$box/a.txt" '' | stdout_is
        status_is 0
        line "exec \"\$0\" checksum missing a.txt 2>$target"
        sha256sum a.txt | stdout_is
        status_is 4
        line "exec \"\$0\" info 2>$target"
        stdout_is_empty
        status_is 10
    done
}

@test "the place of a closed stream is taken, so that no file gets it" {
    empty='e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855'
    [ -e /proc/self/fd ] || skip "no /proc"
    line 'exec "$0" checksum /proc/self/fd/2 2>&-'
    echo "$empty  2" | stdout_is
    status_is 0
    line 'exec "$0" checksum /proc/self/fd/0 <&-'
    echo "$empty  0" | stdout_is
    succeeds
    line 'exec "$0" checksum /proc/self/fd/1 >&-'
    echo 'qm: write error: Bad file descriptor' | stderr_is
    status_is 1
}

@test "closed standard input does not matter" {
    make_file a.txt
    line 'exec "$0" info a.txt <&-'
    file_block "$box/a.txt" | stdout_is
    succeeds
    line 'exec "$0" checksum a.txt <&-'
    sha256sum a.txt | stdout_is
    succeeds
}

@test "all streams closed" {
    make_file a.txt
    line '"$0" info a.txt <&- >&- 2>&-; echo $? >status'
    [ "$(<status)" = 1 ] || complain "status $(<status)"
    line '"$0" checksum missing <&- >&- 2>&-; echo $? >status'
    [ "$(<status)" = 4 ] || complain "status $(<status)"
}

@test "standard input is never read" {
    status=0
    printf 'line\n' | { "$QM" info - >"$seen/out" 2>"$seen/err"; cat >"$seen/rest"; }
    printf 'line\n' | cmp - "$seen/rest"
    echo "File not found: $box/-" | stderr_is
}

@test "a reader that leaves ends qm by the signal of pipes" {
    make_file a.txt
    # shellcheck disable=SC2046 # many words
    line 'env --default-signal=PIPE "$0" info "$@" | head -n 1; echo "${PIPESTATUS[0]}" >status' \
        $(printf 'a.txt %.0s' {1..10000})
    echo a.txt | stdout_is
    stderr_is_empty
    [ "$(<status)" = 141 ] || complain "status $(<status)"
}

@test "a reader that leaves is a failed write where the signal is ignored" {
    make_file a.txt
    # shellcheck disable=SC2046 # many words
    line 'env --ignore-signal=PIPE "$0" info "$@" | head -n 1; echo "${PIPESTATUS[0]}" >status' \
        $(printf 'a.txt %.0s' {1..10000})
    echo a.txt | stdout_is
    echo 'qm: write error: Broken pipe' | stderr_is
    [ "$(<status)" = 1 ] || complain "status $(<status)"
}

@test "a reader that leaves JSON is a failed write too" {
    make_file a.txt
    # shellcheck disable=SC2046 # many words
    line 'env --ignore-signal=PIPE "$0" info --json "$@" | head -n 1
        echo "${PIPESTATUS[0]}" >status' $(printf 'a.txt %.0s' {1..10000})
    echo '[' | stdout_is
    echo 'qm: write error: Broken pipe' | stderr_is
    [ "$(<status)" = 1 ] || complain "status $(<status)"
}
