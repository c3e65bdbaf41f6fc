#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# qm checksum in text: digests, names, choice of the algorithm, status.

load helpers

empty_sha256=e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855

# Files around the size of the pieces that are read, with contents that differ from place to place.
make_samples() {
    local size
    seq 1 20000 >all
    for size in 0 1 2 63 64 65 4096 65535 65536 65537 131072; do
        head -c "$size" all >"size-$size"
    done
    rm all
}

@test "SHA-256 of files of many sizes" {
    make_samples
    qm checksum size-*
    sha256sum size-* | stdout_is
    succeeds
    qm checksum --sha256 size-*
    sha256sum size-* | stdout_is
    succeeds
}

@test "SHA-1 of files of many sizes" {
    make_samples
    qm checksum --sha1 size-*
    sha1sum size-* | stdout_is
    succeeds
}

@test "MD5 of files of many sizes" {
    make_samples
    qm checksum --md5 size-*
    md5sum size-* | stdout_is
    succeeds
}

@test "the digests of nothing" {
    touch empty
    qm checksum empty
    echo "$empty_sha256  empty" | stdout_is
    qm checksum --sha1 empty
    echo 'da39a3ee5e6b4b0d3255bfef95601890afd80709  empty' | stdout_is
    qm checksum --md5 empty
    echo 'd41d8cd98f00b204e9800998ecf8427e  empty' | stdout_is
    succeeds
}

@test "a file beyond 4 GiB" {
    # The digest is that of 4 GiB and one byte of zeros; other tools take long over it.
    truncate -s 4294967297 big || skip "no file of this size here"
    qm checksum big
    echo 'fbb82f7b353676bb562eb82157fcf0ea42c36492ca13ee56dbf82c08b6802c5c  big' | stdout_is
    succeeds
}

@test "the name alone is shown, however the operand was written" {
    mkdir -p sub/deep
    make_file sub/deep/a.txt
    digest=$(sha256sum <sub/deep/a.txt)
    digest=${digest%% *}
    for operand in sub/deep/a.txt ./sub/./deep//a.txt sub/deep/../deep/a.txt \
        "$box/sub/deep/a.txt" "$box//sub/deep/../deep/a.txt"; do
        qm checksum "$operand"
        echo "$digest  a.txt" | stdout_is
        succeeds
    done
}

@test "names come out as they are" {
    for name in 'with blanks' $'two\nlines' 'back\slash' '{}' '%s' 'é' $'\xff'; do
        touch "$name"
        qm checksum "$name"
        printf '%s  %s\n' "$empty_sha256" "$name" | stdout_is
        succeeds
    done
}

@test "MD5 wins over SHA-1 and SHA-256" {
    make_file a.txt
    for words in "--md5 --sha1" "--sha1 --md5" "--md5 --sha256" "--sha256 --sha1 --md5"; do
        # shellcheck disable=SC2086 # the words of one line
        qm checksum $words a.txt
        md5sum a.txt | stdout_is
        succeeds
    done
    qm checksum --sha256 --sha1 a.txt
    sha1sum a.txt | stdout_is
    succeeds
}

@test "the algorithm is chosen for all operands, wherever the option stands" {
    make_file a.txt
    make_file b.txt
    qm checksum a.txt --md5 b.txt
    md5sum a.txt b.txt | stdout_is
    succeeds
}

@test "a flag counts only when its value is true" {
    make_file a.txt
    qm checksum --md5=true a.txt
    md5sum a.txt | stdout_is
    for word in --md5=yes --md5= --md5=TRUE --md5=1 --sha1=yes --sha1=false; do
        qm checksum "$word" a.txt
        sha256sum a.txt | stdout_is
        succeeds
    done
    qm checksum --md5=yes --sha1 a.txt
    sha1sum a.txt | stdout_is
    qm checksum --md5 --md5=no a.txt
    sha256sum a.txt | stdout_is
}

@test "options that are none change nothing" {
    make_file a.txt
    for word in --sha512 --sha512=true --SHA1 --MD5 --sha-1 -m --algorithm=md5 --short; do
        qm checksum "$word" a.txt
        sha256sum a.txt | stdout_is
        succeeds
    done
}

