#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# qm tags: every action, every message, and what other programs see of it.

load helpers

finder=user.com.apple.metadata:_kMDItemUserTags

setup() {
    pin_environment
    make_box
    make_file f
    setfattr -n user.probe -v x f 2>/dev/null || skip "no extended attributes here"
    setfattr -x user.probe f
}

desktop_value() {
    getfattr --only-values -n user.xdg.tags -- "$1" 2>/dev/null
}

finder_entries() {
    getfattr --only-values -n "$finder" -- "$1" | python3 -c '
import plistlib, sys
print(plistlib.loads(sys.stdin.buffer.read()))'
}

# set_finder FILE PYTHON-LIST [binary|xml]
set_finder() {
    setfattr -n "$finder" -v "0x$(python3 -c '
import plistlib, sys
form = plistlib.FMT_XML if sys.argv[2] == "xml" else plistlib.FMT_BINARY
print(plistlib.dumps(eval(sys.argv[1]), fmt=form).hex())' "$2" "${3-binary}")" -- "$1"
}

@test "no operand is an error" {
    qm tags
    stdout_is_empty
    stderr_is <<<"No file specified. Usage: qm tags [--add=TAG|--remove=TAG|--set=TAGS|--clear|--list] [--json] <file>"
    status_is 10
}

@test "a file without tags says so" {
    qm tags f
    stdout_is <<<"f: (no tags)"
    succeeds
}

@test "adding appends, and says so" {
    qm tags --add=Red f
    stdout_is <<<'Added tag "Red" to f'
    succeeds
    qm tags --add=Wörk "$box/f"
    stdout_is <<<'Added tag "Wörk" to f'
    qm tags f
    stdout_is <<<"f: Red, Wörk"
    [ "$(desktop_value f)" = "Red,Wörk" ]
}

@test "a tag that is there is not added again" {
    qm tags --add=Red f
    before=$(stat -c %z f)
    qm tags --add=Red f
    stdout_is <<<'Tag "Red" already exists on f'
    succeeds
    [ "$(stat -c %z f)" = "$before" ]
}

@test "names are compared exactly" {
    qm tags --add=Red f
    qm tags --add=red f
    stdout_is <<<'Added tag "red" to f'
    qm tags --remove=RED f
    qm tags f
    stdout_is <<<"f: Red, red"
}

@test "removing takes the tag away, and says so even when it was not there" {
    qm tags --set=a,b,a f
    qm tags --remove=a f
    stdout_is <<<'Removed tag "a" from f'
    succeeds
    qm tags --remove=Blue f
    stdout_is <<<'Removed tag "Blue" from f'
    succeeds
    qm tags f
    stdout_is <<<"f: b"
}

@test "setting keeps blanks and drops empty pieces" {
    qm tags '--set= a,,b ' f
    stdout_is <<<"Tags set:  a, b "
    succeeds
    qm tags --json f
    json_holds 'document["tags"] == [" a", "b "]'
}

@test "setting nothing clears" {
    qm tags --set=a f
    qm tags --set=, f
    stdout_is <<<"Tags set: "
    succeeds
    qm tags f
    stdout_is <<<"f: (no tags)"
}

@test "clearing removes every attribute" {
    set_finder f '["Red\n6"]'
    qm tags --add=Blue f
    qm tags --clear f
    stdout_is <<<"Tags cleared: f"
    succeeds
    [ -z "$(getfattr -- f)" ]
}

@test "a bare --add adds the tag true" {
    qm tags --add f
    stdout_is <<<'Added tag "true" to f'
    qm tags f
    stdout_is <<<"f: true"
}

@test "clear goes before add, add before remove, remove before set" {
    qm tags --set=a,b f
    qm tags --set=z --remove=a --add=c f
    stdout_is <<<'Added tag "c" to f'
    qm tags --set=z --remove=a f
    stdout_is <<<'Removed tag "a" from f'
    qm tags --clear --add=x f
    stdout_is <<<"Tags cleared: f"
    qm tags f
    stdout_is <<<"f: (no tags)"
}

