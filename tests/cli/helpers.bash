# SPDX-License-Identifier: Apache-2.0
# Shared by the .bats files of this folder. The tool under test is named by QM.
#
# Both streams are kept in files and compared byte by byte: `run` of bats drops line breaks at the
# end and cannot tell the streams apart.

: "${QM:?must name the qm to be tested}"
QM=$(realpath "$QM")
helpers=$(realpath "${BASH_SOURCE[0]%/*}")

# A guard against blocking, far beyond what any command here takes.
readonly limit=60

setup() {
    pin_environment
    make_box
}

# Nothing of the machine or of the user may show in the output.
pin_environment() {
    unset LANG LANGUAGE ${!LC_*} ${!XDG_*} CDPATH POSIXLY_CORRECT TIME_STYLE
    # The disk service of the machine is nothing for tests.
    export DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent/bus
    export LC_ALL=C.UTF-8 TZ=UTC TERM=xterm
    export PATH="/usr/bin:/bin:$PATH"
    export HOME="$BATS_TEST_TMPDIR/home"
    export XDG_CONFIG_HOME="$HOME/.config" XDG_DATA_HOME="$HOME/.local/share"
    export XDG_CACHE_HOME="$HOME/.cache" XDG_STATE_HOME="$HOME/.local/state"
    umask 022
}

# The test works in `box`, an empty folder whose path holds no link; `seen` is outside of it.
make_box() {
    seen="$BATS_TEST_TMPDIR/seen"
    mkdir -p "$HOME" "$seen" "$BATS_TEST_TMPDIR/box"
    cd "$BATS_TEST_TMPDIR/box"
    box=$(pwd -P)
    cd "$box"
}

# Runs a command line and keeps its output and status.
capture() {
    status=0
    timeout --kill-after=5 "$limit" "$@" </dev/null >"$seen/out" 2>"$seen/err" || status=$?
}

qm() {
    capture "$QM" "$@"
}

# Runs qm with stdout, stderr or both on a terminal (a pseudo-terminal for each).
qm_on_terminal() {
    local streams=$1
    shift
    status=0
    python3 "$helpers/on_terminal.py" --limit "$limit" "$streams" \
        "$seen/out" "$seen/err" "$QM" "$@" || status=$?
}

# Runs qm without the superuser's right to read everything; skips the test where that cannot be.
qm_unprivileged() {
    local -a mantle=()
    if [ "$(id -u)" = 0 ]; then
        find_mantle
    fi
    capture "${mantle[@]}" "$QM" "$@"
}

# Root without these capabilities is the safer choice: the tool may lie in a folder of root's own.
find_mantle() {
    local -a try
    local probe="$BATS_TEST_TMPDIR/unreadable"
    install -m 000 /dev/null "$probe"
    for try in "--bounding-set=-dac_override,-dac_read_search" "--reuid=65534 --clear-groups"; do
        # shellcheck disable=SC2206 # the words of one way
        mantle=(setpriv $try)
        if "${mantle[@]}" "$QM" --version >/dev/null 2>&1 &&
            ! "${mantle[@]}" cat "$probe" >/dev/null 2>&1; then
            return 0
        fi
    done
    skip "root cannot give up its right to read everything here"
}

status_is() {
    [ "$status" -eq "$1" ] || complain "status $status instead of $1"
}

# What is expected comes on standard input, to the last byte.
stdout_is() {
    cat >"$seen/wanted"
    same out
}

stderr_is() {
    cat >"$seen/wanted"
    same err
}

stdout_is_empty() {
    stdout_is </dev/null
}

stderr_is_empty() {
    stderr_is </dev/null
}

# Nothing on standard error, status 0.
succeeds() {
    stderr_is_empty
    status_is 0
}

same() {
    cmp -s "$seen/wanted" "$seen/$1" && return
    diff <(cat -A "$seen/wanted") <(cat -A "$seen/$1") | head -n 60 >&2
    complain "std$1 differs (< wanted, > seen)"
}

complain() {
    echo "$1" >&2
    echo "stdout: $(head -c 2000 "$seen/out" | cat -A)" >&2
    echo "stderr: $(head -c 2000 "$seen/err" | cat -A)" >&2
    return 1
}

