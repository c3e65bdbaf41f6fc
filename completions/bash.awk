# SPDX-License-Identifier: Apache-2.0
# awk -f table.awk -f bash.awk -v template=qm.bash.in options.tsv

END { fill(template) }

function table(mark) {
    if (mark == "WORDS") {
        printWords("")
        for (i = 1; i <= commandCount; i++) {
            printWords(commands[i])
        }
    } else if (mark == "VALUES") {
        for (row = 1; row <= rowCount; row++) {
            printValue(row)
        }
    }
}

# What may be typed for a command; in front of it for an empty one.
function printWords(command,    row, words, count, i, line) {
    line = ""
    for (i = 1; command == "" && i <= commandCount; i++) {
        line = line " " commands[i]
    }
    for (row = 1; row <= rowCount; row++) {
        if (!belongs(row, command)) {
            continue
        }
        count = split(wordsOf[row], words, " ")
        for (i = 1; i <= count; i++) {
            line = line " " words[i] (isLong(words[i]) && valueOf[row] != "-" ? "=" : "")
        }
    }
    printf "        %s) words=(%s) ;;\n", quoted(command), substr(line, 2)
}

function printValue(row,    words, count, i, offers) {
    if (valueOf[row] == "-") {
        return
    }
    offers = offersOf[row] == "words" ? valueOf[row] : offersOf[row]
    count = split(wordsOf[row], words, " ")
    for (i = 1; i <= count; i++) {
        printf "        %s) offers=%s ;;\n", quoted(commandOf[row] " " words[i]), quoted(offers)
    }
}
