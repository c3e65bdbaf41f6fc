#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# `qm open` and those who never answer: 25 seconds, then one line. All wait at the same time.

load helpers
load application

setup() {
    pin_environment
    make_box
    start_bus
}

teardown() {
    stop_all
}

# in_background NAME: opens a folder and keeps what is said, the status and the seconds.
in_background() {
    (
        start=$SECONDS
        status=0
        timeout "$limit" "$QM" open /tmp </dev/null >"$1.out" 2>"$1.err" || status=$?
        echo "$status $((SECONDS - start))" >"$1.end"
    ) 3>&- &
}

# gave_up NAME TEXT: one line, status 1, after 25 seconds.
gave_up() {
    local end seconds
    read -r end seconds <"$1.end"
    echo "$1: status $end after $seconds s: $(head -c 500 "$1.err")"
    [ "$end" -eq 1 ] && [ "$seconds" -ge 24 ] && [ "$seconds" -le 30 ] && [ ! -s "$1.out" ] &&
        [ "$(cat "$1.err")" = "Failed: $2" ]
}

@test "an application or a bus that never answers is given up" {
    local behaviour
    start_application silent
    in_background application
    for behaviour in silent hello-silent owner-silent reply-flood; do
        python3 "$BATS_TEST_DIRNAME/odd_bus.py" "$behaviour" "$behaviour" >"$seen/bus" 2>&1 3>&- &
        wait_for test -S "$behaviour"
        DBUS_SESSION_BUS_ADDRESS="unix:path=$box/$behaviour" in_background "at-$behaviour"
    done
    wait_for have_all_ended
    gave_up application "$APPLICATION_ID did not answer"
    gave_up at-silent "Cannot connect to the session bus: Connection timed out"
    gave_up at-hello-silent "Cannot connect to the session bus: Connection timed out"
    gave_up at-owner-silent "$APPLICATION_ID did not answer"
    gave_up at-reply-flood "$APPLICATION_ID did not answer"
    scripts_are 1
}

have_all_ended() {
    [ "$(find . -name '*.end' | wc -l)" -eq 5 ]
}
