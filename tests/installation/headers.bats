#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# The installed headers, with nothing else of this project in sight.

load helpers

setup_file() {
    export INSTALLED="$BATS_FILE_TMPDIR/usr"
    install_to "$INSTALLED" --component development
}

# The source that begins with this header, if there is one: to build it is to compile the header
# alone, with either compiler.
source_that_begins_with() {
    local header=$1 name=${1##*/} candidate
    while read -r candidate; do
        if [ "$(grep -m1 '^#include' "$candidate")" = "#include \"$header\"" ]; then
            echo "$candidate"
            return
        fi
    done < <(cd "$SOURCE" && find "$PWD/${header%%/*}" -name "${name%.h}.cpp")
}

@test "all headers together need nothing that is not installed" {
    [ "$(headers_below "$INSTALLED/include/quillmere" | wc -l)" -gt 20 ]
    for compiler in $(compilers); do
        headers_below "$INSTALLED/include/quillmere" | sed 's/.*/#include "&"/' |
            compiles "$compiler" "$INSTALLED/include/quillmere"
    done
}

@test "each header compiles alone" {
    headers_below "$INSTALLED/include/quillmere" >"$seen/headers"
    while read -r header; do
        [ -z "$(source_that_begins_with "$header")" ] || continue
        for compiler in $(compilers); do
            echo "#include \"$header\"" | compiles "$compiler" "$INSTALLED/include/quillmere"
        done
    done <"$seen/headers"
}

@test "every function and every class of the headers is marked for export" {
    cd "$INSTALLED/include/quillmere"
    ! grep -rnE '^(class|struct) [A-Za-z]+( final)?( :.*)? \{' . || return 1
    ! grep -rnE '^(\[\[nodiscard\]\] )?(const )?[A-Za-z_:<>]+[&*]? (.*[ >])?[a-z][A-Za-z0-9_]*\(' . |
        grep -vE ':(inline|using|template|#define|QM_EXPORT|enum|namespace) ?' || return 1
}

@test "the shared library has every function that the headers offer" {
    cd "$INSTALLED/include/quillmere"
    nm -DC --defined-only "$LIBRARY" >"$seen/symbols"
    # A long result stands on a line of its own.
    find . -name '*.h' -exec sed -nE 's/^QM_EXPORT [^(]*[ &*>]([A-Za-z0-9_]+)\(.*/\1/p
        s/^([a-z][A-Za-z0-9_]+)\(.*/\1/p' {} + | sort -u >"$seen/functions"
    [ "$(wc -l <"$seen/functions")" -gt 30 ]
    while read -r function; do
        grep -qE "(^|:| )$function[[(]" "$seen/symbols" || complain "not exported: $function"
    done <"$seen/functions"
}
