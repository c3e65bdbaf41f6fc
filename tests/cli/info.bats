#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# The two text forms of qm info.

load helpers

@test "the long block, byte by byte" {
    make_file a.txt
    qm info a.txt
    file_block "$box/a.txt" | stdout_is
    succeeds
}

@test "a missing file is told and costs neither the others nor the status" {
    qm info missing.txt
    stdout_is_empty
    echo "File not found: $box/missing.txt" | stderr_is
    status_is 0
    make_file a.txt
    qm info missing.txt a.txt gone/b.txt
    file_block "$box/a.txt" '' | stdout_is
    printf 'File not found: %s\n' "$box/missing.txt" "$box/gone/b.txt" | stderr_is
    status_is 0
}

@test "with several operands an empty line follows every block" {
    make_file a.txt
    make_file b.txt
    qm info a.txt b.txt
    { file_block "$box/a.txt" '' && file_block "$box/b.txt" ''; } | stdout_is
    succeeds
}

@test "the order of the operands is kept, and repeated ones are repeated" {
    make_file a.txt
    make_file b.txt
    qm info b.txt a.txt b.txt
    { file_block "$box/b.txt" ''; file_block "$box/a.txt" ''; file_block "$box/b.txt" ''; } |
        stdout_is
    succeeds
}

@test "short lines: size, date, name" {
    make_file a.txt
    qm info -s a.txt
    echo '3 bytes  2024-01-15 12:34:56  a.txt' | stdout_is
    succeeds
    qm info --short a.txt
    echo '3 bytes  2024-01-15 12:34:56  a.txt' | stdout_is
    succeeds
}

@test "short lines have no empty lines between them" {
    make_file a.txt
    make_file b.txt
    qm info -s a.txt missing b.txt
    stdout_is <<'END'
3 bytes  2024-01-15 12:34:56  a.txt
3 bytes  2024-01-15 12:34:56  b.txt
END
    echo "File not found: $box/missing" | stderr_is
    status_is 0
}

@test "a folder" {
    mkdir -p sub/inner
    chmod 750 sub
    touch -d '2020-02-29 23:59:59 UTC' sub
    qm info sub
    stdout_is <<END
sub
  Path:         $box/sub
  Size:         Zero KB (0 bytes)
  Kind:         Folder
  UTI:          public.folder
  Created:      $(creation_date sub | grep . || echo —)
  Modified:     2020-02-29 23:59:59
  Permissions:  drwxr-x--- (750)
  Owner:        $(owner_name sub):$(group_name sub)
END
    succeeds
    qm info -s sub
    echo 'Zero KB  2020-02-29 23:59:59  sub' | stdout_is
    succeeds
}

@test "a package tells so" {
    mkdir Paint.app
    touch -d '2020-02-29 23:59:59 UTC' Paint.app
    qm info Paint.app
    stdout_is <<END
Paint.app
  Path:         $box/Paint.app
  Size:         Zero KB (0 bytes)
  Kind:         Application
  UTI:          com.apple.application-bundle
  Created:      $(creation_date Paint.app | grep . || echo —)
  Modified:     2020-02-29 23:59:59
  Permissions:  drwxr-xr-x (755)
  Owner:        $(owner_name Paint.app):$(group_name Paint.app)
  (macOS Package/Bundle)
END
    succeeds
}

