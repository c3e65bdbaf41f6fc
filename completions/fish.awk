# SPDX-License-Identifier: Apache-2.0
# awk -f table.awk -f fish.awk -v template=qm.fish.in options.tsv

END { fill(template) }

function table(mark,    i) {
    if (mark != "TABLE") {
        return
    }
    for (i = 1; i <= commandCount; i++) {
        offer("", commands[i], summaryOf[commands[i]])
    }
    printOptions("")
    for (i = 1; i <= commandCount; i++) {
        printf "complete -c qm -n %s -F\n", \
            quoted("__qm_is_at_operand " commands[i] separate(commands[i]))
        printOptions(commands[i])
    }
}

# Options are offered as words: what fish knows as options it joins, and parts from their values.
function printOptions(command,    row, words, count, i) {
    for (row = 1; row <= rowCount; row++) {
        if (!belongs(row, command)) {
            continue
        }
        count = split(wordsOf[row], words, " ")
        for (i = 1; i <= count; i++) {
            printOption(row, command, words[i])
        }
    }
}

function printOption(row, command, word) {
    if (valueOf[row] == "-") {
        offer(command, word, summaries[row])
    } else if (isLong(word)) {
        offer(command, word "=", summaries[row])
        printf "complete -c qm -n %s -a %s\n", quoted("__qm_is_at_value " command " " word), \
            quoted(word "=(" values(row) ")")
    } else {
        offer(command, word, summaries[row])
        printf "complete -c qm -n %s -a %s\n", quoted("__qm_is_behind " command " " word), \
            quoted(values(row))
    }
}

function offer(command, word, summary) {
    printf "complete -c qm -n %s -a %s -d %s\n", \
        quoted("__qm_is_at_word \"" command "\""), quoted(word), quoted(summary)
}

function values(row,    words) {
    if (offersOf[row] == "words") {
        words = valueOf[row]
        gsub(/\|/, " ", words)
        return words
    }
    if (offersOf[row] == "tag-list") {
        return "__qm_tag_lists"
    }
    return offersOf[row] == "tags" ? "__qm_tags" : "__qm_files"
}

# The options whose values are words of their own, and so no operands.
function separate(command,    row, result) {
    for (row = 1; row <= rowCount; row++) {
        if (belongs(row, command) && valueOf[row] != "-" && !isLong(wordsOf[row])) {
            result = result " " wordsOf[row]
        }
    }
    return result
}
