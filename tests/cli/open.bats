#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# What `qm open` sends to an application that is running.

load helpers
load application

setup() {
    pin_environment
    make_box
    start_bus
    start_application
}

teardown() {
    stop_all
}

# The script of one target: its line, and the activate line unless $2 is "background".
script_of_one() {
    printf '%s\n' "tell application id \"$APPLICATION_ID\""
    [ "${2-}" = background ] || printf '  activate\n'
    printf '%s\n' '  tell front browser window' "    $1" '  end tell' 'end tell'
}

# one_target WORDS... "=>" LINE [background]: the command sends exactly the script with that line.
one_target() {
    local -a words=()
    while [ "$1" != "=>" ]; do
        words+=("$1")
        shift
    done
    rm -f "$record"/script.*
    qm open "${words[@]}"
    succeeds_opening
    cp "$record"/script.* "$record/script.last"
    script_of_one "${@:2}" | script_is last
}

@test "a folder is opened in the left pane, after the application was activated" {
    mkdir Documents
    one_target "$box/Documents" "=>" "navigate to \"$box/Documents\" in active tab of left pane"
}

@test "relative paths become absolute, and nothing has to exist" {
    one_target nowhere/./x/../y "=>" "navigate to \"$box/nowhere/y\" in active tab of left pane"
    one_target . "=>" "navigate to \"$box\" in active tab of left pane"
    one_target /a/../b/ "=>" "navigate to \"/a/../b/\" in active tab of left pane"
    one_target "~/x" "=>" "navigate to \"$box/~/x\" in active tab of left pane"
}

@test "an empty operand is the current folder" {
    one_target "" "=>" "navigate to \"$box\" in active tab of left pane"
}

@test "the pane is right only for the word itself" {
    one_target -p right /tmp "=>" 'navigate to "/tmp" in active tab of right pane'
    one_target --p=right /tmp "=>" 'navigate to "/tmp" in active tab of right pane'
    one_target -p left /tmp "=>" 'navigate to "/tmp" in active tab of left pane'
    one_target -p middle /tmp "=>" 'navigate to "/tmp" in active tab of left pane'
    one_target -p Right /tmp "=>" 'navigate to "/tmp" in active tab of left pane'
    one_target /tmp -p "=>" 'navigate to "/tmp" in active tab of left pane'
    one_target -p -t /tmp "=>" 'navigate to "/tmp" in active tab of left pane'
}

@test "the background option leaves the activate line out" {
    one_target -b /tmp "=>" 'navigate to "/tmp" in active tab of left pane' background
    one_target -p right -b sftp://host/dir "=>" \
        'connect to "sftp://host/dir" in active tab of right pane' background
    one_target --b=yes /tmp "=>" 'navigate to "/tmp" in active tab of left pane'
}

@test "some servers are connected to, others navigated to" {
    local prefix
    for prefix in sftp ftp s3; do
        one_target "$prefix://h/a/../b//" "=>" \
            "connect to \"$prefix://h/a/../b//\" in active tab of left pane"
    done
    for prefix in smb webdav; do
        one_target "$prefix://h/a/../b//" "=>" \
            "navigate to \"$prefix://h/a/../b//\" in active tab of left pane"
    done
}

@test "prefixes in capitals and other schemes are names of files" {
    one_target SFTP://h/x "=>" "navigate to \"$box/SFTP:/h/x\" in active tab of left pane"
    one_target https://h/x "=>" "navigate to \"$box/https:/h/x\" in active tab of left pane"
    one_target sftp:/h "=>" "navigate to \"$box/sftp:/h\" in active tab of left pane"
    one_target " sftp://h" "=>" "navigate to \"$box/ sftp:/h\" in active tab of left pane"
}

@test "two targets take both panes, whatever the pane option says" {
    qm open -p right a sftp://h/x
    succeeds_opening
    script_is 1 <<END
tell application id "$APPLICATION_ID"
  activate
  tell front browser window
    navigate to "$box/a" in active tab of left pane
    navigate to "sftp://h/x" in active tab of right pane
  end tell
end tell
END
}

@test "targets after the second are ignored" {
    qm open -b a b c
    succeeds_opening
    script_is 1 <<END
tell application id "$APPLICATION_ID"
  tell front browser window
    navigate to "$box/a" in active tab of left pane
    navigate to "$box/b" in active tab of right pane
  end tell
end tell
END
    qm open -b $(seq 100)
    succeeds_opening
    sed "s|$box/a|$box/1|; s|$box/b|$box/2|" "$record/script.1" | script_is 2
}

