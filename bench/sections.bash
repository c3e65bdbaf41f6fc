# SPDX-License-Identifier: Apache-2.0
# The sections of bench/run. Each runs in a shell of its own, in the folder of the run.
# shellcheck shell=bash disable=SC2016,SC2154

# milliseconds MICROSECONDS, or nothing for nothing.
milliseconds() { awk -v time="$1" 'BEGIN { if (time) printf "%.2f", time / 1000 }'; }

small_files() {
    [ ! -e small ] || return 0
    mkdir small
    for i in $(seq "$(many 10000)"); do echo "$i" >"small/file$i.txt"; done
    : >empty
}

checksums() {
    small_files
    local small=(small/*) algorithm title hash
    truncate -s 3G sparse
    head -c "${big_size}M" /dev/urandom >big
    for algorithm in sha256 sha1 md5; do
        title="$algorithm of $big_size MiB in the page cache"
        hash=("$qm" checksum "--$algorithm" big)
        compare "$title" "openssl dgst" 1.0 5 "${hash[@]}" -- openssl dgst "-$algorithm" big
        compare "$title" "${algorithm}sum" - 3 "${hash[@]}" -- "${algorithm}sum" big
        compare "$title" "rhash" - 3 "${hash[@]}" -- rhash "--$algorithm" big
    done
    compare "checksum of an empty file" "sha256sum" 2.0 300 "$qm" checksum empty -- sha256sum empty
    compare "checksum of $(thousands ${#small[@]}) small files" "sha256sum" 1.5 15 \
        "$qm" checksum "${small[@]}" -- sha256sum "${small[@]}"
    figure "resident size for a checksum of 3 GiB" "$(memory_of "$qm" checksum sparse)" MiB 20
    rm big sparse
}

commands() {
    small_files
    local small=(small/*) all
    all="of $(thousands ${#small[@]}) files"
    compare "info -s $all" "stat" 2.0 15 "$qm" info -s "${small[@]}" -- stat "${small[@]}"
    compare "info -s $all" "gio info" 0.5 5 "$qm" info -s "${small[@]}" -- gio info "${small[@]}"
    compare "info --json $all" "stat" - 5 "$qm" info --json "${small[@]}" -- stat "${small[@]}"
    compare "info of one file" "stat" - 300 "$qm" info empty -- stat empty
    compare "--version" "true" - 300 "$qm" --version -- /bin/true
    needs setfattr getfattr || return 0
    setfattr -n user.xdg.tags -v a,b empty
    compare "tags of one file" "getfattr" 2.0 300 "$qm" tags empty -- getfattr -d empty
}

# On a bus of its own, with an application that answers at once.
scripting() {
    needs dbus-daemon gdbus || return 0
    local bus id
    dbus-daemon --session --nofork --print-address=9 3>&- 9>address 2>/dev/null &
    bus=$!
    # shellcheck disable=SC2064  # the bus of now
    trap "kill $bus" EXIT
    until [ -s address ]; do sleep 0.05; done
    DBUS_SESSION_BUS_ADDRESS=$(cat address)
    export DBUS_SESSION_BUS_ADDRESS
    mkdir record
    "$build/test_application" record 3>&- &
    until [ -e record/ready ]; do sleep 0.05; done
    id=$(sed -n 's/^QM_APPLICATION_ID:[A-Z]*=//p' "$build/CMakeCache.txt")
    compare "open of one folder" "gdbus call" 3.0 300 "$qm" open /tmp -- \
        gdbus call --session --dest "$id" --object-path "/${id//.//}" \
        --method "$id.Scripting1.RunScript" x '{}'
}

# A disk of a gigabyte of programs and texts, in chunks of zlib.
images() {
    local expand=("$build/expand_image" disk.dmg ours) title="expanding a .dmg of $big_size MiB"
    tar -C / --ignore-failed-read -cf - usr/lib usr/share usr/bin 2>/dev/null |
        head -c "${big_size}M" >disk || true
    truncate -s "${big_size}M" disk
    "$build/make_udif" disk disk.dmg zlib
    compare "$title" "dmg2img" 0.67 3 "${expand[@]}" -- dmg2img -s disk.dmg theirs
    cmp disk ours
    [ ! -e theirs ] || cmp disk theirs
    compare "$title" "7z x" - 3 "${expand[@]}" -- 7z x -y -bd -tdmg -otheirs7 disk.dmg
    figure "resident size for expanding it" "$(memory_of "${expand[@]}")" MiB
    rm -rf disk disk.dmg ours theirs theirs7
    needs sfdisk mkfs.ext4 || return 0
    local describe=("$build/quillmere-hdiutil" imageinfo large.img -plist)
    truncate -s 10G large.img
    printf 'label: gpt\nsize=4G\nsize=4G\n' | sfdisk -q large.img
    mkfs.ext4 -q -E offset=1048576 large.img 4G
    compare "imageinfo of a sparse image of 10 GiB" "file" - 100 "${describe[@]}" -- file large.img
    figure "imageinfo of a sparse image of 10 GiB" "$(milliseconds "$ours")" ms 20
    figure "resident size for imageinfo of 10 GiB" "$(memory_of "${describe[@]}")" MiB 10
    rm large.img
}

# As a program that starts, tells of one file, and ends.
texts() {
    small_files
    local show
    python3 -c 'print("The quick brown fox doesn\x27t jump over 3.5 lazy dogs – or does it?\n" * 1000)' \
        >text.txt
    truncate -s 65536 text.txt
    show=("$build/show_metadata" text.txt)
    compare "metadata of a text of 64 KiB" "wc" - 100 "${show[@]}" -- wc -lmw text.txt
    [ ! -e "$build/kde_text" ] ||
        compare "metadata of a text of 64 KiB" "KFileMetaData" 1.0 30 "${show[@]}" -- \
            "$build/kde_text" text.txt
    compare "start of the metadata service, and one file" "true" - 100 \
        "$build/show_metadata" small/file1.txt -- /bin/true
    figure "start of the metadata service, and one file" "$(milliseconds "$ours")" ms 10
}

# Of all kinds, all of them in one process.
pictures() {
    needs convert exiftool || return 0
    "$bench/make_photos" photos "$(many 2000)"
    local photos=(photos/*) jobs title show single count
    count=${#photos[@]}
    figure "photos that something is told of" "$("$build/show_metadata" --keys dimensions \
        "${photos[@]}" | grep -c '"dimensions"') of $count"
    for jobs in 1 8; do
        title="metadata of $(thousands "$count") photos, $jobs at a time"
        show=("$build/show_metadata" --jobs "$jobs" "${photos[@]}")
        compare "$title" "exiftool -fast" 0.05 3 "${show[@]}" -- exiftool -json -fast photos
        rate "show_metadata --jobs $jobs" "$count" "$ours"
        [ "$jobs" = 8 ] || rate "exiftool -json -fast" "$count" "$theirs"
        # Pictures without EXIF make its status 253.
        compare "$title" "exiv2" 1.0 5 "${show[@]}" -- sh -c 'exiv2 "$@" || true' exiv2 "${photos[@]}"
        [ "$jobs" = 8 ] || rate "exiv2" "$count" "$theirs"
        compare "$title" "identify -ping" - 3 "${show[@]}" -- identify -ping "${photos[@]}"
        [ "$jobs" = 8 ] || rate "identify -ping" "$count" "$theirs"
    done
    single=("$build/show_metadata" --jobs 1 "${photos[@]}")
    compare "the same with 8 jobs" "1 job" - 7 "${show[@]}" -- "${single[@]}"
    rm -rf photos
}

make_large_pictures() {
    convert -size 64x48 plasma: small.png
    head -c 60M /dev/urandom | convert -size 5120x4096 -depth 8 rgb:- -quality 0 large.png
    convert small.png small.jpg
    { printf 'P5 10000 10000 255\n' && head -c 100000000 /dev/urandom; } | cjpeg -quality 50 >large.jpg
    head -c 9M /dev/urandom | convert -size 2048x1536 -depth 8 rgb:- -quality 95 large.heic
    convert small.png small.heic
    convert small.png small.gif
    mapfile -t frames < <(yes plasma: | head -400)
    convert -size 64x48 "${frames[@]}" large.gif
}

# A hundred names of a large picture against as many of a small one of the same kind.
large_pictures() {
    needs convert cjpeg || return 0
    local kind number large small count
    make_large_pictures
    for kind in png jpg heic gif; do
        mkdir "$kind"
        for number in {1..100}; do
            ln "large.$kind" "$kind/large$number.$kind"
            ln "small.$kind" "$kind/small$number.$kind"
        done
        large=("$build/show_metadata" "$kind"/large*) small=("$build/show_metadata" "$kind"/small*)
        compare "100 times a $kind of $(($(stat -c %s "large.$kind") / 1024)) KiB" \
            "$(($(stat -c %s "small.$kind") / 1024)) KiB" - 10 "${large[@]}" -- "${small[@]}"
        [ "$kind" != gif ] ||
            compare "the same, frames not counted" "one frame" - 10 \
                "${large[@]}" --keys dimensions -- "${small[@]}" --keys dimensions
    done
    for count in 200 "$(many 4000)" "$(many 10000)"; do
        figure "resident size of the reader after $(thousands "$count") pictures" \
            "$("$bench/reader_memory" "$build/show_metadata" "$count" large.jpg)" KiB
    done
    rm -rf large.* small.* png jpg heic gif
}

# Films and recordings of all kinds, and what their length costs: 200 times the same file, which a
# process that is there already reads.
films() {
    needs ffmpeg || return 0
    "$bench/make_media" media "$(many 500)" "$(many 1024)"
    local media=(media/*) title kind long short show
    title="metadata of ${#media[@]} films and recordings"
    show=("$build/show_metadata" --jobs 4 "${media[@]}")
    compare "$title" "ffprobe, each" 0.1 1 "${show[@]}" -- \
        sh -c 'for f; do ffprobe -v error -show_format -show_streams -of json "$f"; done' ffprobe \
        "${media[@]}"
    compare "$title" "mediainfo, each" 0.1 1 "${show[@]}" -- \
        sh -c 'for f; do mediainfo --Output=JSON "$f"; done' mediainfo \
        "${media[@]}"
    compare "$title" "mediainfo, all" - 3 "${show[@]}" -- mediainfo --Output=JSON "${media[@]}"
    figure "films and recordings with a duration" \
        "$("${show[@]}" | grep -c '"duration"') of ${#media[@]}"
    for kind in mp4 ts; do
        mapfile -t long < <(yes "long.$kind" | head -200)
        mapfile -t short < <(yes "short.$kind" | head -200)
        compare "200 times metadata of a long .$kind" "a short one" - 3 \
            "$build/show_metadata" "${long[@]}" -- "$build/show_metadata" "${short[@]}"
    done
    rm -rf media long.* short.*
}

# PDFs of several kinds, and then a long one, which should take no longer than a short one.
papers() {
    needs gs qpdf || return 0
    "$bench/make_papers" papers "$(many 500)"
    local papers=(papers/*) jobs pages title short long
    figure "PDFs that something is told of" "$("$build/show_metadata" --keys pageCount \
        "${papers[@]}" | grep -c '"pageCount"') of ${#papers[@]}"
    for jobs in 1 8; do
        compare "metadata of ${#papers[@]} PDFs, $jobs at a time" "pdfinfo, each" 0.1 3 \
            "$build/show_metadata" --jobs "$jobs" "${papers[@]}" -- \
            sh -c 'for paper; do pdfinfo "$paper"; done' pdfinfo "${papers[@]}"
    done
    "$bench/make_papers" --pages 1 short.pdf
    mapfile -t short < <(yes short.pdf | head -200)
    for pages in 2000 20000; do
        "$bench/make_papers" --pages "$pages" long.pdf
        mapfile -t long < <(yes long.pdf | head -200)
        title="metadata of a PDF of $(thousands "$pages") pages"
        compare "$title, 200 times" "one of 1 page" - 3 \
            "$build/show_metadata" "${long[@]}" -- "$build/show_metadata" "${short[@]}"
        compare "$title, once" "pdfinfo" - 30 "$build/show_metadata" long.pdf -- pdfinfo long.pdf
    done
    rm -rf papers short.pdf long.pdf
}

search() {
    local folders title
    folders=$(many 5000)
    title="search of $(thousands $((folders * 100))) files for a tag"
    python3 - tree "$folders" <<'END'
import os, sys
for folder in range(int(sys.argv[2])):
    path = f"{sys.argv[1]}/{folder % 50}/{folder}"
    os.makedirs(path)
    for number in range(100):
        file = f"{path}/file{number}.txt"
        os.close(os.open(file, os.O_CREAT | os.O_WRONLY))
        if number == 0:
            os.setxattr(file, "user.xdg.tags", b"a,b" if folder % 2 else b"c")
END
    compare "$title" "find" 2.0 7 "$build/search_tree" tree a -- find tree
    compare "$title" "getfattr -R" 0.4 3 \
        "$build/search_tree" tree a -- getfattr -R -n user.xdg.tags tree
    figure "resident size of the search" "$(memory_of "$build/search_tree" tree a)" MiB
    rm -rf tree
}

complexity() {
    "$bench/complexity" ${quick:+--quick} "$build" >&3
}

services() {
    local min_time=0.1
    [ -z "$quick" ] || min_time=0.001
    "$build/quillmere_bench" --benchmark_min_time="$min_time" --benchmark_format=json 2>/dev/null |
        python3 -c '
import json, sys
for found in json.load(sys.stdin)["benchmarks"]:
    print("service", "services", found["name"], found["real_time"], found["time_unit"], sep="\t")
' >&3
}
