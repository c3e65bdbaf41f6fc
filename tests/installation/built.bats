#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# What the linker made: how programs and libraries are hardened, and what the shared one exports.

load helpers

setup() {
    pin_environment
    make_box
    programs=("$QM" "$BUILD"/quillmere-hdiutil "$BUILD"/quillmere-media-worker
        "$BUILD"/quillmere-media-worker-av "$BUILD"/quillmere-media-worker-pdf)
    files=("${programs[@]}" "$LIBRARY")
}

# each_file CHECK WHAT: the check, a function of a file, holds for all of them.
each_file() {
    local file
    for file in "${files[@]}"; do
        [ -s "$file" ] || complain "there is no $file"
        "$1" "$file" || complain "$file: $2"
    done
}

has_flag() { readelf -dW "$1" | grep -qE "\((FLAGS|FLAGS_1)\).*\b$2\b"; }
is_independent_of_position() { readelf -hW "$1" | grep -qE 'Type: +DYN '; }
is_program() { has_flag "$1" PIE; }
is_bound_at_start() { has_flag "$1" BIND_NOW || has_flag "$1" NOW; }
has_constant_relocations() { readelf -lW "$1" | grep -q GNU_RELRO; }
has_data_for_a_stack() { readelf -lW "$1" | grep -E 'GNU_STACK' | grep -q ' RW '; }
has_no_writable_code() { ! readelf -lW "$1" | grep -E '^ +LOAD' | grep -q 'RWE'; }
has_no_text_relocations() { ! readelf -dW "$1" | grep -q TEXTREL; }
calls() { nm -D --undefined-only "$1" | grep -qE " U $2"; }
guards_its_stacks() { calls "$1" '__stack_chk_fail@'; }
checks_buffers() { calls "$1" '__[a-z]+(_[a-z]+)?_chk@'; }
# A statically linked library has the function itself.
checks_containers() { calls "$1" '_ZSt21__glibcxx_assert_fail' ||
    nm "$1" | grep -q ' [Tt] _ZSt21__glibcxx_assert_fail'; }
looks_nowhere_else_for_libraries() { ! readelf -dW "$1" | grep -qE 'RPATH|RUNPATH'; }

@test "programs and library may be loaded anywhere" {
    each_file is_independent_of_position "is tied to an address"
    files=("${programs[@]}")
    each_file is_program "is no position-independent executable"
}

@test "addresses of functions are constant before main" {
    each_file has_constant_relocations "has no RELRO"
    each_file is_bound_at_start "is bound lazily"
    each_file has_no_text_relocations "relocates its code"
}

@test "neither stack nor data are code" {
    each_file has_data_for_a_stack "has an executable stack"
    each_file has_no_writable_code "has writable code"
}

@test "stacks, buffers and containers are watched" {
    each_file guards_its_stacks "has no stack protector"
    each_file checks_containers "does not check containers"
    [ "$BUILD_TYPE" != Debug ] || skip "the C library checks no buffers without optimisation"
    # The readers of films and of PDFs happen to call nothing that has a checked form.
    files=("$QM" "$LIBRARY" "$BUILD"/quillmere-hdiutil "$BUILD"/quillmere-media-worker)
    each_file checks_buffers "is not fortified"
}

@test "every file of the product is compiled with the same precautions" {
    python3 - "$BUILD/compile_commands.json" "$SOURCE" "$BUILD_TYPE" <<'END'
import json, re, sys
commands = [c["command"] for c in json.load(open(sys.argv[1]))
            if re.match(r"/(cli|services|model|foundation|platform)/", c["file"][len(sys.argv[2]):])]
wanted = ["-D_GLIBCXX_ASSERTIONS", "-fstack-protector-strong", "-fstack-clash-protection",
          "-fcf-protection"]
if sys.argv[3] != "Debug":
    wanted.append("-D_FORTIFY_SOURCE=2")
without = [c[-100:] for c in commands if not set(wanted) <= set(c.split()) or "-U" in c]
if len(commands) < 150 or without:
    sys.exit(f"{len(commands)} commands, without precautions: {without[:3]}")
END
}

@test "the shared library has its name, and exports nothing but what headers declare" {
    readelf -dW "$LIBRARY" | grep -qF 'soname: [libquillmere.so.1]'
    nm -DC --defined-only "$LIBRARY" | cut -c18- >"$seen/symbols"
    [ "$(wc -l <"$seen/symbols")" -gt 100 ]
    # Names of other libraries, in arguments as well, would tie programs to them.
    ! grep -E 'icu|fmt::|nlohmann|GMain|plist_|EVP_' "$seen/symbols" || return 1
    ! grep -vE '^([TVWBDR] (typeinfo |typeinfo name |vtable )?(for )?(QM[A-Z]|qm_|platform::)|A QUILLMERE_1$)' \
        "$seen/symbols" || return 1
}

@test "every exported name has the version of the interface" {
    ! nm -D --defined-only --with-symbol-versions "$LIBRARY" | grep -v ' QUILLMERE_1$' |
        grep -v '@@QUILLMERE_1$' || return 1
}

@test "the shared library loads the system's libraries, and brings none along" {
    for name in libcrypto.so libicui18n.so libicuuc.so libplist-2.0.so libglib-2.0.so; do
        readelf -dW "$LIBRARY" | grep -q "NEEDED.*\[$name" || complain "does not load $name"
    done
    # With ICU's data it would be thirty times as large.
    [ "$(stat -c %s "$LIBRARY")" -lt 8000000 ] || [ "$BUILD_TYPE" != Release ]
}

@test "make installs below the prefix, by either of its names" {
    local given
    for given in PREFIX=/somewhere prefix=/somewhere; do
        env -u MAKEFLAGS -u PREFIX make -n -C "$SOURCE" install "$given" |
            grep -qF -- "-DCMAKE_INSTALL_PREFIX=/somewhere " || complain "$given is not honoured"
    done
    env -u MAKEFLAGS -u PREFIX make -n -C "$SOURCE" install |
        grep -qF -- "-DCMAKE_INSTALL_PREFIX=/usr/local "
}
