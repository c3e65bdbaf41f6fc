#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# What is in pictures, as an application is told it, read by the process that may do nothing else.
# SAMPLES names the folder with the pictures, MEDIA_WORKER that process's program.

load helpers
load metadata

MEDIA_WORKER=$(realpath "${MEDIA_WORKER:?must name the program that reads media}")
SAMPLES=$(realpath "${SAMPLES:?must name the folder of the pictures}")

readonly extensions=(jpg jpeg png gif bmp tiff tif webp heic heif ico raw cr2 nef arw dng psd xcf)
# One or two of each format.
readonly kinds=(camera.jpg cmyk.jpg camera.png animated.png animated.gif alpha.bmp camera.tif
                pages.tif camera.webp animated.webp camera.heic two.heic three.ico canon.cr2
                nikon.nef sony.arw adobe.dng plain.raw camera.psd layer.xcf)

# All samples, by names that have a category: large documents share theirs with the others.
take_samples() {
    cp "$SAMPLES"/* .
    mv large.psb large-document.psd
}

take() {
    cp "${@/#/$SAMPLES/}" .
}

# entries_of N: those of the Nth file that was named, as KEY=VALUE, one a line.
entries_of() {
    python3 -c '
import json, sys
for entry in json.load(open(sys.argv[1]))[int(sys.argv[2])]["entries"]:
    print(entry["key"] + "=" + entry["value"])' "$seen/out" "$1"
}

# tells_nothing: of every file that was named there is an answer without entries.
tells_nothing() {
    succeeds
    json_holds 'document and all(d["category"] == 1 and d["entries"] == [] for d in document)'
}

# The programs in a folder of their own, so that no other test's processes are taken for theirs.
own_programs() {
    own="$BATS_TEST_TMPDIR/own"
    mkdir "$own"
    cp "$SHOW_METADATA" "$own/show_metadata"
    cp "$MEDIA_WORKER" "$own/quillmere-media-worker"
}

# The processes that run the program.
running() {
    local process
    for process in /proc/[0-9]*; do
        if [ "$process/exe" -ef "$1" ]; then
            echo "${process#/proc/}"
        fi
    done
}

is_running() {
    [ -n "$(running "$1")" ]
}

is_gone() {
    [ -z "$(running "$1")" ]
}

# libraries_of PROGRAM: the names of all that it loads.
libraries_of() {
    ldd "$1" | sed -n 's/^\s*\(lib[^ ]*\).*/\1/p' | sort
}

@test "every sample has entries, and exiftool agrees with them" {
    take_samples
    capture env LC_ALL=de_DE.UTF-8 "$SHOW_METADATA" *
    succeeds
    json_holds 'len(document) >= 70 and all(d["category"] == 1 for d in document)'
    json_holds 'all(d["entries"][0]["key"] == "dimensions" for d in document)'
    python3 "$BATS_TEST_DIRNAME/picture_facts.py" "$seen/out" >&2
}

@test "entries have their labels and their order, and only the size is primary" {
    take camera.jpg pages.tif camera.psd
    show camera.jpg pages.tif camera.psd
    succeeds
    json_holds 'all(list(d) == ["path", "category", "categoryName", "entries"] for d in document)'
    json_holds 'all(d["categoryName"] == "meta.cat.imageRaster" for d in document)'
    json_holds 'all(list(e) == ["key", "localizedKey", "value", "isPrimary"]
                    for d in document for e in d["entries"])'
    json_holds 'all(e["localizedKey"] == ("ISO" if e["key"] == "iso" else "meta.img." + e["key"])
                    for d in document for e in d["entries"])'
    json_holds '[e["key"] for d in document for e in d["entries"] if e["isPrimary"]] ==
                ["dimensions"] * 3'
    entries_of 0 >"$seen/camera"
    diff - "$seen/camera" <<END
dimensions=12 × 8 px
colorDepth=8 Bit
colorModel=RGB
colorProfile=sRGB IEC61966-2.1
camera=Camera 1
lens=Lens 24-70
exposure=1/250 s
aperture=f/2.8
iso=400
focalLength=35.0 mm (52 mm eq.)
dateOriginal=Jul 14, 2023 at 6:30$(printf '\u202f')PM
gps=48.8584° N, 2.2945° E
software=Firmware 1.0
copyright=© IPTC
END
    # Without a text for it the format is shown as it is called.
    json_holds '[e["value"] for e in document[1]["entries"] if e["key"] == "animated"] ==
                ["meta.img.frames"]'
    json_holds '[e["key"] for e in document[2]["entries"]][:6] ==
                ["dimensions", "colorDepth", "colorModel", "colorProfile", "dpi", "hasAlpha"]'
}