@test "--clear counts as a flag only" {
    qm tags --set=a f
    qm tags --clear=yes f
    stdout_is <<<"f: a"
}

@test "--list shows the built-in tags and touches no file" {
    qm tags --set=a f
    qm tags --list --clear f
    stdout_is <<'END'
Available tags:
  Red
  Orange
  Yellow
  Green
  Blue
  Purple
  Gray
END
    succeeds
    qm tags f
    stdout_is <<<"f: a"
}

@test "--list shows the user's tags as they are stored" {
    mkdir -p "$HOME/Library/SyncedPreferences"
    for form in BINARY XML; do
        python3 -c '
import plistlib, sys
tags = [{"n": "Work", "l": 6}, {"n": "Work"}, {"n": ""}, {"l": 1}, "x", {"n": "Grün"}]
form = getattr(plistlib, "FMT_" + sys.argv[2])
with open(sys.argv[1], "wb") as file:
    plistlib.dump({"FinderTagDict": {"FinderTags": tags}}, file, fmt=form)
' "$HOME/Library/SyncedPreferences/com.apple.finder.plist" "$form"
        qm tags --list
        printf '%s\n' "Available tags:" "  Work" "  Work" "  Grün" | stdout_is
        qm tags --json --list
        printf '%s\n' "[" '  "Work",' '  "Work",' '  "Grün"' "]" | stdout_is
    done
}

@test "--json prints an object for each file" {
    make_file g
    qm tags --set=a,b f
    qm tags --json f g
    stdout_is <<END
{
  "file": "f",
  "path": "$box/f",
  "tags": [
    "a",
    "b"
  ]
}
{
  "file": "g",
  "path": "$box/g",
  "tags": []
}
END
    succeeds
}

@test "changes print texts in JSON mode too" {
    qm tags --json --add=a f
    stdout_is <<<'Added tag "a" to f'
}

@test "one action serves all files, and a missing one stops nothing" {
    make_file g
    mkdir d
    qm tags --add=x f missing d g
    printf 'Added tag "x" to %s\n' f d g | stdout_is
    stderr_is <<<"File not found: $box/missing"
    status_is 0
    qm tags d g
    printf '%s: x\n' d g | stdout_is
}

@test "a file that cannot be written keeps its tags, and the system's reason is told" {
    qm tags --set=old f
    chmod 444 f
    qm_unprivileged tags --add=new f
    stdout_is_empty
    stderr_is <<<"Failed to add tag: The tags of “f” couldn’t be saved: Permission denied"
    status_is 0
    qm_unprivileged tags --remove=old f
    stderr_is <<<"Failed to remove tag: The tags of “f” couldn’t be saved: Permission denied"
    qm_unprivileged tags --set=a f
    stderr_is <<<"Failed to set tags: The tags of “f” couldn’t be saved: Permission denied"
    qm_unprivileged tags --clear f
    stderr_is <<<"Failed to clear tags: The tags of “f” couldn’t be saved: Permission denied"
    qm_unprivileged tags f
    stdout_is <<<"f: old"
}

@test "a read-only file system is told" {
    [ "$(id -u)" = 0 ] && unshare -m true 2>/dev/null || skip "mounting needs root"
    mkdir disk
    # The mount lives and dies with the namespace.
    capture unshare -m sh -c 'mount -t tmpfs none disk && touch disk/f &&
        mount -o remount,ro disk && "$1" tags --add=x disk/f' sh "$QM"
    stdout_is_empty
    stderr_is <<<"Failed to add tag: The tags of “f” couldn’t be saved: Read-only file system"
}

@test "a file system without user attributes is told" {
    qm tags --add=x /proc/version
    stderr_is <<<"Failed to add tag: The tags of “version” couldn’t be saved: Operation not supported"
    status_is 0
}

