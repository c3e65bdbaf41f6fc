#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# What `qm open` says when the application or the bus does not do its part. None of these
# failures says that the application is not running, so nothing is started and nobody waits.

load helpers
load application

setup() {
    pin_environment
    make_box
    install_entry "Exec=touch $box/started"
}

teardown() {
    stop_all
}

# Not started, not asked twice, no time spent.
at_once() {
    waited_never
    [ ! -e started ] || complain "the application was started"
}

# failure_of TEXT BEHAVIOUR...: what qm says of an application that behaves so.
failure_of() {
    start_bus
    start_application "${@:2}"
    timed_qm open /tmp
    fails_with "$1"
    at_once
    scripts_are 1
}

@test "the application's own text is shown as it is" {
    failure_of 'Quillmere got an error: Can’t get "x" %s {} \n.' \
        error 'Quillmere got an error: Can’t get "x" %s {} \n.'
    timed_qm open --quiet /tmp
    fails_with 'Quillmere got an error: Can’t get "x" %s {} \n.'
}

@test "an error with an empty text is unknown" {
    failure_of "Unknown error" error ""
}

@test "an error without a text is unknown" {
    failure_of "Unknown error" error-name org.example.Error
}

@test "phrases in other letters are no reason to wait" {
    failure_of "Application isn’t running: Not Running, verbindung" \
        error "Application isn’t running: Not Running, verbindung"
}

@test "the application's own error of a name that the bus uses keeps its text" {
    failure_of "mine" error-name org.freedesktop.DBus.Error.NoReply mine
}

@test "an error that speaks of an unknown method means that scripts are not accepted" {
    local name
    start_bus
    for name in Object Interface Method; do
        start_application error-name "org.freedesktop.DBus.Error.Unknown$name" text
        timed_qm open /tmp
        fails_with "$APPLICATION_ID does not accept scripts"
        at_once
        kill "$(cat "$record/ready")"
        rm "$record/ready"
        wait_for_no_owner
    done
}

wait_for_no_owner() {
    wait_for eval '! gdbus_has_owner'
}

gdbus_has_owner() {
    dbus-send --session --print-reply --dest=org.freedesktop.DBus / \
        org.freedesktop.DBus.GetNameOwner "string:$APPLICATION_ID" >"$seen/owner" 2>&1
}

@test "a name whose owner lacks the interface" {
    start_bus
    start_application no-interface
    timed_qm open /tmp
    fails_with "$APPLICATION_ID does not accept scripts"
    at_once
}

@test "a name whose owner has no object" {
    start_bus
    start_application no-object
    timed_qm open /tmp
    fails_with "$APPLICATION_ID does not accept scripts"
    at_once
}

@test "an answer of another form is a failure" {
    failure_of "$APPLICATION_ID did not answer with a text" number
}

@test "an answer of nothing is a failure" {
    failure_of "$APPLICATION_ID did not answer with a text" nothing
}

@test "an answer of two texts is a failure" {
    failure_of "$APPLICATION_ID did not answer with a text" two-texts
}

@test "any text is a good answer" {
    start_bus
    start_application answer "not running"
    qm open /tmp
    succeeds_opening
}

@test "characters that are none of Unicode's do no harm in an answer" {
    start_bus
    start_application answer $'\xef\xbf\xbe'
    qm open /tmp
    succeeds_opening
}

@test "an error text with such characters is unknown" {
    failure_of "Unknown error" error $'Datei \xef\xbf\xbe nicht gefunden'
}

@test "a bus that loses patience with an application that is running" {
    sed 's|</busconfig>|<limit name="reply_timeout">500</limit></busconfig>|' \
        /usr/share/dbus-1/session.conf >"$seen/session.conf"
    start_bus --config-file="$seen/session.conf"
    start_application silent
    timed_qm open /tmp
    fails_with "$APPLICATION_ID did not answer"
    at_once
    scripts_are 1
}

@test "an application that asks back gets an answer" {
    start_bus
    start_application ask-back
    timed_qm open /tmp
    fails_with org.freedesktop.DBus.Error.UnknownObject
    at_once
}

