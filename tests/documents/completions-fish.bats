#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# What fish offers for a command line. It puts what is chosen between quotation marks by itself.

load ../cli/helpers
load completions

# offers LINE: standard input is what fish offers, without the descriptions.
offers() {
    capture fish --no-config -c 'source $argv[1]; complete -C $argv[2]' "$COMPLETIONS/qm.fish" "$1"
    cut -f1 "$seen/out" >"$seen/names"
    mv "$seen/names" "$seen/out"
    stdout_is
    succeeds
}

@test "commands and global options are completed" {
    offers 'qm ch' <<<checksum
    offers 'qm --json i' <<<info
    offers 'qm ' <<'END'
checksum
info
open
tags
-h
-v
--help
--json
--no-color
--quiet
--verbose
--version
END
}

@test "candidates are described" {
    capture fish --no-config -c 'source $argv[1]; complete -C "qm ch"' "$COMPLETIONS/qm.fish"
    stdout_is <<<$'checksum\tCalculate file checksums (SHA-256, SHA-1, MD5)'
}

@test "each command has its options, in front of its operands and behind them" {
    offers 'qm info --sh' <<<--short
    offers 'qm info plain.txt --sh' <<<--short
    offers 'qm tags --a' <<<--add=
    printf '%s\n' --sha1 --sha256 | offers 'qm checksum --sh'
    # Short options cannot be joined.
    offers 'qm open -b' <<<-b
    offers 'qm nonsense -' </dev/null
}

@test "tags are completed from those that are defined" {
    define_tags Red 'Very Important' Wörk a,b "It's" '$HOME'
    offers 'qm tags --add=V' <<<'--add=Very Important'
    offers 'qm tags --remove="Ver' <<<'--remove=Very Important'
    offers 'qm tags --remove=W' <<<--remove=Wörk
    offers 'qm tags --add=a' <<<--add=a,b
    offers 'qm tags --add=plai' </dev/null
    printf -- '--add=%s\n' '$HOME' a,b "It's" Red 'Very Important' Wörk | offers 'qm tags --add='
}

@test "a list of tags is completed behind its last comma, without names that have one" {
    define_tags Red 'Very Important' zebra,b
    offers 'qm tags --set=Red,V' <<<'--set=Red,Very Important'
    offers 'qm tags --set="Very Important,R' <<<'--set=Very Important,Red'
    offers 'qm tags --set=Very\ Important,R' <<<'--set=Very Important,Red'
    offers 'qm tags --set=zeb' </dev/null
}

@test "tags are asked of the qm that is typed" {
    install_at_home
    offers '~/bin/qm tags --add=O' <<<--add=Own
}

@test "the pane is completed as a word of its own" {
    printf '%s\n' left right | offers 'qm open -p '
    offers 'qm open -p r' <<<right
    offers 'qm open -p right Fo' <<<Folder/
}

@test "operands and files of options are files" {
    offers 'qm info My' <<<'My File.txt'
    offers 'qm tags Ü' <<<Übung.txt
    offers 'qm open Folder/' <<<Folder/inside
    offers 'qm checksum --verify=pl' <<<--verify=plain.txt
    offers 'qm checksum --verify=My' <<<'--verify=My File.txt'
    offers 'qm checksum --verify="My' <<<'--verify=My File.txt'
    offers 'qm checksum --verify=' <<'END'
--verify=Folder/
--verify=My File.txt
--verify=plain.txt
--verify=Übung.txt
END
}
