#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# A program of somebody else's, built from an installation in each of the ways that are offered,
# and the installation itself, where it is and elsewhere.

load helpers

setup_file() {
    export INSTALLED="$BATS_FILE_TMPDIR/usr"
    install_to "$INSTALLED"
    LIBRARY_FOLDER=$(dirname "$(find "$INSTALLED" -name libquillmere.so)")
    PKG_CONFIG_PATH="$LIBRARY_FOLDER/pkgconfig"
    export LIBRARY_FOLDER PKG_CONFIG_PATH
}

setup() {
    pin_environment
    make_box
    consumer="$BATS_TEST_DIRNAME/consumer"
    make_png sunset.png
}

# A picture of 3 by 2 pixels.
make_png() {
    python3 -c '
import struct, sys, zlib
def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
open(sys.argv[1], "wb").write(b"\x89PNG\r\n\x1a\n"
    + chunk(b"IHDR", struct.pack(">IIBBBBB", 3, 2, 8, 2, 0, 0, 0))
    + chunk(b"IDAT", zlib.compress((b"\0" + b"\x80" * 9) * 2)) + chunk(b"IEND", b""))' "$1"
}

# The program tells everything of the picture: what only the worker knows, too.
tells_all() {
    "$@" sunset.png >"$seen/told"
    grep -qx "$(sha256sum sunset.png | cut -d' ' -f1)" "$seen/told"
    grep -qx 'tags: Best' "$seen/told"
    grep -qE '^dimensions=3 ' "$seen/told" || { cat "$seen/told" >&2; return 1; }
}

loads() { readelf -dW "$1" | grep -q "NEEDED.*\[$2"; }

@test "CMake finds both libraries, and programs that are linked with them run" {
    "$CMAKE" -S "$consumer" -B "$box/build" -DCMAKE_PREFIX_PATH="$INSTALLED" \
        -DCMAKE_CXX_COMPILER="$CXX" >/dev/null
    "$CMAKE" --build "$box/build" >"$seen/log" || { cat "$seen/log" >&2; return 1; }
    loads build/with_quillmere libquillmere.so.1
    tells_all build/with_quillmere
    ! loads build/with_quillmere_static libquillmere || return 1
    mkdir "$INSTALLED/games"
    cp build/with_quillmere_static "$INSTALLED/games"
    tells_all "$INSTALLED/games/with_quillmere_static"
}

@test "CMake refuses another major version" {
    sed 's/quillmere 1/quillmere 2/' "$consumer/CMakeLists.txt" >CMakeLists.txt
    cp "$consumer/main.cpp" .
    ! "$CMAKE" -S . -B "$box/build" -DCMAKE_PREFIX_PATH="$INSTALLED" \
        -DCMAKE_CXX_COMPILER="$CXX" 2>"$seen/errors" >/dev/null || return 1
    grep -q 'compatible with requested' "$seen/errors"
}

@test "pkg-config finds the shared library" {
    "$CXX" -std=c++20 "$consumer/main.cpp" -o shared $(pkg-config --cflags --libs quillmere)
    loads shared libquillmere.so.1
    LD_LIBRARY_PATH="$LIBRARY_FOLDER" tells_all ./shared
}

@test "pkg-config finds the static library with all that it needs" {
    "$CXX" -std=c++20 "$consumer/main.cpp" -o "$INSTALLED/bin/static" \
        $(pkg-config --static --cflags --libs quillmere |
            sed "s,-lquillmere ,$LIBRARY_FOLDER/libquillmere.a ,")
    ! loads "$INSTALLED/bin/static" libquillmere || return 1
    tells_all "$INSTALLED/bin/static"
}

@test "an installation that was moved finds its worker" {
    DESTDIR="$box/stage" install_to /opt/quillmere
    moved="$box/stage/opt/quillmere"
    [ "$("$moved/bin/qm" checksum sunset.png)" = "$(sha256sum sunset.png)" ]
    cp "$BUILD/show_metadata" "$moved/bin"
    "$moved/bin/show_metadata" sunset.png >"$seen/out"
    json_holds '"dimensions" in [e["key"] for e in document[0]["entries"]]'
}

@test "a worker that belongs to somebody else is not run" {
    [ "$(id -u)" = 0 ] || skip "only root can give a file away"
    mkdir own
    cp "$BUILD/show_metadata" own
    printf '#!/bin/sh\ntouch %s\n' "$box/was-run" >own/quillmere-media-worker
    chmod +x own/quillmere-media-worker
    own/show_metadata sunset.png >/dev/null
    [ -e was-run ]
    rm was-run
    chown nobody own/quillmere-media-worker
    own/show_metadata sunset.png >/dev/null
    [ ! -e was-run ]
}

@test "what pkg-config tells has the prefix of the installation" {
    [ "$(pkg-config --variable=prefix quillmere)" = "$INSTALLED" ]
    [ "$(pkg-config --modversion quillmere)" = "$("$QM" --version | grep -oE '[0-9.]+$')" ]
}
