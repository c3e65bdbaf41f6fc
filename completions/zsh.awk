# SPDX-License-Identifier: Apache-2.0
# awk -f table.awk -f zsh.awk -v template=_qm.in options.tsv

END { fill(template) }

function table(mark,    i, command) {
    if (mark == "COMMANDS") {
        for (i = 1; i <= commandCount; i++) {
            printf "    %s\n", quoted(commands[i] ":" summaryOf[commands[i]])
        }
    } else if (mark == "GLOBAL") {
        printSpecs("", "    ")
    } else if (mark == "OPTIONS") {
        for (i = 1; i <= commandCount; i++) {
            command = commands[i]
            printf "    %s)\n      specs=(\n", quoted(command)
            printSpecs(command, "        ")
            printf "        %s\n      )\n      ;;\n", quoted("*:" operandOf[command] ":_files")
        }
    }
}

function printSpecs(command, indent,    row, words, count, i) {
    for (row = 1; row <= rowCount; row++) {
        if (belongs(row, command)) {
            count = split(wordsOf[row], words, " ")
            for (i = 1; i <= count; i++) {
                printf "%s%s\n", indent, quoted(spec(row, words[i], words, count, i))
            }
        }
    }
}

# One option for _arguments. What ends the reading of the line leaves no room for anything else.
function spec(row, word, words, count, own,    i, others, text) {
    if (wordsOf[row] ~ /^--(version|help) /) {
        others = "- *"
    } else {
        for (i = 1; i <= count; i++) {
            others = others (i == own ? "" : (others == "" ? "" : " ") words[i])
        }
    }
    text = summaries[row]
    gsub(/\[|\]|:/, "\\\\&", text)
    return (others == "" ? "" : "(" others ")") word \
        (valueOf[row] == "-" ? "" : (isLong(word) ? "=-" : "")) "[" text "]" \
        (valueOf[row] == "-" ? "" : ":" valueOf[row] ":" action(row))
}

function action(row,    words) {
    if (offersOf[row] == "words") {
        words = valueOf[row]
        gsub(/\|/, " ", words)
        return "(" words ")"
    }
    if (offersOf[row] == "tag-list") {
        return "_sequence -s , _qm_tags -x"
    }
    return offersOf[row] == "tags" ? "_qm_tags" : "_files"
}
