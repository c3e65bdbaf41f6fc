# SPDX-License-Identifier: Apache-2.0
# Shared by the .bats files that need the disk service of a desktop: a small system of its own, with
# a system bus, polkitd, udevd and udisksd, whose mounts nobody else sees. Loop devices are the
# machine's.

readonly udisksd=/usr/libexec/udisks2/udisksd
readonly polkitd=/usr/lib/polkit-1/polkitd
readonly udevd=/lib/systemd/systemd-udevd
# Everybody's folder and no rights: what a desktop's user has.
readonly common_user=65534

exec_inside() {
    exec "${within[@]}" "$@"
}

# start_system RULE: RULE is the answer of polkit (yes, no, auth_admin) to the common user.
start_system() {
    needs_loop_devices
    local program
    for program in "$udisksd" "$polkitd" "$udevd"; do
        [ -x "$program" ] || skip "$program is not there"
    done
    unshare --mount --propagation private true 2>/dev/null ||
        skip "mounts cannot be kept from others here"
    unshare --mount --propagation private sleep infinity 3>&- &
    system=$!
    services=("$system")
    within=(env -u DBUS_SYSTEM_BUS_ADDRESS nsenter --mount="/proc/$system/ns/mnt" --wd="$PWD")
    wait_for has_own_mounts "$system"
    polkit_answer=$1 inside bash -eu -c "$(declare -f lay_out_system); lay_out_system"
    serve dbus-daemon --config-file=/run/bus.conf --nofork
    wait_for inside test -S /run/dbus/system_bus_socket
    serve "$polkitd" --no-debug
    # A machine has one udevd; on a desktop it is there already.
    pgrep -f systemd-udevd >/dev/null || serve "$udevd"
    serve "$udisksd"
    wait_for inside gdbus call --system --timeout 2 -d org.freedesktop.DBus -o / \
        -m org.freedesktop.DBus.GetNameOwner org.freedesktop.PolicyKit1
    wait_for service_answers
}

service_answers() {
    inside gdbus call --system --timeout 2 -d org.freedesktop.UDisks2 \
        -o /org/freedesktop/UDisks2/Manager -m org.freedesktop.DBus.Peer.Ping
}

# Runs within, in the mount namespace of its own.
lay_out_system() {
    mount --bind /run/udev /mnt 2>/dev/null || true
    mount -t tmpfs run /run
    mkdir -p /run/dbus /run/udev /run/common /run/user
    ! mountpoint -q /mnt || mount --move /mnt /run/udev
    mkdir -p /media /var/lib/udisks2
    mount -t tmpfs media /media
    mount -t tmpfs state /var/lib/udisks2
    mount -t tmpfs rules /etc/polkit-1/rules.d
    chmod 755 /run /media /etc/polkit-1/rules.d
    chmod 1777 /run/common
    cat >/etc/polkit-1/rules.d/00-test.rules <<RULE
polkit.addRule(function(action, subject) {
    if (action.id.indexOf("org.freedesktop.udisks2.") == 0) {
        return "$polkit_answer";
    }
});
RULE
    cat >/run/bus.conf <<CONFIGURATION
<busconfig>
  <type>system</type>
  <listen>unix:path=/run/dbus/system_bus_socket</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow eavesdrop="true"/>
    <allow send_destination="*" eavesdrop="true"/>
  </policy>
</busconfig>
CONFIGURATION
}

has_own_mounts() {
    [ "$(readlink "/proc/$1/ns/mnt")" != "$(readlink /proc/self/ns/mnt)" ]
}

# Runs a command within.
inside() {
    "${within[@]}" "$@"
}

serve() {
    exec_inside "$@" >>"$seen/services" 2>&1 3>&- &
    services+=("$!")
}

stop_system() {
    [ -n "${system:-}" ] || return 0
    local mounted
    inside findmnt -rno TARGET,SOURCE | grep ' /dev/loop' | tac | while read -r mounted _; do
        inside umount -l "$(printf '%b' "$mounted")" || true
    done
    losetup -nO NAME,BACK-FILE | grep -F -e "$BATS_TEST_TMPDIR/" -e /run/common/ |
        while read -r mounted _; do
            losetup -d "$mounted" || true
        done
    kill "${services[@]}" 2>/dev/null || true
    wait "${services[@]}" 2>/dev/null || true
}
