# SPDX-License-Identifier: Apache-2.0
# Reads options.tsv for the scripts beside it, which are given to awk together with this one. They
# print in their END blocks, mostly through fill().
#
# Afterwards there are: commands[1..commandCount]; summaryOf, operandOf, operandOffers by command;
# and by number of row, 1..rowCount: commandOf, wordsOf, valueOf, offersOf, summaries, texts.

BEGIN { FS = "\t" }

/^#/ || /^$/ { next }

NF != 6 { stop("six columns are wanted") }

$2 == "-" {
    commands[++commandCount] = $1
    operandOf[$1] = $3
    operandOffers[$1] = $4
    summaryOf[$1] = $5
    next
}

$1 != "*" && !($1 in summaryOf) { stop("an option before its command") }

{
    rowCount++
    commandOf[rowCount] = $1
    wordsOf[rowCount] = $2
    valueOf[rowCount] = $3
    offersOf[rowCount] = $4
    summaries[rowCount] = $5
    texts[rowCount] = $6
    wordsOfCommand[$1] = wordsOfCommand[$1] " " $2 " "
}

function stop(why) {
    printf "%s:%d: %s\n", FILENAME, FNR, why > "/dev/stderr"
    failed = 1
    exit 1
}

# Whether the row is an option of the command; of none, for an empty one.
function belongs(row, command,    first) {
    if (commandOf[row] == "*") {
        first = wordsOf[row]
        sub(/ .*/, "", first)
        return command == "" || index(wordsOfCommand[command], " " first " ") == 0
    }
    return commandOf[row] == command
}

function isLong(word) { return word ~ /^--/ }

# The text between single quotation marks, for any of the shells.
function quoted(text) {
    gsub(/'/, "'\\''", text)
    return "'" text "'"
}

# Prints the file with the outcome of table(MARK) in place of each line "@MARK@".
function fill(template,    line, mark) {
    if (failed) {
        exit 1
    }
    while ((getline line < template) > 0) {
        if (line ~ /^@[A-Z]+@$/) {
            mark = substr(line, 2, length(line) - 2)
            table(mark)
        } else {
            print line
        }
    }
}
