# SPDX-License-Identifier: Apache-2.0
"""The disk-image tool, named by HDIUTIL, with the image disk.dmg in the current folder: a compressed
one of a file system with the file `f`.

Whatever was left undone, the next call makes it good.
"""
import os
import plistlib
import subprocess

from inject import Case

HDIUTIL = os.path.realpath(os.environ["HDIUTIL"])
ATTACH = [HDIUTIL, "attach", "disk.dmg", "-plist", "-noverify"]
RUNTIME, CACHE = os.environ["XDG_RUNTIME_DIR"], os.environ["XDG_CACHE_HOME"]
VOLUMES = os.path.join(RUNTIME, "quillmere", "volumes")
POINT = os.path.join(VOLUMES, "Disk")
CONTENTS = "three words here\n"


def attach():
    subprocess.run(ATTACH, check=True, stdout=subprocess.DEVNULL, timeout=20)
    with open(os.path.join(POINT, "f"), encoding="utf-8") as file:
        assert file.read() == CONTENTS


def detach():
    subprocess.run([HDIUTIL, "detach", POINT], check=True, timeout=20)


def what_is_left():
    """Files and folders of the tool's, without its lock."""
    return sorted(os.path.join(folder, name) for top in (RUNTIME, CACHE)
                  for folder, folders, files in os.walk(os.path.join(top, "quillmere"))
                  for name in (files if folder != VOLUMES else files + folders) if name != "lock")


def is_attached():
    """Tells whether the volume was there, and puts all back as it was before."""
    was_there = os.path.exists(os.path.join(POINT, "f"))
    attach()
    detach()
    assert not what_is_left(), what_is_left()
    return was_there


def without_devices(text):
    entities = plistlib.loads(text)["system-entities"]
    return [{key: value for key, value in entity.items() if key != "dev-entry"}
            for entity in entities]


def is_on_another_device(fault, outcome, right):
    """Each time on whichever is free, and on none where the files were copied."""
    return (outcome.status == 0 and not outcome.errors and outcome.state and
            without_devices(outcome.output) == without_devices(right.output))


cases = [
    Case("attach", ATTACH, state=is_attached, excused=is_on_another_device, share=0.1,
         left_out=("memory",)),
    Case("detach", [HDIUTIL, "detach", POINT], prepare=attach, state=is_attached, share=0.1,
         left_out=("memory",)),
]
