# SPDX-License-Identifier: Apache-2.0
# awk -f table.awk -f man.awk -v template=qm-info.1.in -v command=info -v version=1.0.0 \
#     -v application=org.quillmere.Quillmere options.tsv
# The page of the whole tool has the global options, and "*" for its command.

END { fill(template) }

function table(mark,    row) {
    if (mark == "SYSTEM") {
        print ".Os \"Quillmere " version "\""
    } else if (mark == "ENTRY") {
        print ".It Pa applications/" application ".desktop"
    } else if (mark == "OPTIONS") {
        print ".Bl -tag -width Ds"
        for (row = 1; row <= rowCount; row++) {
            if (commandOf[row] == command) {
                printOption(row)
            }
        }
        print ".El"
    }
}

function printOption(row,    words, count, i, line) {
    count = split(wordsOf[row], words, " ")
    line = ".It"
    for (i = 1; i <= count; i++) {
        line = line (i > 1 ? " ," : "") " Fl " escaped(substr(words[i], 2)) value(row, words[i])
    }
    print line
    print sentences(texts[row])
}

function value(row, word,    name) {
    if (valueOf[row] == "-") {
        return ""
    }
    name = valueOf[row]
    gsub(/\|/, " | ", name)
    if (offersOf[row] == "words") {
        return " Cm " name
    }
    return isLong(word) ? " Ns = Ns Ar " name : " Ar " name
}

# A sentence to a line, as formatters want them; what is between backquotes in bold type.
function sentences(text,    parts, count, i, result) {
    gsub(/\\/, "\\e", text)
    count = split(text, parts, "`")
    for (i = 1; i <= count; i++) {
        result = result (i % 2 == 1 ? parts[i] : "\\fB" escaped(parts[i]) "\\fP")
    }
    gsub(/\. /, ".\n", result)
    return result
}

function escaped(text) {
    gsub(/-/, "\\-", text)
    return text
}
