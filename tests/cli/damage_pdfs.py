#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Damages PDFs and lets an application tell what is in them.

usage: damage_pdfs.py PROGRAM COUNT FOLDER

Every file gets a result, and between the damaged ones lie good ones, of which the right things have
to be told.
"""

import json
import os
import random
import re
import subprocess
import sys

program, count, folder = sys.argv[1], int(sys.argv[2]), sys.argv[3]
chance = random.Random(45)
KEYS = ["pageCount", "pdfVersion", "title", "author", "creator", "encrypted", "searchable"]
TOKENS = [b"/Kids", b"/Pages", b"/Parent", b"/Contents", b"/Length", b"/Filter", b"/FlateDecode",
          b"/W", b"/Index", b"/Prev", b"/Size", b"/Root", b"/Encrypt", b"/Font", b"/Resources",
          b"stream", b"endobj", b"<<", b">>", b"[", b"]", b"(", b" 0 R", b"xref", b"trailer"]
NUMBERS = [b"0", b"-1", b"1", b"2", b"65535", b"2147483647", b"2147483648", b"-2147483648",
           b"9223372036854775807", b"99999999999999999999", b"1e9", b".", b"4 0 R"]


def seeds():
    for name in sorted(os.listdir(folder)):
        with open(os.path.join(folder, name), "rb") as file:
            data = file.read()
        if len(data) < 100_000:
            yield data


def damaged(data):
    data = bytearray(data)
    for _ in range(chance.choice((1, 1, 2, 4, 16, 64))):
        kind, at = chance.random(), chance.randrange(len(data) + 1)
        if kind < 0.3 and at < len(data):
            data[at] = chance.choice((0, 10, 0x28, 0x3C, 0x7F, 0x80, 0xFF, chance.randrange(256)))
        elif kind < 0.6:
            numbers = list(re.finditer(rb"\d+", data))
            if numbers:
                number = chance.choice(numbers)
                data[number.start() : number.end()] = chance.choice(NUMBERS)
        elif kind < 0.8:
            data[at:at] = chance.choice(TOKENS)
        elif kind < 0.9:
            del data[at : at + chance.randrange(50)]
        else:
            data[at:at] = data[: chance.randrange(len(data) + 1)][-500:]
    if chance.random() < 0.1:
        del data[chance.randrange(len(data) + 1) :]
    return bytes(data)


def told(names):
    done = subprocess.run([program, "--jobs", "4", *names], capture_output=True, timeout=500,
                          stdin=subprocess.DEVNULL)
    assert done.returncode == 0 and not done.stderr, (done.returncode, done.stderr[-2000:])
    results = json.loads(done.stdout)
    assert len(results) == len(names)
    return [{entry["key"]: entry["value"] for entry in result["entries"]} for result in results]


good = os.path.join(folder, "gs.pdf")
expected = told([good])[0]
assert expected["title"] == "From PostScript" and expected["pageCount"] == "2", expected
contents, names = list(seeds()), []
for number in range(count):
    names.append(f"{number}.pdf")
    with open(names[-1], "wb") as file:
        file.write(damaged(chance.choice(contents)))
    if number % 20 == 19:
        names.append(good)

described = 0
for name, values in zip(names, told(names)):
    if name == good:
        assert values == expected, values
    elif values:
        described += 1
        assert list(values) == [key for key in KEYS if key in values], (name, values)
        assert {"pageCount", "pdfVersion", "encrypted"} <= set(values), (name, values)
        assert 0 <= int(values["pageCount"]) < 2**31, (name, values)
        assert ("searchable" in values) == (values["pageCount"] != "0"), (name, values)
        assert values["encrypted"] in ("meta.yes", "meta.no"), (name, values)
print(f"{described} of {count} described")
assert described > count // 4
