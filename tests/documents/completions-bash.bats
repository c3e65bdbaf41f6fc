#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# What bash makes of a command line when the tabulator key is pressed ("*": of all candidates).

load ../cli/helpers
load completions

@test "commands, options and panes are completed" {
    completes_words bash qm.bash
}

@test "all that may come next is offered" {
    completes bash qm.bash <<'END'
qm *
qm --help --json --no-color --quiet --verbose --version -h -v checksum info open tags |
qm info -*
qm info --help --json --no-color --quiet --short --verbose --version -h -s -v |
END
}

@test "tags are completed from those that every Mac begins with" {
    completes bash qm.bash <<'END'
qm tags --add=*
qm tags --add=Blue Gray Green Orange Purple Red Yellow |
END
}

@test "tags are completed from those that are defined" {
    define_tags Red 'Very Important' Wörk a,b "It's" '$HOME'
    completes bash qm.bash <<'END'
qm tags --add=V
qm tags --add=Very\ Important |
qm tags --remove=Very\ Im
qm tags --remove=Very\ Important |
qm tags --remove="Ve
qm tags --remove="Very Important" |
qm tags --remove='It
qm tags --remove='It'\''s' |
qm tags --add="$
qm tags --add="\$HOME" |
qm tags --add=W
qm tags --add=Wörk |
qm tags --add=a
qm tags --add=a\,b |
qm tags --add=plai
qm tags --add=plai|
END
}

@test "a list of tags is completed behind its last comma, without names that have one" {
    define_tags Red 'Very Important' a,b
    completes bash qm.bash <<'END'
qm tags --set=R
qm tags --set=Red|
qm tags --set=Very\ Important,R
qm tags --set=Very\ Important,Red|
qm tags --set=Red,*
qm tags --set=Red,Red Red,Very\ Important |
END
}

@test "tags are asked of the qm that is typed" {
    asks_what_is_typed bash qm.bash
}

@test "operands and files of options are files" {
    completes_files bash qm.bash
}

@test "an equals sign that separates no words changes nothing" {
    { echo 'COMP_WORDBREAKS=${COMP_WORDBREAKS//=/}'; cat "$COMPLETIONS/qm.bash"; } \
        >"$BATS_TEST_TMPDIR/script"
    define_tags 'Very Important'
    COMPLETIONS=$BATS_TEST_TMPDIR completes bash script <<'END'
qm tags --add=V
qm tags --add=Very\ Important |
qm tags --set=a,V
qm tags --set=a,Very\ Important|
END
}