@test "a bus with too many guests at its door is asked again" {
    python3 - bus >"$seen/bus" 2>&1 3>&- <<'END' &
import socket, sys, time
listener = socket.socket(socket.AF_UNIX)
listener.bind(sys.argv[1])
listener.listen(0)
guests = [socket.socket(socket.AF_UNIX) for _ in range(1)]
for guest in guests:
    guest.connect(sys.argv[1])
open("full", "w").close()
time.sleep(0.5)
for _ in range(3):
    listener.accept()[0].close()
END
    wait_for test -e full
    export DBUS_SESSION_BUS_ADDRESS="unix:path=$box/bus"
    timed_qm open /tmp
    cannot_connect "a crowd"
    ! grep -q unavailable "$seen/err" || complain "gave up"
    [ "$elapsed" -ge 300 ] || complain "did not wait"
}

@test "a machine without the library of the bus" {
    mkdir lib
    touch lib/libsystemd.so.0
    LD_LIBRARY_PATH="$box/lib" timed_qm open /tmp
    cannot_connect "an empty library"
    grep -q libsystemd.so.0 "$seen/err"
}

@test "an answer of twenty million bytes is read to its end" {
    start_bus
    start_application huge-answer 20000000
    qm open /tmp
    succeeds_opening
}

@test "an error text of ten million bytes is shown whole" {
    start_bus
    start_application huge 10000000
    qm open /tmp
    status_is 1
    stdout_is_empty
    [ "$(wc -lc <"$seen/err" | tr -s ' ')" = " 1 10000009" ] || complain "not one whole line"
}

@test "without a bus the reason is told" {
    unset DBUS_SESSION_BUS_ADDRESS XDG_RUNTIME_DIR
    timed_qm open /tmp
    fails_with "Cannot connect to the session bus: neither DBUS_SESSION_BUS_ADDRESS nor\
 XDG_RUNTIME_DIR is set"
    at_once
}

@test "a bus address that leads nowhere" {
    local address
    local -A reasons=(["unix:path=$box/none"]="No such file or directory"
        ["unix:path=$box"]="Connection refused" ["unix:abstract=none-$$"]="Connection refused")
    for address in "${!reasons[@]}"; do
        DBUS_SESSION_BUS_ADDRESS=$address timed_qm open /tmp
        fails_with "Cannot connect to the session bus: ${reasons[$address]}"
        at_once
    done
    DBUS_SESSION_BUS_ADDRESS='' timed_qm open /tmp
    fails_with "Cannot connect to the session bus: DBUS_SESSION_BUS_ADDRESS is empty"
    for address in gugu unix: unix:path= "$(printf '\xff')" autolaunch: ";;" "unix:path=%zz" \
        tcp:host=127.0.0.1,port=1; do
        DBUS_SESSION_BUS_ADDRESS=$address timed_qm open /tmp
        cannot_connect "$address"
    done
}

# odd_bus BEHAVIOUR: a bus that misbehaves so, instead of a real one.
odd_bus() {
    python3 "$BATS_TEST_DIRNAME/odd_bus.py" bus "$1" >"$seen/bus" 2>&1 3>&- &
    wait_for test -S bus
    export DBUS_SESSION_BUS_ADDRESS="unix:path=$box/bus"
}

# Each of these buses is as good as none: one line, at once.
no_bus_in() {
    local behaviour
    for behaviour in "$@"; do
        odd_bus "$behaviour"
        timed_qm open /tmp
        cannot_connect "$behaviour"
        rm bus
    done
}

# One line that says so, at once.
cannot_connect() {
    [[ $(cat "$seen/err") == "Failed: Cannot connect to the session bus: "* ]] &&
        [ "$(wc -l <"$seen/err")" -eq 1 ] && [ "$status" -eq 1 ] || complain "with: $1"
    at_once
}

@test "a bus that talks nonsense" {
    no_bus_in close garbage refuse hello-garbage hello-flood hello-error no-name
}

@test "a bus that fails in the middle of the call" {
    no_bus_in reply-close reply-garbage reply-huge
}

@test "a reply whose text cannot be read is a reply, and those of others or to other calls are not" {
    odd_bus reply-bad-text
    timed_qm open /tmp
    succeeds_opening
    rm bus
    odd_bus reply-others-first
    timed_qm open /tmp
    succeeds_opening
}