@test "dates are written as the user's language wants them, labels and numbers as ever" {
    take camera.jpg
    local language labels
    show camera.jpg
    labels=$(python3 -c 'import json, sys
print([e["localizedKey"] for e in json.load(open(sys.argv[1]))[0]["entries"]])' "$seen/out")
    while IFS='|' read -r language date; do
        capture env LC_ALL="$language.UTF-8" LANGUAGE="$language" "$SHOW_METADATA" camera.jpg
        succeeds
        json_holds '[e["value"] for e in document[0]["entries"] if e["key"] == "dateOriginal"] ==
                    wanted' "$date"
        json_holds '[e["value"] for e in document[0]["entries"] if e["key"] == "aperture"] ==
                    ["f/2.8"]'
        json_holds 'str([e["localizedKey"] for e in document[0]["entries"]]) == wanted[0]' "$labels"
    done <<'END'
de_DE|14.07.2023, 18:30
ja_JP|2023/07/14 18:30
END
}

@test "only the keys that are asked for" {
    take camera.jpg pages.tif
    show --keys iso,nonsense,dimensions camera.jpg pages.tif
    succeeds
    [ "$(entries_of 0)" = $'dimensions=12 × 8 px\niso=400' ]
    [ "$(entries_of 1)" = 'dimensions=12 × 8 px' ]
    show --keys '' camera.jpg
    tells_nothing
}

@test "what a picture is called does not count" {
    take "${kinds[@]}"
    local kind extension
    local -a others=()
    for kind in "${kinds[@]}"; do
        for extension in "${extensions[@]}" JPG; do
            ln "$kind" "$kind.$extension"
            others+=("$kind.$extension")
        done
    done
    show --jobs 4 "${kinds[@]}" "${others[@]}"
    succeeds
    json_holds '(lambda first: all(first.values()) and len(document) == 20 * len(first) and all(
        d["entries"] == first[d["path"].rpartition(".")[0]] for d in document[len(first):]
    ))({d["path"]: d["entries"] for d in document[:int(wanted[0])]})' "${#kinds[@]}"
}

# What is no picture at all, each under a name without an extension.
make_others() {
    printf 'words\n' >text
    printf '#!/bin/sh\necho JFIF\n' >script
    printf '%%PDF-1.7\n1 0 obj\n<< /Type /Catalog >>\nendobj\n%%%%EOF\n' >document
    printf '<svg xmlns="http://www.w3.org/2000/svg" width="1" height="1"/>\n' >drawing
    : >nothing
    printf B >byte
    printf '\0%.0s' {1..5000} >zeros
    # Films: QuickTime with a table of texts of the user's, MPEG-4, AVI, Matroska.
    python3 -c '
import struct
def box(kind, data):
    return struct.pack(">I4s", 8 + len(data), kind) + data
texts = b"".join(box(b"\xa9" + name, struct.pack(">HH", 4000, 0) + b"x" * 40)
                 for name in (b"nam", b"ART", b"day", b"swr")) + box(b"meta", bytes(4))
head = box(b"mvhd", bytes(12) + struct.pack(">II", 600, 6000) + bytes(80))
moov = box(b"moov", head + box(b"trak", box(b"tkhd", bytes(84))) + box(b"udta", texts))
for name, brand in (("quicktime", b"qt  "), ("mpeg-4", b"isom"), ("mpeg-4-2", b"mp42")):
    open(name, "wb").write(box(b"ftyp", brand + bytes(4) + brand) + moov + box(b"mdat", bytes(99)))
avi = b"AVI LIST" + struct.pack("<I4s4sI", 68, b"hdrl", b"avih", 56) + bytes(56)
open("avi", "wb").write(b"RIFF" + struct.pack("<I", len(avi)) + avi)
open("matroska", "wb").write(b"\x1a\x45\xdf\xa3\x8bB\x82\x88matroska\x18S\x80g" + b"\xff" * 8)'
    python3 -c '
import zipfile
zipfile.ZipFile("archive", "w").writestr("camera.jpg", b"\xff\xd8\xff")'
    cp /bin/true program
}

@test "what is no picture has no entries, whatever it is called" {
    make_others
    local -a others=()
    local other extension
    for other in *; do
        for extension in "${extensions[@]}"; do
            ln "$other" "$other.$extension"
            others+=("$other.$extension")
        done
    done
    take camera.jpg
    show --jobs 4 "${others[@]}"
    tells_nothing
    json_holds 'len(document) == 14 * 18'
    show "${others[@]}" camera.jpg
    succeeds
    json_holds '[len(d["entries"]) for d in document[-2:]] == [0, 14]'
}

@test "neither FIFOs nor devices nor dangling links hang it" {
    take camera.jpg
    mkfifo fifo.jpg
    ln -s /dev/zero zero.png
    ln -s /dev/tty tty.gif
    ln -s nowhere dangling.jpg
    ln -s circle.jpg circle.jpg
    ln -s /proc/self/maps maps.webp
    ln -s fifo.jpg link-to-fifo.heic
    python3 -c 'import socket; socket.socket(socket.AF_UNIX).bind("socket.tif")'
    show fifo.jpg zero.png tty.gif dangling.jpg circle.jpg maps.webp link-to-fifo.heic socket.tif
    tells_nothing
    mkdir folder.jpg
    ln -s camera.jpg link.gif
    show folder.jpg missing.jpg camera.jpg link.gif
    succeeds
    json_holds 'document[:2] == [None, None] and len(document[2]["entries"]) == 14'
    json_holds 'document[3]["entries"] == document[2]["entries"]'
}

