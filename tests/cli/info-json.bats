#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# The JSON form of qm info: text, order of the keys, and what stands in for what is not there.

load helpers

@test "one file is an object, byte by byte" {
    make_file a.txt
    qm info --json a.txt
    { file_record "$box/a.txt"; echo; } | stdout_is
    succeeds
}

@test "two files are an array, byte by byte" {
    make_file a.txt
    make_file b.txt
    qm info --json b.txt a.txt
    {
        echo '['
        file_record "$box/b.txt" '  '
        echo ','
        file_record "$box/a.txt" '  '
        printf '\n]\n'
    } | stdout_is
    succeeds
}

@test "the same file twice is an array of two" {
    make_file a.txt
    qm info --json a.txt a.txt
    json_holds 'len(document) == 2 and document[0] == document[1]'
    succeeds
}

@test "JSON wins over short" {
    make_file a.txt
    for words in "--json -s" "-s --json" "--short --json" "--json --short -s"; do
        # shellcheck disable=SC2086 # the words of one line
        qm info $words a.txt
        { file_record "$box/a.txt"; echo; } | stdout_is
        succeeds
    done
}

@test "a missing file has an empty record" {
    qm info --json missing.txt
    { empty_record; echo; } | stdout_is
    echo "File not found: $box/missing.txt" | stderr_is
    status_is 0
}

@test "a missing file keeps its place among the others" {
    make_file a.txt
    qm info --json missing a.txt gone
    {
        echo '['
        empty_record '  '
        echo ','
        file_record "$box/a.txt" '  '
        echo ','
        empty_record '  '
        printf '\n]\n'
    } | stdout_is
    printf 'File not found: %s\n' "$box/missing" "$box/gone" | stderr_is
    status_is 0
}

@test "a folder" {
    mkdir sub
    qm info --json sub
    json_holds 'document["isDirectory"] is True and document["isSymlink"] is False'
    json_holds 'document["size"] == 0 and document["kind"] == "Folder"'
    json_holds 'document["uti"] == "public.folder" and document["permissions"] == "drwxr-xr-x"'
    json_holds 'document["posixPermissions"] == 493'
}

@test "the keys are in order for every kind of file" {
    touch .hidden-file
    mkdir Paint.app
    ln -s .hidden-file link
    mkfifo fifo
    qm info --json .hidden-file Paint.app link fifo
    json_holds 'all([k for k in list(d) if k != "created"] == [
        "name", "path", "size", "kind", "uti", "isDirectory", "isHidden", "isSymlink",
        "permissions", "posixPermissions", "owner", "group", "tags", "modified"]
        for d in document)'
    json_holds 'all(list(d)[13] == "created" for d in document if "created" in d)'
}

@test "files whose name begins with a dot are hidden" {
    touch .dotted plain
    qm info --json .dotted plain
    json_holds '[d["isHidden"] for d in document] == [True, False]'
}

@test "files listed in their folder's .hidden are hidden" {
    mkdir sub
    touch listed plain sub/listed sub/own
    printf 'listed\nnothing\n' >.hidden
    printf 'own' >sub/.hidden
    qm info --json listed plain sub/listed sub/own
    json_holds '[d["isHidden"] for d in document] == [True, False, False, True]'
}

@test "a list of hidden files that cannot be read hides nothing and blocks nothing" {
    mkfifo .hidden
    touch plain
    qm info --json plain
    json_holds 'document["isHidden"] is False'
    succeeds
    rm .hidden
    mkdir .hidden
    qm info --json plain
    json_holds 'document["isHidden"] is False'
    succeeds
    rmdir .hidden
    ln -s .hidden .hidden
    qm info --json plain
    json_holds 'document["isHidden"] is False'
    succeeds
}

@test "sizes beyond 32 bits are exact" {
    truncate -s 5000000001 f
    qm info --json f
    json_holds 'document["size"] == 5000000001'
}

@test "slashes and characters beyond ASCII stand as they are" {
    make_file 'Grüße 日本 😀.txt'
    qm info --json 'Grüße 日本 😀.txt'
    { file_record "$box/Grüße 日本 😀.txt"; echo; } | stdout_is
    succeeds
}

@test "the record is in one piece with its line break" {
    make_file a.txt
    qm info --json a.txt
    [ "$(tail -c 2 "$seen/out" | od -An -tx1)" = ' 7d 0a' ] ||
        complain "does not end in a brace and one line break"
}
