#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Damages films and recordings and lets an application tell what is in them.

usage: damage_media.py PROGRAM FOLDER COUNT

Whatever becomes of the damaged ones, the application has to answer for each of them, and to tell of
the good ones in between what it tells of them alone.
"""

import json
import os
import random
import struct
import subprocess
import sys

program, folder, count = sys.argv[1], sys.argv[2], int(sys.argv[3])
chance = random.Random(47)
largest = 300_000
EXTREMES = (0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0xFFFFFFF0, 0x00FFFFFF)

samples = [os.path.join(folder, name) for name in sorted(os.listdir(folder))]
samples = [name for name in samples if os.path.getsize(name) <= largest]
assert len(samples) > 50, folder


def place(data):
    """More often in the headers than elsewhere."""
    end = chance.choice((64, 1024, len(data), len(data)))
    at = chance.randrange(min(end, len(data)))
    return at if chance.random() < 0.7 else len(data) - 1 - at


def damaged(data):
    data = bytearray(data)
    for _ in range(chance.choice((1, 2, 8, 40))):
        if not data:
            break
        kind, at = chance.random(), place(data)
        if kind < 0.1:
            del data[at:]
        elif kind < 0.5:
            data[at] ^= 1 << chance.randrange(8)
        elif kind < 0.8:
            form = chance.choice((">I", "<I"))
            data[at:at + 4] = struct.pack(form, chance.choice(EXTREMES))
        else:
            length = chance.choice((1, 16, 500))
            data[at:at + length] = data[place(data):][:length]
    return bytes(data)


def told_of(names):
    result = subprocess.run([program, "--jobs", "4", *names], capture_output=True, timeout=150,
                            stdin=subprocess.DEVNULL)
    assert result.returncode == 0 and not result.stderr, (result.returncode, result.stderr[-2000:])
    results = json.loads(result.stdout)
    assert len(results) == len(names) and None not in results
    return [told["entries"] for told in results]


alone = dict(zip(samples, told_of(samples)))
assert all(alone.values())
names, damages = [], 0
while damages < count:
    sample = samples[damages % len(samples)]
    with open(sample, "rb") as file:
        data = file.read()
    names.append(f"{damages}{os.path.splitext(sample)[1]}")
    with open(names[-1], "wb") as file:
        file.write(damaged(data))
    damages += 1
    if damages % 5 == 0:
        names.append(chance.choice(samples))

batch = 600
for start in range(0, len(names), batch):
    part = names[start:start + batch]
    for name, entries in zip(part, told_of(part)):
        assert name not in alone or entries == alone[name], (name, entries, alone[name])
