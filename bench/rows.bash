# SPDX-License-Identifier: Apache-2.0
# What the sections of bench/run write: rows of words between tabs, on descriptor 3. The first word
# is the kind of row and the second its section; bench/report turns them into tables.
#
# Of whoever uses this: $build, $quick, $section; and the file "tools", which collects what tools qm
# was compared with.
# shellcheck shell=bash disable=SC2154

# row KIND WORD...
row() {
    local IFS=$'\t'
    printf '%s\n' "$*" >&3
}

# figure TITLE VALUE [UNIT [TARGET]]: the target is what the value has to stay under. Without a value,
# what should have told it has failed.
figure() {
    if [ -n "$2" ]; then
        row figure "$section" "$1" "$2" "${3-}" "${4--}"
    else
        row missing "$section" "$1: a command failed"
    fi
}

# needs TOOL...: whether all of them are there; says so when not.
needs() {
    local tool absent=()
    for tool; do
        command -v "$tool" >/dev/null || absent+=("$tool")
    done
    [ ${#absent[@]} = 0 ] || row missing "$section" "needs ${absent[*]}"
    [ ${#absent[@]} = 0 ]
}

# other_tool COMMAND... -- COMMAND...: the tool of the second one. In `sh -c SCRIPT NAME` it is NAME.
other_tool() {
    while [ "$1" != -- ]; do shift; done
    if [ "$2" = sh ]; then echo "$5"; else echo "$2"; fi
}

# compare TITLE OTHER TARGET ROUNDS COMMAND... -- COMMAND...
# Leaves the times in microseconds in $ours and $theirs, which are empty when there are none.
compare() {
    local title=$1 other=$2 target=$3 rounds=$4 tool
    shift 4
    ours='' theirs=''
    tool=$(other_tool "$@")
    needs "$tool" || return 0
    echo "$tool" >>tools
    [ -z "$quick" ] || rounds=1
    if read -r ours theirs _ < <("$build/compare_commands" "$rounds" "$@"); then
        row ratio "$section" "$title" "$other" "$ours" "$theirs" "$target"
    else
        row missing "$section" "$title, against $other: a command failed"
    fi
}

# rate TITLE FILES MICROSECONDS
rate() { [ -z "$3" ] || figure "$1" $(($2 * 1000000 / $3)) "files a second"; }

# memory_of COMMAND...: its largest resident size in MiB.
memory_of() {
    local memory
    read -r _ _ memory _ < <("$build/compare_commands" 1 "$@" -- /bin/true) || return 0
    echo $(((memory + 512) / 1024))
}

# thousands NUMBER: as it is read.
thousands() { sed -E ':again; s/([0-9])([0-9]{3})(,|$)/\1,\2\3/; t again' <<<"$1"; }

# version_of TOOL: the first thing in what it tells of itself that looks like a version.
version_of() {
    local said
    case $1 in
        openssl) said=$(openssl version) ;;
        exiftool) said=$(exiftool -ver) ;;
        pdfinfo) said=$(pdfinfo -v 2>&1) ;;
        ffprobe | identify) said=$("$1" -version) ;;
        mediainfo) said=$(mediainfo --Version) ;;
        gdbus) said=$(gio --version) ;;
        dmg2img | 7z) said=$("$1" 2>&1) ;;
        */kde_text) said=$(dpkg-query -W -f='${Version}' libkf5filemetadata-bin) ;;
        *) said=$("$1" --version) ;;
    esac || true
    grep -oE -m 1 '[0-9]+(\.[0-9]+)+[a-z]?' <<<"$said" | sed -n 1p
}

# tool_rows: the versions of the tools that were compared with, but for programs of ours.
tool_rows() {
    local tool
    [ -e tools ] || return 0
    sort -u tools | while read -r tool; do
        case $tool in
            */kde_text) row tool all KFileMetaData "$(version_of "$tool")" ;;
            "$build"/*) ;;
            *) row tool all "${tool##*/}" "$(version_of "$tool")" ;;
        esac
    done
}

# machine_rows: what counts for speed, and nothing that tells one machine from another of its kind.
machine_rows() {
    row machine all date "$(date -I)"
    row machine all processor "$(nproc) cores,$(sed -n 's/^model name\t*://p' /proc/cpuinfo | sed -n 1p)"
    row machine all memory "$(awk '/^MemTotal/ { printf "%.0f GiB", $2 / 1048576 }' /proc/meminfo)"
    row machine all system "$(sed -n 's/^PRETTY_NAME="\(.*\)"/\1/p' /etc/os-release), kernel $(uname -r | cut -d. -f1,2)"
    row machine all "file system" "$(findmnt -n -o FSTYPE -T .)"
    row machine all "load before" "$(cut -d' ' -f1 /proc/loadavg)"
}