@test "folders of many extensions are packages" {
    mkdir one.bundle two.rtfd three.PLUGIN four.sparsebundle
    qm info ./*.*
    [ "$(grep -cxF '  (macOS Package/Bundle)' "$seen/out")" -eq 4 ] || complain "not four packages"
    succeeds
}

@test "only folders are packages" {
    touch File.app File.bundle File.rtfd File.kext File.pages
    mkdir Plain.txt Plain
    qm info File.* Plain*
    if grep -q Package "$seen/out"; then
        complain "a package that is none"
    fi
    succeeds
}

@test "sizes are in words and exact" {
    while read -r bytes words; do
        rm -f f
        truncate -s "$bytes" f
        qm info f
        line_is Size "$words ($bytes bytes)"
        succeeds
        qm info -s f
        [[ $(<"$seen/out") == "$words  "* ]] || complain "another size in the short line"
    done <<'END'
0 Zero KB
1 1 byte
2 2 bytes
999 999 bytes
1000 1 KB
1499 1 KB
1500 2 KB
999499 999 KB
999500 1 MB
1500000 1.5 MB
12345678 12.3 MB
999950000 1 GB
1234567890 1.23 GB
5000000000 5 GB
1000000000000 1 TB
END
}

@test "kinds and types go by the extension" {
    mkdir kinds
    while IFS='|' read -r name uti kind; do
        touch "kinds/$name"
        qm info "kinds/$name"
        line_is UTI "$uti"
        line_is Kind "$kind"
        succeeds
    done <<'END'
notes.txt|public.plain-text|text
NOTES.TXT|public.plain-text|text
photo.jpeg|public.jpeg|JPEG image
paper.pdf|com.adobe.pdf|PDF document
x.tar.gz|org.gnu.gnu-zip-archive|GZip archive
README|public.data|Document
.bashrc|public.data|Document
name.|public.data|Document
data.mkv|dyn.ah62d4rv4ge804450|Document
END
}

@test "a file to be executed has a type of its own, unless its extension tells one" {
    install -m 755 /dev/null tool
    install -m 755 /dev/null run.sh
    qm info tool
    line_is UTI public.unix-executable
    qm info run.sh
    line_is UTI public.shell-script
}

@test "the content of a file does not matter" {
    printf '%%PDF-1.7\n' >a.txt
    qm info a.txt
    line_is UTI public.plain-text
}

@test "permissions in letters and octal digits" {
    touch f
    while read -r mode letters octal; do
        chmod "$mode" f
        qm info f
        line_is Permissions "$letters $octal"
        succeeds
    done <<'END'
000 ---------- (0)
001 ---------x (1)
020 -----w---- (20)
400 -r-------- (400)
644 -rw-r--r-- (644)
751 -rwxr-x--x (751)
777 -rwxrwxrwx (777)
END
}

@test "set-id and sticky bits are not shown" {
    touch f
    chmod 4755 f
    qm info f
    line_is Permissions '-rwxr-xr-x (755)'
    chmod 2711 f
    qm info f
    line_is Permissions '-rwx--x--x (711)'
    chmod 6644 f
    qm info f
    line_is Permissions '-rw-r--r-- (644)'
    mkdir d
    chmod 1777 d
    qm info d
    line_is Permissions 'drwxrwxrwx (777)'
    chmod 3770 d
    qm info --json d
    json_holds 'document["posixPermissions"] == 0o770'
    json_holds 'document["permissions"] == "drwxrwx---"'
}

@test "owners without a name are numbers" {
    needs_root
    touch f
    chown 54321:54322 f
    qm info f
    line_is Owner 54321:54322
    qm info --json f
    json_holds '(document["owner"], document["group"]) == ("54321", "54322")'
    chown 54321:0 f
    qm info f
    line_is Owner 54321:root
    chown 0:54322 f
    qm info f
    line_is Owner root:54322
}

@test "a file that nobody may read is described all the same" {
    make_file a.txt
    chmod 000 a.txt
    qm_unprivileged info a.txt
    file_block "$box/a.txt" | sed 's/-rw-r--r-- (644)/---------- (0)/' | stdout_is
    succeeds
}

@test "a file in a folder that nobody may enter is not found" {
    mkdir closed
    make_file closed/a.txt
    chmod 000 closed
    qm_unprivileged info "$box/closed/a.txt"
    chmod 700 closed
    stdout_is_empty
    echo "File not found: $box/closed/a.txt" | stderr_is
    status_is 0
}

@test "an absolute operand with a slash at the end is a folder without one" {
    mkdir sub
    qm info "$box/sub/"
    line_is Path "$box/sub"
    [ "$(head -n 1 "$seen/out")" = sub ] || complain "another name"
    succeeds
}

@test "the locale decides on the decimal separator and on nothing of a plain date" {
    truncate -s 1500000 f
    touch -d '2024-01-15 12:34:56 UTC' f
    LC_ALL=de_DE.UTF-8 qm info -s f
    echo '1,5 MB  2024-01-15 12:34:56  f' | stdout_is
    LC_ALL='' LC_NUMERIC=fr_FR.UTF-8 LANG=en_US.UTF-8 qm info -s f
    echo '1,5 MB  2024-01-15 12:34:56  f' | stdout_is
    for locale in C POSIX en_US.UTF-8 ja_JP.UTF-8; do
        LC_ALL=$locale qm info -s f
        echo '1.5 MB  2024-01-15 12:34:56  f' | stdout_is
    done
    LC_ALL=nonsense qm info -s f
    echo '1.5 MB  2024-01-15 12:34:56  f' | stdout_is
    succeeds
}

@test "dates are in the calendar and digits of the locale" {
    make_file a.txt
    LC_ALL=th_TH.UTF-8 qm info a.txt
    line_is Modified '2567-01-15 12:34:56'
    LC_ALL='' LC_TIME=ar_EG.UTF-8 LANG=en_US.UTF-8 qm info a.txt
    line_is Modified '٢٠٢٤-٠١-١٥ ١٢:٣٤:٥٦'
}
