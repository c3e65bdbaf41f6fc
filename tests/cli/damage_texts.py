#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Damages texts and lets an application tell what is in them.

usage: damage_texts.py PROGRAM COUNT

What is told has to be what Python finds in the same bytes.
"""

import json
import random
import subprocess
import sys

program, count = sys.argv[1], int(sys.argv[2])
chance = random.Random(46)
sample_size = 65536

SEEDS = [
    b"#!/bin/sh -e\r\nfor i in 1 2 3; do\r\n    echo \"$i\"\r\ndone\r\n",
    "Größe: 3,5 – «да», l’été, naïve\n".encode() * 40,
    "日本語の文章です。한국어 สวัสดี 👩‍👩‍👧 e\u0301\n".encode() * 30,
    b"one\rtwo\rthree\r",
    b"plain words in long lines " * 2600,
    "é".encode() * 40000,
    b"",
]


def damaged(data):
    data = bytearray(data)
    for _ in range(chance.choice((0, 1, 2, 8, 64))):
        kind = chance.random()
        at = chance.randrange(len(data) + 1)
        if kind < 0.5 and at < len(data):
            data[at] = chance.choice((0, 9, 10, 13, 0x7F, 0x80, 0xC3, 0xE2, 0xF0, 0xFF))
        elif kind < 0.7:
            data[at:at] = chance.choice((b"\0", b"\r\n", b"\xef\xbb\xbf", b"\xed\xa0\x80", b"#!"))
        elif kind < 0.85:
            del data[at : at + chance.randrange(100)]
        else:
            data[at:at] = data[:at][-5000:]
    return bytes(data)


def expected(data):
    sample = data[:sample_size]
    try:
        text, encoding = sample.decode("utf-8"), "Unicode (UTF-8)"
    except UnicodeDecodeError:
        text, encoding = sample.decode("latin-1"), "Western (ISO Latin 1)"
    mark = "~%d+" if len(data) > sample_size else "%d"
    ending = "CRLF" if "\r\n" in text else "CR" if "\r" in text else "LF"
    values = {
        "encoding": encoding,
        "lineCount": mark % (text.count("\n") + 1),
        "charCount": mark % (len(text.encode("utf-16-le")) // 2),
        "lineEnding": ending,
    }
    if text.startswith("#!"):
        values["shebang"] = text.split("\n")[0]
    return values


names, wanted = [], []
for number in range(count):
    data = damaged(chance.choice(SEEDS))
    names.append(f"{number}.txt")
    wanted.append(expected(data))
    with open(names[-1], "wb") as file:
        file.write(data)

result = subprocess.run(
    [program, "--jobs", "4", *names], capture_output=True, timeout=100, stdin=subprocess.DEVNULL
)
assert result.returncode == 0 and not result.stderr, (result.returncode, result.stderr[-2000:])
results = json.loads(result.stdout)
assert len(results) == count
for name, told, want in zip(names, results, wanted):
    values = {entry["key"]: entry["value"] for entry in told["entries"]}
    words = values.pop("wordCount").strip("~+")
    assert 0 <= int(words) <= sample_size, (name, words)
    assert values == want, (name, values, want)