@test "quotation marks and backslashes are escaped, line breaks are not" {
    qm open '/a "b" \c' $'/line\nbreak\t\001'
    succeeds_opening
    script_has 1 '    navigate to "/a \"b\" \\c" in active tab of left pane'
    script_has 1 $'    navigate to "/line'
    script_has 1 $'break\t\001" in active tab of right pane'
    qm open 's3://"\'
    script_has 2 '    connect to "s3://\"\\" in active tab of left pane'
}

@test "names in other scripts arrive as they are" {
    qm open '/Übung/日本語/😀' $'/\xef\xbf\xbe'
    succeeds_opening
    script_has 1 '    navigate to "/Übung/日本語/😀" in active tab of left pane'
    script_has 1 $'    navigate to "/\xef\xbf\xbe" in active tab of right pane'
    [ "$(cat "$record/options.1")" = "{}" ]
}

@test "names that are not UTF-8 arrive as bytes beside a readable text" {
    qm open $'/\xff\xe2\x82 \xc3\xbc'
    succeeds_opening
    script_has 1 $'    navigate to "/\xef\xbf\xbd\xef\xbf\xbd \xc3\xbc" in active tab of left pane'
    python3 - "$record/options.1" "$APPLICATION_ID" <<'END'
import ast, re, sys
text = open(sys.argv[1]).read()
value = re.fullmatch(r"\{'source-bytes': <\[(.*)\]>\}", text).group(1)
source = bytes(int(number, 16) for number in value.replace("byte ", "").split(", "))
wanted = (b'tell application id "%s"\n  activate\n  tell front browser window\n'
          b'    navigate to "/\xff\xe2\x82 \xc3\xbc" in active tab of left pane\n  end tell\n'
          b'end tell\n' % sys.argv[2].encode())
assert source == wanted, source
END
}

@test "a path as long as the system allows an argument" {
    qm open "/$(head -c 131000 /dev/zero | tr '\0' '"')"
    succeeds_opening
    [ "$(wc -c <"$record/script.1")" -gt 262000 ]
}

@test "options without meaning here are accepted" {
    one_target -t -w /tmp "=>" 'navigate to "/tmp" in active tab of left pane'
    one_target -- /tmp "=>" 'navigate to "/tmp" in active tab of left pane'
    one_target --unknown=x -z /tmp --json --verbose "=>" \
        'navigate to "/tmp" in active tab of left pane'
    one_target - "=>" "navigate to \"$box/-\" in active tab of left pane"
}

@test "quiet suppresses the message of success" {
    qm open --quiet /tmp
    stdout_is_empty
    succeeds
    scripts_are 1
}

@test "the message of success is green on a terminal" {
    qm_on_terminal stdout open /tmp
    printf '\033[32mOpened in Quillmere\033[0m\n' | stdout_is
}

@test "the desktop's permission to come to the front is handed on" {
    XDG_ACTIVATION_TOKEN=token-1 DESKTOP_STARTUP_ID=other qm open /tmp
    succeeds_opening
    [ "$(cat "$record/options.1")" = "{'activation-token': <'token-1'>}" ]
    DESKTOP_STARTUP_ID=token-2 qm open /tmp
    [ "$(cat "$record/options.2")" = "{'activation-token': <'token-2'>}" ]
    XDG_ACTIVATION_TOKEN=$'\xff' qm open /tmp
    succeeds_opening
    [ "$(cat "$record/options.3")" = "{}" ]
}

@test "the bus is found by its place when the environment does not name it" {
    mkdir runtime
    local path=${DBUS_SESSION_BUS_ADDRESS#unix:path=}
    [ "$path" != "$DBUS_SESSION_BUS_ADDRESS" ] || skip "the bus is not at a path"
    ln -s "${path%%,*}" runtime/bus
    unset DBUS_SESSION_BUS_ADDRESS
    XDG_RUNTIME_DIR="$box/runtime" qm open /tmp
    succeeds_opening
}

@test "the library of the bus is loaded only for this command" {
    make_file f
    local words
    for words in --help "info f" "checksum f" "tags f"; do
        # shellcheck disable=SC2086 # the words of one command
        LD_DEBUG=files capture "$QM" $words
        ! grep -qE 'libsystemd|libdbus|libgio' "$seen/err" || complain "loads it: $words"
    done
    LD_DEBUG=files capture "$QM" open /tmp
    grep -q libsystemd "$seen/err"
}

@test "without an operand nothing is sent" {
    qm open -p right
    stdout_is_empty
    stderr_is <<<"No path specified. Usage: qm open [-p left|right] [-t] [-w] [-b] <path> [path2]"
    status_is 10
    scripts_are 0
}