# wait_for COMMAND...: until it succeeds.
wait_for() {
    local try
    for ((try = 0; try < 20 * limit; try++)); do
        ! "$@" >/dev/null 2>&1 || return 0
        sleep 0.05
    done
    complain "waited in vain for: $*"
}

# Checks the JSON document on standard output with a Python expression about `document`. Texts
# that stand for bytes outside UTF-8 must have become replacement characters before.
json_holds() {
    python3 -c '
import json, sys
document = json.loads(open(sys.argv[1], "rb").read().decode("utf-8", "strict"))
wanted = sys.argv[3:]
sys.exit(0 if eval("(" + sys.argv[2] + ")") else 1)
' "$seen/out" "$@" || complain "does not hold: $1"
}

# The owner as the tool shows it: names, or numbers where the account data base knows none.
owner_name() {
    local name
    name=$(stat -L -c %U -- "$1")
    [ "$name" != UNKNOWN ] || name=$(stat -L -c %u -- "$1")
    printf '%s' "$name"
}

group_name() {
    local name
    name=$(stat -L -c %G -- "$1")
    [ "$name" != UNKNOWN ] || name=$(stat -L -c %g -- "$1")
    printf '%s' "$name"
}

# The birth time in the zone of TZ, or nothing where the file system keeps none.
creation_date() {
    [ "$(stat -c %w -- "$1")" = - ] || date -d "@$(stat -c %W -- "$1")" '+%F %T'
}

# An ordinary file of 3 bytes with a modification date of its own.
make_file() {
    printf 'hi\n' >"$1"
    chmod 644 -- "$1"
    touch -d '2024-01-15 12:34:56 UTC' -- "$1"
}

# The long block of what make_file made, under the path $1; the other lines are given by the rest.
file_block() {
    local path=$1 created
    created=$(creation_date "$path")
    printf '%s\n' "${path##*/}" \
        "  Path:         $path" \
        "  Size:         3 bytes (3 bytes)" \
        "  Kind:         text" \
        "  UTI:          public.plain-text" \
        "  Created:      ${created:-—}" \
        "  Modified:     2024-01-15 12:34:56" \
        "  Permissions:  -rw-r--r-- (644)" \
        "  Owner:        $(owner_name "$path"):$(group_name "$path")" \
        "${@:2}"
}

# The JSON record of what make_file made, indented by $2.
file_record() {
    local path=$1 indent=${2-} created
    created=$(creation_date "$path")
    printf "$indent%s\n" '{' \
        "  \"name\": \"${path##*/}\"," \
        "  \"path\": \"$path\"," \
        '  "size": 3,' \
        '  "kind": "text",' \
        '  "uti": "public.plain-text",' \
        '  "isDirectory": false,' \
        '  "isHidden": false,' \
        '  "isSymlink": false,' \
        '  "permissions": "-rw-r--r--",' \
        '  "posixPermissions": 420,' \
        "  \"owner\": \"$(owner_name "$path")\"," \
        "  \"group\": \"$(group_name "$path")\"," \
        '  "tags": [],' \
        ${created:+"  \"created\": \"$created\","} \
        '  "modified": "2024-01-15 12:34:56"'
    printf '%s}' "$indent"
}

# The record of a file that is not there.
empty_record() {
    local indent=${1-}
    printf "$indent%s\n" '{' \
        '  "name": "",' \
        '  "path": "",' \
        '  "size": 0,' \
        '  "kind": "",' \
        '  "uti": "",' \
        '  "isDirectory": false,' \
        '  "isHidden": false,' \
        '  "isSymlink": false,' \
        '  "permissions": "",' \
        '  "posixPermissions": 0,' \
        '  "owner": "",' \
        '  "group": "",' \
        '  "tags": []'
    printf '%s}' "$indent"
}

# One line of the long block of the last run, by its label; dates differ from run to run.
line_of() {
    sed -n "s/^  $1: *//p" "$seen/out"
}

line_is() {
    [ "$(line_of "$1")" = "$2" ] || complain "the line $1 reads '$(line_of "$1")' instead of '$2'"
}

is_root() {
    [ "$(id -u)" = 0 ]
}

needs_root() {
    is_root || skip "only root may do this"
}

# The last argument is a file; skips the test where it can carry no attributes.
set_attribute() {
    setfattr "$@" 2>/dev/null || skip "no extended attributes here"
}
