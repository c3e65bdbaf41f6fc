#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# The table of commands and options says what qm says, and what it does.

load ../cli/helpers
load ../cli/application

: "${OPTIONS:?must name the table of commands and options}"
OPTIONS=$(realpath "$OPTIONS")

setup() {
    pin_environment
    make_box
    make_file a.txt
}

teardown() {
    stop_all
}

# rows COMMAND-PATTERN WORDS-PATTERN: the rows of the table whose columns are matched as a whole.
rows() {
    awk -F '\t' -v command="^($1)\$" -v words="^($2)\$" \
        '!/^#/ && $1 ~ command && $2 ~ words' "$OPTIONS"
}

commands() {
    rows '[a-z]+' - | cut -f1
}

# The help's lines with "word  summary" under a heading that ends in $1.
help_rows() {
    "$QM" --help | sed -n "/$1:\$/,/^\$/s/^  \([^ ]*\)  *\(.*\)/\1\t\2/p"
}

@test "commands are those of the help, in its words" {
    help_rows Commands >"$seen/out"
    [ "$(wc -l <"$seen/out")" -eq 4 ]
    rows '[a-z]+' - | cut -f1,5 | stdout_is
}

@test "global options are those of the help, in its words" {
    help_rows Options >"$seen/out"
    [ "$(wc -l <"$seen/out")" -eq 6 ]
    rows '[*]' '.*' | cut -f2,5 | sed 's/^\(--[a-z-]*\) -./\1/' | stdout_is
}

# The options of a usage line, one in a line, as "--set=TAGS" or "-p left|right". A bar parts
# options only in front of a dash.
usage_options() {
    capture "$QM" "$1"
    sed 's/.*Usage: //; s/|-/][-/g' "$seen/err" | grep -o '\[-[^]]*\]' | tr -d '[]'
}

# The options of a command's rows in the same form.
table_options() {
    rows "$1" '-.+' | awk -F '\t' '{
        count = split($2, words, " ")
        for (i = 1; i <= count; i++) {
            print words[i] ($3 == "-" ? "" : (words[i] ~ /^--/ ? "=" : " ") $3)
        }
    }'
}

@test "the options of usage lines are in the table, with their values" {
    local command
    for command in $(commands); do
        usage_options "$command" | sort >"$seen/usage"
        [ -s "$seen/usage" ]
        table_options "$command" | sed 's/--verify=FILE/--verify=file/' | sort >"$seen/table"
        comm -23 "$seen/usage" "$seen/table" >"$seen/out"
        stdout_is_empty
    done
}

# What a run came to: output, status, the file's tags, the script that was sent. Before it the file
# has one tag.
outcome() {
    rm -f "$record"/script.*
    "$QM" tags --set=First a.txt >/dev/null
    "$@"
    cat "$seen/out" "$seen/err"
    echo "status $status"
    "$QM" tags a.txt
    cat "$record"/script.* 2>/dev/null || true
}

# The words of a row's option as they are typed, an array for each, into `typed`.
type_option() {
    local word=$1 value=$2 offers=$3
    [ "$offers" != words ] || value=${value##*|}
    case "$word $value" in
        *\ -) typed=("$word") ;;
        --*) typed=("$word=$value") ;;
        *) typed=("$word" "$value") ;;
    esac
}

start_everything() {
    setfattr -n user.probe -v x a.txt 2>/dev/null || skip "no extended attributes here"
    start_bus
    start_application
}

@test "options of commands do what the table says: something, or nothing where they are accepted" {
    start_everything
    local command words value offers summary text word checked=0
    while IFS=$'\t' read -r command words value offers summary text; do
        outcome qm "$command" a.txt >"$seen/without"
        for word in $words; do
            type_option "$word" "$value" "$offers"
            outcome qm "$command" "${typed[@]}" a.txt >"$seen/with"
            ! grep -E 'File not found|specified|Unknown' "$seen/with" || complain "$command $word"
            if [[ $text == Accepted* ]]; then
                cmp "$seen/with" "$seen/without"
            else
                ! cmp -s "$seen/with" "$seen/without" || complain "$command $word changes nothing"
            fi
            checked=$((checked + 1))
        done
    done < <(rows '[a-z]+' '-.+')
    [ "$checked" -ge 18 ]
}

# Both commands on a terminal, with the words given.
both() {
    outcome qm_on_terminal stdout info "$@" a.txt
    outcome qm_on_terminal stdout open "$@" a.txt
}

@test "global options do what the table says, in front of the command and behind it" {
    start_everything
    both >"$seen/without"
    local command words value offers summary text word
    while IFS=$'\t' read -r command words value offers summary text; do
        for word in $words; do
            both "$word" >"$seen/with"
            if [[ $text == Accepted* ]]; then
                cmp "$seen/with" "$seen/without"
            else
                ! cmp -s "$seen/with" "$seen/without" || complain "$word changes nothing"
            fi
            qm info "$word" a.txt
            cp "$seen/out" "$seen/behind"
            qm "$word" info a.txt
            stdout_is <"$seen/behind"
            succeeds
        done
    done < <(rows '[*]' '.*')
}

@test "an option that is missing in the table would be found out" {
    grep -v $'^info\t--short' "$OPTIONS" >"$seen/table.tsv"
    OPTIONS=$seen/table.tsv
    usage_options info | sort >"$seen/usage"
    table_options info | sort >"$seen/table"
    [ "$(comm -23 "$seen/usage" "$seen/table")" = --short ]
}

@test "a damaged table gives no completions" {
    local folder script
    folder=$(dirname "$OPTIONS")
    { cat "$OPTIONS"; printf 'info\t--new\n'; } >damaged.tsv
    for script in bash zsh fish; do
        capture awk -f "$folder/table.awk" -f "$folder/$script.awk" -v template=/dev/null damaged.tsv
        stdout_is_empty
        grep -q 'damaged.tsv:.*: six columns are wanted' "$seen/err"
        status_is 1
    done
}
