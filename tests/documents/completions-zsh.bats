#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# What zsh makes of a command line when the tabulator key is pressed ("*": of all candidates).

load ../cli/helpers
load completions

@test "commands, options and panes are completed" {
    completes_words zsh _qm
}

@test "all that may come next is offered" {
    completes zsh _qm <<'END'
qm *
qm checksum info open tags |
qm info --*
qm info --help --json --no-color --quiet --short --verbose --version |
END
}

@test "tags are completed from those that are defined" {
    define_tags Red 'Very Important' Wörk a,b "It's"
    completes zsh _qm <<'END'
qm tags --add=V
qm tags --add=Very\ Important |
qm tags --remove=Very\ Im
qm tags --remove=Very\ Important |
qm tags --remove="Ve
qm tags --remove=Very\ Important |
qm tags --remove='It
qm tags --remove=It\'s |
qm tags --add=W
qm tags --add=Wörk |
qm tags --add=*
qm tags --add=It\'s --add=Red --add=Very\ Important --add=Wörk --add=a,b |
qm tags --add=plai
qm tags --add=plai|
END
}

@test "a list of tags is completed behind its last comma, without names that have one" {
    define_tags Red 'Very Important' a,b
    completes zsh _qm <<'END'
qm tags --set=Very\ Important,R
qm tags --set=Very\ Important,Red,|
qm tags --set=V
qm tags --set=Very\ Important,|
qm tags --set=a
qm tags --set=a|
END
}

@test "tags are asked of the qm that is typed" {
    asks_what_is_typed zsh _qm
}

@test "operands and files of options are files" {
    completes_files zsh _qm
}
