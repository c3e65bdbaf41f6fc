# SPDX-License-Identifier: Apache-2.0
# Shared by the .bats files about `qm open`: a session bus of the test's own, and an application
# that owns the file manager's name there. TEST_APPLICATION names its program, APPLICATION_ID the
# name.

: "${TEST_APPLICATION:?must name the application that stands for the file manager}"
: "${APPLICATION_ID:?must be the id that qm was built for}"
TEST_APPLICATION=$(realpath "$TEST_APPLICATION")

# What is started here must not keep bats waiting for its output. The arguments replace the choice
# of the usual session bus.
start_bus() {
    make_record
    mkdir -p "$XDG_DATA_HOME"
    unset DBUS_STARTER_ADDRESS DBUS_STARTER_BUS_TYPE DESKTOP_STARTUP_ID
    dbus-daemon "${@:---session}" --nofork --print-address=9 9>"$seen/address" >"$seen/bus" 2>&1 3>&- &
    bus=$!
    wait_for test -s "$seen/address"
    DBUS_SESSION_BUS_ADDRESS=$(cat "$seen/address")
    export DBUS_SESSION_BUS_ADDRESS
}

# Starts the application with a behaviour and waits until it has its name.
start_application() {
    mkdir -p "$record"
    "$TEST_APPLICATION" "$record" "$@" </dev/null >"$seen/application" 2>&1 3>&- &
    wait_for test -e "$record/ready"
}

# Where the application keeps what it got: a folder whose name needs quoting.
make_record() {
    record="$BATS_TEST_TMPDIR/re\$cord of 'the' \"application\""
    mkdir -p "$record"
}

stop_all() {
    local process
    for process in "${bus-}" "$(cat "${record-}/ready" 2>/dev/null)" $(jobs -p); do
        [ -z "$process" ] || kill "$process" 2>/dev/null || true
    done
}

# The Nth script that the application got is standard input, to the last byte.
script_is() {
    cat >"$seen/wanted"
    cmp -s "$seen/wanted" "$record/script.$1" && return
    diff <(cat -A "$seen/wanted") <(cat -A "$record/script.$1") >&2
    complain "script $1 differs (< wanted, > seen)"
}

# script_has NUMBER LINE: such a line is in the script.
script_has() {
    grep -qxF -- "$2" "$record/script.$1" || complain "script $1 lacks: $2"
}

scripts_are() {
    local count
    count=$(find "$record" -name 'script.*' | wc -l)
    [ "$count" -eq "$1" ] || complain "$count scripts instead of $1"
}

succeeds_opening() {
    stdout_is <<<"Opened in Quillmere"
    succeeds
}

# One line on standard error, status 1.
fails_with() {
    stderr_is <<<"Failed: $1"
    stdout_is_empty
    status_is 1
}

# Runs qm and keeps how many milliseconds it took.
timed_qm() {
    local start=${EPOCHREALTIME/./}
    qm "$@"
    elapsed=$(((${EPOCHREALTIME/./} - start) / 1000))
}

# The wait for an application that was started takes two seconds; the rest is the machine's.
waited_once() {
    [ "$elapsed" -ge 2000 ] && [ "$elapsed" -lt 3900 ] || complain "took $elapsed ms"
}

waited_never() {
    [ "$elapsed" -lt 2000 ] || complain "took $elapsed ms"
}

# Writes the application's desktop entry; its further lines are the arguments.
install_entry() {
    mkdir -p "$XDG_DATA_HOME/applications"
    printf '%s\n' '[Desktop Entry]' 'Type=Application' 'Name=Test' "$@" \
        >"$XDG_DATA_HOME/applications/$APPLICATION_ID.desktop"
}

# An Exec line that starts the application with a behaviour. Inside of quotes four characters are
# escaped; each backslash is written twice, because the value is a string as well.
exec_line() {
    local quoted=${record//\"/\\\\\"}
    printf 'Exec="%s" "%s"%s %%U' "$TEST_APPLICATION" "${quoted//\$/\\\\\$}" "${*/#/ }"
}

# Lets the bus start the application with a behaviour.
install_service() {
    make_record
    ln -sfn "$record" "$BATS_TEST_TMPDIR/record"
    mkdir -p "$XDG_DATA_HOME/dbus-1/services"
    printf '%s\n' '[D-BUS Service]' "Name=$APPLICATION_ID" \
        "Exec=$TEST_APPLICATION $BATS_TEST_TMPDIR/record${*/#/ }" \
        >"$XDG_DATA_HOME/dbus-1/services/$APPLICATION_ID.service"
}
