# SPDX-License-Identifier: Apache-2.0
# Shared by the .bats files about completions: a folder with names that need care, the user's
# defined tags, and qm where shells look for it.

: "${COMPLETIONS:?must name the folder of the completions}"
COMPLETIONS=$(realpath "$COMPLETIONS")

setup() {
    pin_environment
    make_box
    mkdir "$BATS_TEST_TMPDIR/bin" Folder
    ln -s "$QM" "$BATS_TEST_TMPDIR/bin/qm"
    export PATH="$BATS_TEST_TMPDIR/bin:/usr/bin:/bin"
    touch 'My File.txt' Übung.txt plain.txt Folder/inside
}

# The arguments are the names of the tags.
define_tags() {
    local folder="$HOME/Library/SyncedPreferences"
    mkdir -p "$folder"
    python3 -c '
import plistlib, sys
tags = [{"n": name, "l": 0} for name in sys.argv[2:]]
with open(sys.argv[1], "wb") as file:
    plistlib.dump({"FinderTagDict": {"FinderTags": tags}}, file)
' "$folder/com.apple.finder.plist" "$@"
}

# completes SHELL SCRIPT: standard input has a line as it is typed, then one as it has to be after
# the key, and so on. "|" marks the end of each of the latter.
completes() {
    cat >"$seen/pairs"
    sed -n 'p;n' "$seen/pairs" >"$seen/typed"
    status=0
    timeout --kill-after=5 "$limit" python3 "$BATS_TEST_DIRNAME/type_in_shell.py" "$1" \
        "$COMPLETIONS/$2" <"$seen/typed" >"$seen/lines" 2>"$seen/err" || status=$?
    sed 's/$/|/' "$seen/lines" >"$seen/out"
    succeeds
    sed -n 'n;p' "$seen/pairs" | stdout_is
}

# The rest is for the shells that are typed into, and takes SHELL SCRIPT.
completes_words() {
    completes "$@" <<'END'
qm ch
qm checksum |
qm --json i
qm --json info |
qm --n
qm --no-color |
qm info --sh
qm info --short |
qm info plain.txt --sh
qm info plain.txt --short |
qm tags --a
qm tags --add=|
qm checksum --sh*
qm checksum --sha1 --sha256 |
qm nonsense --
qm nonsense --|
qm open -p *
qm open -p left right |
qm open -p r
qm open -p right |
END
}

completes_files() {
    completes "$@" <<'END'
qm info My
qm info My\ File.txt |
qm info "My
qm info "My File.txt" |
qm tags Ü
qm tags Übung.txt |
qm open Folder/
qm open Folder/inside |
qm open -p right Fo
qm open -p right Folder/|
qm checksum --verify=pl
qm checksum --verify=plain.txt |
qm checksum --verify=My
qm checksum --verify=My\ File.txt |
END
}

# A qm that is in no folder of programs, with a tag of its own.
install_at_home() {
    define_tags Own
    mkdir "$HOME/bin"
    mv "$BATS_TEST_TMPDIR/bin/qm" "$HOME/bin/qm"
}

asks_what_is_typed() {
    install_at_home
    completes "$@" <<'END'
~/bin/qm tags --add=O
~/bin/qm tags --add=Own |
END
}