@test "a list without room is refused and the old one stays" {
    qm tags --set=old f
    qm tags "--add=$(head -c 70000 /dev/zero | tr '\0' x)" f
    stdout_is_empty
    status_is 0
    qm tags f
    stdout_is <<<"f: old"
}

@test "results are green, dim where nothing was to be done, red where it failed" {
    qm_on_terminal stdout tags --add=a f
    printf '\033[32mAdded tag "a" to f\033[0m\n' | stdout_is
    qm_on_terminal stdout tags --add=a f
    printf '\033[2mTag "a" already exists on f\033[0m\n' | stdout_is
    qm_on_terminal stdout tags f
    printf 'f: a\n' | stdout_is
    qm_on_terminal stdout tags --clear f
    printf '\033[32mTags cleared: f\033[0m\n' | stdout_is
    qm_on_terminal stdout tags f
    printf '\033[2mf: (no tags)\033[0m\n' | stdout_is
    qm_on_terminal stdout tags --add=a /proc/version
    printf '\033[31mFailed to add tag: The tags of “version” couldn’t be saved: Operation not supported\033[0m\n' |
        stderr_is
}

@test "tags of a Mac keep their colours and stay readable for it" {
    set_finder f '["Red\n6", "Eigenes"]'
    qm tags --add=Blau f
    [ "$(finder_entries f)" = "['Red\\n6', 'Eigenes', 'Blau']" ]
    [ "$(desktop_value f)" = "Red,Eigenes,Blau" ]
}

@test "a Mac's edit after ours counts, and so does a desktop's" {
    set_finder f '["a"]' xml
    qm tags --set=a,b f
    set_finder f '["c\n4"]'
    qm tags f
    stdout_is <<<"f: c"
    qm tags --set=a,b f
    setfattr -n user.xdg.tags -v b f
    qm tags f
    stdout_is <<<"f: b"
}

@test "a name with a comma survives" {
    qm tags '--add=x,y' f
    qm tags --add=z f
    qm tags --json f
    json_holds 'document["tags"] == ["x,y", "z"]'
    [ "$(finder_entries f)" = "['x,y', 'z']" ]
}

@test "copies of other programs keep the tags" {
    set_finder f '["a"]'
    qm tags --set=a,x f
    cp -a f copied
    qm tags copied
    stdout_is <<<"copied: a, x"
    rsync -aX f synced
    qm tags synced
    stdout_is <<<"synced: a, x"
}

@test "what setfattr writes is read, and getfattr reads what is written" {
    setfattr -n user.xdg.tags -v "one,,two, three" f
    qm tags f
    stdout_is <<<"f: one, two,  three"
    qm tags --add=four f
    [ "$(desktop_value f)" = "one,two, three,four" ]
}

@test "odd names cost nothing" {
    touch $'caf\xe9' $'a\nb'
    qm tags --add=x $'caf\xe9' $'a\nb'
    printf 'Added tag "x" to %s\n' $'caf\xe9' $'a\nb' | stdout_is
    qm tags $'--add=\xff' f
    printf 'Added tag "\xff" to f\n' | stdout_is
    qm tags f
    printf 'f: \xff\n' | stdout_is
}

@test "a kill in the middle of a write leaves nothing but old and new names" {
    set_finder f '["a,b", "c"]'
    for round in $(seq 40); do
        # Two lists in turn, until the blow.
        (while :; do
            "$QM" tags --set=old1,old2 f
            "$QM" tags --add=x,y f
        done >/dev/null 2>&1) &
        writer=$!
        sleep "0.0$((RANDOM % 30 + 5))"
        kill -9 "$writer"
        pkill -9 -P "$writer" 2>/dev/null || true
        wait "$writer" 2>/dev/null || true
        qm tags --json f
        json_holds 'set(document["tags"]) <= {"a,b", "c", "old1", "old2", "x,y"}'
    done
}