@test "what may not be read has no entries" {
    take camera.jpg plain.gif
    chmod 000 camera.jpg
    local -a mantle=()
    ! is_root || find_mantle
    capture "${mantle[@]}" "$SHOW_METADATA" camera.jpg plain.gif
    succeeds
    json_holds 'document[0]["entries"] == [] and document[1]["entries"] != []'
}

@test "names are bytes" {
    take camera.jpg
    local -a names=($'bad\xff.jpg' $'\xc3.jpg' $'\xed\xa0\x80.jpg' $'two\nlines.jpg' 'ü😀.jpg'
                    '-.jpg' '--x.jpg' '%s%n.jpg' ' .jpg')
    local name
    for name in "${names[@]}"; do
        cp camera.jpg "./$name"
    done
    show camera.jpg "${names[@]}"
    succeeds
    json_holds 'all(d["entries"] == document[0]["entries"] for d in document)'
    json_holds 'document[1]["path"] == "bad\ufffd.jpg" and document[4]["path"] == "two\nlines.jpg"'
}

@test "a picture that grows or shrinks is read as it is" {
    take camera.jpg large.png
    local whole
    whole=$(stat -c %s large.png)
    show large.png
    entries_of 0 >"$seen/whole"
    truncate -s 3G large.png
    show large.png
    diff "$seen/whole" <(entries_of 0)
    truncate -s "$whole" large.png
    truncate -s 20 large.png
    show large.png camera.jpg
    json_holds '[len(d["entries"]) for d in document] == [0, 14]'
}

@test "few descriptors end nothing, however many pictures are read at a time" {
    [ -z "${SANITIZERS:-}${COVERAGE:-}" ] || skip "what watches the program needs descriptors, too"
    take camera.jpg
    local i descriptors
    for i in {1..100}; do
        ln camera.jpg "$i.jpg"
    done
    for descriptors in 6 8 10 14 20 40; do
        capture bash -c 'ulimit -n "$1"; exec "$0" --jobs 200 "${@:2}"' \
            "$SHOW_METADATA" "$descriptors" {1..100}.jpg
        succeeds
        json_holds 'len(document) == 100 and all(len(d["entries"]) in (0, 14) for d in document)'
    done
    capture bash -c 'ulimit -n 400; exec "$0" --jobs 200 "$@"' "$SHOW_METADATA" {1..100}.jpg
    succeeds
    json_holds 'all(len(d["entries"]) == 14 for d in document)'
}

@test "the libraries that read pictures are loaded by the process for it alone" {
    local -a libraries=(libexiv2 libgif libheif libjpeg liblcms2 libpng libtiff libwebpdemux)
    # With sanitizers it filters no system calls.
    [ -n "${SANITIZERS:-}" ] || libraries+=(libseccomp)
    local name
    libraries_of "$MEDIA_WORKER" >"$seen/reader"
    libraries_of "$QM" >"$seen/others"
    libraries_of "$SHOW_METADATA" >>"$seen/others"
    grep -q '^libc\.so' "$seen/others"
    for name in "${libraries[@]}"; do
        grep -q "^$name" "$seen/reader"
        ! grep "^$name" "$seen/others" || return 1
    done
}

@test "no process is left when the application has ended" {
    own_programs
    take camera.jpg plain.gif
    capture "$own/show_metadata" --jobs 4 camera.jpg plain.gif camera.jpg plain.gif
    succeeds
    wait_for is_gone "$own/quillmere-media-worker"
}

@test "no process is left when the application was killed" {
    own_programs
    take camera.jpg
    # It cannot write its answers, so it stays, with what it has started.
    mkfifo full
    local reading application i
    exec {reading}<>full
    local -a files=()
    for i in {1..200}; do
        files+=(camera.jpg)
    done
    "$own/show_metadata" --jobs 4 "${files[@]}" >full {reading}>&- 3>&- &
    application=$!
    wait_for is_running "$own/quillmere-media-worker"
    kill -KILL "$application"
    wait "$application" || [ $? = 137 ]
    wait_for is_gone "$own/quillmere-media-worker"
    exec {reading}<&-
}

@test "without the process that reads pictures all else goes on" {
    own_programs
    take camera.jpg
    printf 'a b\n' >a.txt
    local how
    for how in "chmod 644" "cp /bin/true" "truncate -s 10" "truncate -s 0"; do
        rm "$own/quillmere-media-worker"
        cp "$MEDIA_WORKER" "$own/quillmere-media-worker"
        case $how in
        cp*) cp /bin/true "$own/quillmere-media-worker" ;;
        *) $how "$own/quillmere-media-worker" ;;
        esac
        capture "$own/show_metadata" camera.jpg a.txt camera.jpg
        succeeds
        json_holds '[len(d["entries"]) for d in document] == [0, 5, 0]'
        json_holds 'document[0]["category"] == 1'
    done
}
