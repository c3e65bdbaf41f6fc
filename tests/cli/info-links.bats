#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Links: their own name, size, dates and kind; permissions and owner of what they lead to.

load helpers

@test "a link to a file" {
    make_file a.txt
    chmod 640 a.txt
    ln -s a.txt link
    touch -h -d '2021-03-04 05:06:07 UTC' link
    qm info link
    stdout_is <<END
link
  Path:         $box/link
  Size:         5 bytes (5 bytes)
  Kind:         Alias
  UTI:          public.symlink
  Created:      $(creation_date link | grep . || echo —)
  Modified:     2021-03-04 05:06:07
  Permissions:  lrw-r----- (640)
  Owner:        $(owner_name a.txt):$(group_name a.txt)
  (Symbolic link)
END
    succeeds
    qm info -s link
    echo '5 bytes  2021-03-04 05:06:07  link' | stdout_is
    succeeds
}

@test "a link to a folder is both" {
    mkdir sub
    chmod 711 sub
    ln -s sub link
    qm info --json link
    json_holds 'document["isSymlink"] is True and document["isDirectory"] is True'
    json_holds 'document["permissions"] == "lrwx--x--x" and document["posixPermissions"] == 0o711'
    json_holds 'document["size"] == 3 and document["uti"] == "public.symlink"'
    succeeds
}

@test "a link to a file is no folder" {
    touch f
    ln -s f link
    qm info --json link f
    json_holds '[d["isSymlink"] for d in document] == [True, False]'
    json_holds '[d["isDirectory"] for d in document] == [False, False]'
}

@test "a link shows the owner of its target" {
    needs_root
    touch f
    chown 54321:54322 f
    ln -s f link
    chown -h 1:1 link
    qm info link
    line_is Owner 54321:54322
}

@test "a link to a package is a link" {
    mkdir Paint.app
    ln -s Paint.app link.app
    qm info link.app
    [ "$(tail -n 1 "$seen/out")" = '  (Symbolic link)' ] || complain "not only a link"
    line_is UTI public.symlink
    succeeds
}

@test "a dangling link is not found in the text forms" {
    ln -s nothing link
    for option in --short --quiet; do
        qm info "$option" link
        stdout_is_empty
        echo "File not found: $box/link" | stderr_is
        status_is 0
    done
}

@test "a dangling link has its own record in JSON" {
    ln -s nothing link
    touch -h -d '2021-03-04 05:06:07 UTC' link
    qm info --json link
    local created
    created=$(creation_date link)
    {
        printf '%s\n' '{' \
            '  "name": "link",' \
            "  \"path\": \"$box/link\"," \
            '  "size": 7,' \
            '  "kind": "Alias",' \
            '  "uti": "public.symlink",' \
            '  "isDirectory": false,' \
            '  "isHidden": false,' \
            '  "isSymlink": true,' \
            '  "permissions": "",' \
            '  "posixPermissions": 0,' \
            '  "owner": "",' \
            '  "group": "",' \
            '  "tags": [],' \
            ${created:+"  \"created\": \"$created\","} \
            '  "modified": "2021-03-04 05:06:07"' \
            '}'
    } | stdout_is
    echo "File not found: $box/link" | stderr_is
    status_is 0
}

@test "links in a circle are not found" {
    ln -s one two
    ln -s two one
    qm info one
    stdout_is_empty
    echo "File not found: $box/one" | stderr_is
    status_is 0
    qm info --json one
    json_holds 'document["isSymlink"] is True and document["permissions"] == ""'
    qm info one/x
    stdout_is_empty
    echo "File not found: $box/one/x" | stderr_is
    status_is 0
}

@test "a link to a link leads to the end of the chain" {
    install -m 600 /dev/null f
    ln -s f one
    ln -s one two
    qm info two
    line_is Permissions 'lrw------- (600)'
    line_is Size '3 bytes (3 bytes)'
    succeeds
}