@test "--verify without an operand does nothing" {
    for word in --verify --verify= --verify=x --verify=a=b --verify=false; do
        qm checksum "$word"
        stdout_is_empty
        succeeds
        qm checksum "$word" --json --md5
        stdout_is_empty
        succeeds
    done
}

@test "--verify with operands changes nothing" {
    make_file a.txt
    for word in --verify --verify=sums.txt --verify="$(sha256sum <a.txt)" --verify=; do
        qm checksum "$word" a.txt
        sha256sum a.txt | stdout_is
        succeeds
    done
    qm checksum --verify a.txt missing
    sha256sum a.txt | stdout_is
    echo "File not found: $box/missing" | stderr_is
    status_is 4
}

@test "a missing file" {
    qm checksum missing
    stdout_is_empty
    echo "File not found: $box/missing" | stderr_is
    status_is 4
}

@test "a folder cannot be read" {
    mkdir sub
    qm checksum sub
    stdout_is_empty
    echo "Could not read: $box/sub" | stderr_is
    status_is 1
    qm checksum /
    echo 'Could not read: /' | stderr_is
    status_is 1
}

@test "a file that nobody may read" {
    touch closed
    chmod 000 closed
    qm_unprivileged checksum closed
    stdout_is_empty
    echo "Could not read: $box/closed" | stderr_is
    status_is 1
}

@test "the last failure makes the status" {
    make_file a.txt
    touch closed
    chmod 000 closed
    qm_unprivileged checksum missing closed
    printf '%s\n' "File not found: $box/missing" "Could not read: $box/closed" | stderr_is
    status_is 1
    qm_unprivileged checksum closed missing
    printf '%s\n' "Could not read: $box/closed" "File not found: $box/missing" | stderr_is
    status_is 4
    qm_unprivileged checksum closed missing a.txt
    sha256sum a.txt | stdout_is
    status_is 4
    qm_unprivileged checksum missing a.txt closed a.txt
    sha256sum a.txt a.txt | stdout_is
    status_is 1
}

@test "the last failure makes the status with a folder too" {
    mkdir sub
    qm checksum missing sub
    status_is 1
    qm checksum sub missing
    status_is 4
    stdout_is_empty
}

@test "a failure stops nothing" {
    make_file a.txt
    make_file b.txt
    qm checksum a.txt missing b.txt
    sha256sum a.txt b.txt | stdout_is
    echo "File not found: $box/missing" | stderr_is
    status_is 4
}

@test "a link is followed and keeps its name" {
    make_file a.txt
    ln -s a.txt link
    qm checksum link
    sha256sum link | stdout_is
    succeeds
    ln -s nothing dangling
    qm checksum dangling
    stdout_is_empty
    echo "File not found: $box/dangling" | stderr_is
    status_is 4
}

@test "a FIFO is read to its end" {
    mkfifo fifo
    seq 1 50000 >content
    cat content >fifo 3>&- &
    qm checksum --sha1 fifo
    echo "$(sha1sum <content | cut -d ' ' -f 1)  fifo" | stdout_is
    succeeds
    wait
}

@test "a FIFO that is written in pieces is read to its end" {
    mkfifo fifo
    (
        for piece in one two three; do
            echo "$piece"
            sleep 0.05
        done >fifo
    ) 3>&- &
    qm checksum fifo
    echo "$(printf '%s\n' one two three | sha256sum | cut -d ' ' -f 1)  fifo" | stdout_is
    succeeds
    wait
}

@test "files of the kernel are read although they have no size" {
    qm checksum /proc/version
    echo "$(sha256sum </proc/version | cut -d ' ' -f 1)  version" | stdout_is
    succeeds
    qm checksum /dev/null
    echo "$empty_sha256  null" | stdout_is
    succeeds
}

@test "an error while reading ends the file" {
    [ -e /proc/self/mem ] || skip "no /proc"
    qm checksum /proc/self/mem
    echo "$empty_sha256  mem" | stdout_is
    succeeds
}

@test "a sparse file is its zeros" {
    truncate -s 1000000 sparse
    qm checksum sparse
    sha256sum sparse | stdout_is
    succeeds
}
