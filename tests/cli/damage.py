#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Damages images and gives them to the disk-image tool.

usage: damage.py TOOL COUNT SEED...

Each damaged image is described, and every tenth is attached as well by a user who may mount
nothing and has no programs that could. The tool has to answer with a property list, or with one
line and status 1, in a few seconds, and what it writes must stay within the size of the disk.
"""

import os
import plistlib
import random
import subprocess
import sys

tool, count, seeds = sys.argv[1], int(sys.argv[2]), sys.argv[3:]
contents = {seed: open(seed, "rb").read() for seed in seeds}
chance = random.Random(20)
largest = 64 << 20  # far above any seed's disk

UNPRIVILEGED = ["setpriv", "--bounding-set=-sys_admin"] if os.geteuid() == 0 else []


def damaged(data):
    data = bytearray(data)
    # Where the forms of images keep what they say of themselves.
    places = [0, 512, 1024, 32768, len(data) - 512, len(data) - 33 * 512, len(data) // 2]
    for _ in range(chance.choice((1, 1, 2, 8, 64))):
        start = chance.choice(places) + chance.randrange(512)
        offset = start if 0 <= start < len(data) else chance.randrange(len(data))
        data[offset] = chance.choice((0, 1, 0x7F, 0x80, 0xFF, chance.randrange(256)))
    if chance.random() < 0.1:
        del data[chance.randrange(len(data)) :]
    return bytes(data)


def run(command, environment=None):
    result = subprocess.run(
        command, capture_output=True, timeout=30, env=environment, stdin=subprocess.DEVNULL
    )
    lines = result.stderr.count(b"\n")
    if result.returncode == 0:
        assert not result.stderr, result.stderr
        return plistlib.loads(result.stdout)
    assert result.returncode == 1, (result.returncode, result.stderr[-2000:])
    assert lines == 1 and not result.stdout, (lines, result.stderr[-2000:])
    return None


def limited(command):
    """No file may become larger than any disk here is."""
    return ["prlimit", f"--fsize={largest}", *UNPRIVILEGED, *command]


described = 0
for number in range(count):
    seed = chance.choice(seeds)
    name = "damaged" + os.path.splitext(seed)[1]
    with open(name, "wb") as file:
        file.write(damaged(contents[seed]))
    try:
        described += run([tool, "imageinfo", name, "-plist"]) is not None
        if number % 10 == 0:
            nothing = dict(os.environ, PATH="/nowhere")
            programs = ["/usr/bin/env", "PATH=/usr/bin:/bin"]
            run([*programs, *limited(["/usr/bin/env", "PATH=/nowhere", tool, "attach", name,
                                      "-plist", "-noverify"])], nothing)
    except Exception:
        os.rename(name, f"kept-{number}-{seed}")
        raise
print(f"{described} of {count} described")
