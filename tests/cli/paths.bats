#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# From an operand to an absolute path. A missing file shows the path as it was made.

load helpers

is_missing_at() {
    qm info "$1"
    stdout_is_empty
    printf 'File not found: %s\n' "$2" | stderr_is
    status_is 0
}

# The file found is told by its size: `sized FILE BYTES` makes it, `found OPERAND PATH BYTES`.
sized() {
    head -c "$2" /dev/zero >"$1"
}

found() {
    qm info "$1"
    line_is Path "$2"
    [[ $(line_of Size) == *"($3 bytes)" ]] || complain "not the file of $3 bytes"
    succeeds
}

@test "a relative operand is taken from the current folder" {
    is_missing_at x "$box/x"
    is_missing_at a/b/c "$box/a/b/c"
    sized f 5
    found f "$box/f" 5
}

@test "dots and surplus slashes of a relative operand are removed" {
    is_missing_at ./x "$box/x"
    is_missing_at a/./b/../c "$box/a/c"
    is_missing_at a//b///c/ "$box/a/b/c"
    is_missing_at a/b/../../c "$box/c"
    is_missing_at ./././x/. "$box/x"
    is_missing_at a/.../b..c "$box/a/.../b..c"
    cd /
    is_missing_at a-name-that-is-not-here/./b/../c /a-name-that-is-not-here/c
}

@test "the example of the folder for temporary files" {
    cd /tmp
    is_missing_at no-such-folder/./b/../c "$(pwd -P)/no-such-folder/c"
}

@test "no number of dots leaves the root" {
    local up
    up=$(printf '../%.0s' {1..64})
    is_missing_at "${up}no-such-file-here" /no-such-file-here
}

@test "an absolute operand stays as it was given" {
    is_missing_at /x-missing/../y-missing /x-missing/../y-missing
    is_missing_at /x-missing/./y//z /x-missing/./y//z
    is_missing_at "$box/missing/" "$box/missing/"
    sized f 5
    found "$box/./f" "$box/./f" 5
    mkdir sub
    found "$box/sub/../f" "$box/sub/../f" 5
}

@test "a tilde is an ordinary character" {
    sized "$HOME/x" 5
    # shellcheck disable=SC2088 # no expansion is what is tested
    is_missing_at '~/x' "$box/~/x"
    is_missing_at '~' "$box/~"
    is_missing_at '~root' "$box/~root"
    mkdir '~'
    sized '~/x' 7
    # shellcheck disable=SC2088
    found '~/x' "$box/~/x" 7
}

@test "an empty operand is the current folder" {
    qm info ''
    line_is Path "$box"
    line_is Kind Folder
    succeeds
    qm checksum ''
    stdout_is_empty
    echo "Could not read: $box" | stderr_is
    status_is 1
}

@test "dots alone are the folders themselves" {
    mkdir sub
    cd sub
    qm info -s .
    grep -q '  sub$' "$seen/out" || complain "not the current folder"
    qm info ..
    line_is Path "$box"
    succeeds
}

@test "dots behind a link lead to where the system goes" {
    mkdir -p a/sub
    ln -s a/sub link
    sized f 3
    sized a/f 9
    found link/../f "$box/a/f" 9
    [ "$(stat -c %s link/../f)" = 9 ]
    qm checksum link/../f
    (cd a && sha256sum f) | stdout_is
    succeeds
}

@test "dots behind a link are text when nothing is there" {
    mkdir -p a/sub
    ln -s a/sub link
    is_missing_at link/../nothing "$box/nothing"
    is_missing_at link/../../nothing "${box%/*}/nothing"
}

@test "a path that cannot be walked is read as text" {
    mkdir -p a/sub
    ln -s a/sub link
    sized f 3
    # a/f is missing, so the path with the link leads nowhere.
    found link/../f "$box/f" 3
    found missing/../f "$box/f" 3
}

@test "with dots, links at the end are resolved too" {
    mkdir sub
    sized f 3
    ln -s f link
    qm info sub/../link
    line_is Path "$box/f"
    if grep -q 'Symbolic link' "$seen/out"; then
        complain "the link and not its target"
    fi
    succeeds
}

@test "without dots no link is resolved" {
    mkdir sub
    sized sub/f 3
    ln -s sub folder
    ln -s sub/f link
    qm info ./link
    line_is Path "$box/link"
    grep -q '^  (Symbolic link)$' "$seen/out" || complain "not the link itself"
    found folder/f "$box/folder/f" 3
    qm info folder/
    line_is Path "$box/folder"
}

@test "links in the path of the current folder are resolved" {
    mkdir real
    ln -s real shortcut
    cd shortcut
    is_missing_at x "$box/real/x"
}

@test "the current folder is not taken from the environment" {
    mkdir other
    PWD="$box/other" is_missing_at x "$box/x"
}

@test "folders with odd names are ordinary folders" {
    local name=$' {} %s %n\t"\x27\\'
    mkdir "$name"
    cd "./$name"
    is_missing_at x "$box/$name/x"
    sized f 3
    found f "$box/$name/f" 3
}

@test "a removed current folder has no files" {
    mkdir gone
    cd gone
    rmdir ../gone
    # What a missing folder is called is left open: the operand alone or with the folder's old path.
    qm info x
    stdout_is_empty
    grep -qE '^File not found: (.*/)?x$' "$seen/err" || complain "another message"
    [ "$(wc -l <"$seen/err")" -eq 1 ] || complain "not one line"
    status_is 0
    qm checksum x
    stdout_is_empty
    status_is 4
    qm --version
    echo 'qm 1.0.0' | stdout_is
    succeeds
}

leave_the_ground() {
    sized "$HOME/x" 5
    sized f 3
    mkdir gone
    cd gone
    rmdir ../gone
}

@test "in a removed folder a tilde is an ordinary character" {
    leave_the_ground
    # shellcheck disable=SC2088 # no expansion is what is tested
    qm info '~/x'
    stdout_is_empty
    # shellcheck disable=SC2088
    qm checksum '~/x'
    stdout_is_empty
    status_is 4
}

@test "a removed folder is not the root folder" {
    leave_the_ground
    qm info .
    [ "$(head -n 1 "$seen/out")" != / ] || complain "shows the root folder"
    [[ $(line_of Path) != @(/|/.) ]] || complain "shows the root folder"
    qm info --json .
    json_holds 'document["name"] != "/" and document["path"] not in ("/", "/.")'
}

@test "beside a removed folder a file is found or not, and never by half" {
    leave_the_ground
    qm info ../f
    if [ -s "$seen/out" ]; then
        [ "$(head -n 1 "$seen/out")" = f ] || complain "another name"
        line_is Size '3 bytes (3 bytes)'
        line_is Owner "$(owner_name "$box/f"):$(group_name "$box/f")"
    fi
    qm info -s "$box/f"
    [ -s "$seen/out" ] || complain "an absolute path is not found"
    succeeds
}
