#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# `qm open` when the application is not running: it is started, two seconds pass, and the script is
# sent once more.

load helpers
load application

setup() {
    pin_environment
    make_box
}

teardown() {
    stop_all
}

not_running() {
    fails_with "$APPLICATION_ID is not running"
}

@test "an application that is not installed: nothing to start, but the wait and one retry" {
    start_bus
    timed_qm open /tmp
    not_running
    waited_once
}

@test "the Exec line starts the application, whose script comes with the retry" {
    start_bus
    install_entry "$(exec_line)"
    timed_qm open -b /tmp
    succeeds_opening
    waited_once
    scripts_are 1
    script_has 1 '    navigate to "/tmp" in active tab of left pane'
}

@test "an application that is started keeps no pipe of ours open" {
    start_bus
    install_entry "$(exec_line)"
    local said
    said=$(timeout 20 "$QM" open /tmp 2>&1)
    [ "$said" = "Opened in Quillmere" ]
    [ "$(readlink "/proc/$(cat "$record/ready")/fd/1")" = /dev/null ]
}

@test "the bus starts an application that lets it" {
    install_service
    start_bus
    install_entry DBusActivatable=true "Exec=touch $box/started"
    XDG_ACTIVATION_TOKEN=token timed_qm open /tmp
    succeeds_opening
    waited_once
    scripts_are 1
    [ ! -e started ]
    [ "$(cat "$record/activated")" = "({'activation-token': <'token'>},)" ]
}

@test "a service that is installed is not started where no desktop entry says so" {
    install_service
    start_bus
    timed_qm open /tmp
    not_running
    waited_once
    [ ! -e "$record/ready" ]
}

@test "what waits for a slow start on the bus keeps no pipe of ours open" {
    install_service late 8000
    start_bus
    install_entry DBusActivatable=true
    local said
    SECONDS=0
    said=$(timeout 60 "$QM" open /tmp 2>&1) || true
    [ "$said" = "Failed: $APPLICATION_ID is not running" ]
    [ "$SECONDS" -lt 7 ]
}

@test "an entry that names the bus where the bus knows no such service" {
    start_bus
    install_entry DBusActivatable=true "Exec=touch $box/started"
    timed_qm open /tmp
    not_running
    waited_once
    [ ! -e started ]
}

@test "a bus that falls silent keeps the launch from nobody" {
    python3 "$BATS_TEST_DIRNAME/odd_bus.py" bus absent-then-silent >"$seen/bus" 2>&1 3>&- &
    wait_for test -S bus
    export DBUS_SESSION_BUS_ADDRESS="unix:path=$box/bus"
    make_record
    install_entry DBusActivatable=true
    timed_qm open /tmp
    fails_with again
    [ "$elapsed" -ge 3000 ] && [ "$elapsed" -lt 10000 ] || complain "took $elapsed ms"
}

@test "an application that starts within the wait is reached" {
    start_bus
    install_entry "$(exec_line late 1000)"
    timed_qm open /tmp
    succeeds_opening
    waited_once
    scripts_are 1
}

@test "an application that starts later than the wait is not reached" {
    install_service late 3000
    start_bus
    install_entry DBusActivatable=true
    timed_qm open /tmp
    not_running
    waited_once
    wait_for test -e "$record/activated"
    scripts_are 0
}

@test "an application that ends in the middle of the call is started again" {
    start_bus
    start_application exit
    install_entry "$(exec_line)"
    timed_qm open /tmp
    succeeds_opening
    waited_once
}

@test "an application that ends in the middle of both calls" {
    start_bus
    start_application exit
    install_entry "$(exec_line exit)"
    timed_qm open /tmp
    not_running
    waited_once
}

@test "an application that dies between the first run and the retry" {
    start_bus
    start_application refuse-and-exit
    timed_qm open /tmp
    not_running
    waited_once
}

@test "the outcome of the retry replaces the first one" {
    start_bus
    install_entry "$(exec_line error other)"
    timed_qm open /tmp
    fails_with other
    waited_once
    scripts_are 1
}

@test "there is exactly one retry, also when that says the same" {
    local text
    start_bus
    for text in "App is not running" "Die Verbindung ist ungültig."; do
        start_application error "$text"
        timed_qm open /tmp
        fails_with "$text"
        waited_once
        scripts_are 2
        cmp "$record/script.1" "$record/script.2"
        kill "$(cat "$record/ready")"
        rm -r "$record"
    done
}

@test "the program gets the words of the Exec line, and nothing of ours" {
    start_bus
    cat >"$box/my program" <<'END'
#!/bin/sh
printf '<%s>\n' "$@" >words
ls /proc/$$/fd >descriptors
streams=$(readlink /proc/$$/fd/0 /proc/$$/fd/2)
[ -c /dev/stdout ] && echo "$streams" >streams
ps -o pid=,sid=,tty= -p $$ | tr -s ' ' >session
echo done >finished
END
    chmod 755 "$box/my program"
    mkdir place
    install_entry "Path=$box/place" \
        "Exec=\"$box/my program\" %U a\\sb \"c d\" \"\\\\\$HOME\" --icon=%i '%%' \"\" e"
    capture bash -c 'exec 7</dev/null; exec "$@"' - "$QM" open /tmp
    not_running
    printf '<%s>\n' a b 'c d' '$HOME' --icon= % '' e | diff - place/words
    if grep -qx 7 place/descriptors; then
        complain "a file of ours was open"
    fi
    printf '/dev/null\n/dev/null\n' | diff - place/streams
    read -r pid sid tty <place/session
    [ "$pid" = "$sid" ] && [ "$tty" = "?" ]
    [ -e place/finished ]
}

@test "entries that start nothing" {
    start_bus
    touch not-executable
    local started="Exec=touch $box/started" number=0 entry
    local -a entries=("$started"$'\nHidden=true' "$started"$'\nType=Link' "$started \"open"
        "$started %y" "$started"$'\nTryExec=no-such-program'
        "$started"$'\n'"TryExec=$box/not-executable" "$started"$'\n'"Path=$box/none"
        "Exec=" "Icon=x" "Exec=$box/none x" "Exec=$box x" "[Other]"$'\n'"$started")
    for entry in "${entries[@]}"; do
        number=$((number + 1))
        # Side by side, or the waits would add up.
        (
            export XDG_DATA_HOME="$box/$number"
            install_entry "$entry"
            status=0
            timeout "$limit" "$QM" open /tmp >"$number.said" 2>&1 || status=$?
            echo "$status" >>"$number.said"
        ) 3>&- &
    done
    wait_for eval '[ "$(cat *.said | grep -cx 1)" -eq '"${#entries[@]}"' ]'
    [ "$(sort -u ./*.said)" = "1
Failed: $APPLICATION_ID is not running" ]
    [ ! -e started ]
}

@test "the user's own entry comes before that of the system" {
    start_bus
    mkdir -p system/applications
    printf '%s\n' '[Desktop Entry]' "Exec=touch $box/system-started" \
        >"system/applications/$APPLICATION_ID.desktop"
    export XDG_DATA_DIRS="relative:$box/none:$box/system"
    qm open /tmp
    wait_for test -e system-started
    install_entry "Exec=touch $box/own-started"
    rm system-started
    qm open /tmp
    wait_for test -e own-started
    [ ! -e system-started ]
}

@test "an entry that cannot be read is no entry" {
    start_bus
    mkdir -p "$XDG_DATA_HOME/applications"
    mkfifo "$XDG_DATA_HOME/applications/$APPLICATION_ID.desktop"
    timed_qm open /tmp
    not_running
    waited_once
}
