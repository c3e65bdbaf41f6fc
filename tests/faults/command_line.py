# SPDX-License-Identifier: Apache-2.0
"""Command lines of qm, which is named by QM, in the current folder."""
import hashlib
import json
import os
import plistlib
import subprocess

from inject import Case

QM = os.path.realpath(os.environ["QM"])
DESKTOP = "user.xdg.tags"
FINDER = "user.com.apple.metadata:_kMDItemUserTags"
SAMBA = "user.DosStream.com.apple.metadata:_kMDItemUserTags:$DATA"


def names_as_finder_keeps(*names):
    return plistlib.dumps(list(names), fmt=plistlib.FMT_BINARY)


# What files carry before, besides what is none of the tool's business.
PLAIN = {}
TAGGED = {DESKTOP: b"Red,work"}
BOTH = {DESKTOP: b"Red,work", FINDER: names_as_finder_keeps("Red\n6", "work")}
SAMBAS = {SAMBA: names_as_finder_keeps("Red\n6", "a,b") + b"\0"}
DIFFERENT = {DESKTOP: b"Red", FINDER: names_as_finder_keeps("Blue", "a,b")}
OTHERS = {"user.comment": b"keep me", "user.mime_type": b"text/plain"}


def attributes():
    return {name: os.getxattr("f", name) for name in os.listxattr("f") if name.startswith("user.")}


def has(carried):
    """Makes the file have these attributes."""
    def prepare():
        wanted = {**carried, **OTHERS}
        there = attributes()
        for name in there.keys() - wanted.keys():
            os.removexattr("f", name)
        for name, value in wanted.items():
            if there.get(name) != value:
                os.setxattr("f", name, value)
    return prepare


def names_in(carried):
    names = set(carried.get(DESKTOP, b"").decode().split(",")) - {""}
    for spelling in (FINDER, SAMBA):
        if spelling in carried:
            entries = plistlib.loads(carried[spelling].removesuffix(b"\0"))
            names |= {entry.split("\n")[0] for entry in entries}
    return names


def change(name, option, carried):
    """A change of the tags of a file: done, or not at all."""
    def state():
        after = attributes()
        assert {key: after.get(key) for key in OTHERS} == OTHERS, after
        return after

    return Case(name, [QM, "tags", option, "f"], has(carried), state,
                done_or_not({**carried, **OTHERS}))


def done_or_not(before):
    """After a line of success the tags are new, after a line of failure old, otherwise either."""
    def is_sound(fault, outcome, right):
        if fault.lasts and fault.call in ("lsetxattr", "lremovexattr"):
            return is_between(before, right.state)
        if outcome.state == before:
            return not outcome.output
        return outcome.state == right.state and not outcome.errors.startswith(b"Failed")
    return is_sound


def is_between(before, after):
    """What cannot be put back holds no name that is in neither list, and all that are in both."""
    shown = subprocess.run([QM, "tags", "--json", "f"], capture_output=True, check=True).stdout
    names = set(json.loads(shown)["tags"])
    old, new = names_in(before), names_in(after)
    return old & new <= names <= old | new


def in_relative_paths(text):
    """Without the current folder, paths are shown as they were given."""
    return text.replace(os.fsencode(os.getcwd()) + b"/", b"")


def fields_of(text):
    """The values of the long block, or of a record of JSON, by their names."""
    if text.startswith(b"{"):
        return json.loads(text)
    name, *lines = text.decode().splitlines()
    pairs = (line.partition(":") for line in lines)
    return {"name": name, **{key.strip(): value.strip() for key, _, value in pairs}}


EMPTY = ["", 0, False, [], "—", "— (0)", "—:—", "Zero KB (0 bytes)"]


def is_without_fields(fault, outcome, right):
    """What the system does not tell of an item is shown as empty. So is the path without a current
    folder relative."""
    if fault.call == "getcwd":
        return outcome.output == in_relative_paths(right.output)
    if fault.call not in ("stat", "llistxattr", "lgetxattr"):
        return False
    shown, known = fields_of(outcome.output), fields_of(right.output)
    return outcome.status == 0 and all(value in (known.get(key), *EMPTY)
                                       for key, value in shown.items())


def is_short_line(fault, outcome, right):
    return fault.call == "stat" and outcome.output in (b"Zero KB  \xe2\x80\x94  \n",)


def has_no_tags(fault, outcome, right):
    """Tags that the system does not tell are no tags."""
    if fault.call == "getcwd":
        return outcome.output == in_relative_paths(right.output)
    if fault.call not in ("llistxattr", "lgetxattr") or outcome.status != 0:
        return False
    if right.output.startswith(b"{"):
        return json.loads(outcome.output) == {**json.loads(right.output), "tags": []}
    return outcome.output == b"f: (no tags)\n"


def ends_where_reading_failed(fault, outcome, right):
    """The digest of what was read."""
    if fault.call == "getcwd":
        return outcome.output == in_relative_paths(right.output)
    nothing = hashlib.sha256(b"").hexdigest().encode()
    known = hashlib.sha256(CONTENTS).hexdigest().encode()
    return fault.call == "read" and outcome.output == right.output.replace(known, nothing)


CONTENTS = b"three words here\n"
with open("f", "wb") as file:
    file.write(CONTENTS)

cases = [
    Case("info", [QM, "info", "f"], has(BOTH), excused=is_without_fields),
    Case("info as a line", [QM, "info", "-s", "f"], has(TAGGED), excused=is_short_line),
    Case("info as JSON", [QM, "info", "--json", "f"], has(TAGGED), excused=is_without_fields),
    Case("checksum", [QM, "checksum", "f"], excused=ends_where_reading_failed),
    Case("checksum as JSON", [QM, "checksum", "--json", "f"], excused=ends_where_reading_failed),
    Case("tags", [QM, "tags", "f"], has(BOTH), excused=has_no_tags),
    Case("tags as JSON", [QM, "tags", "--json", "f"], has(TAGGED), excused=has_no_tags),
    Case("defined tags", [QM, "tags", "--list"]),
    Case("help", [QM]),
    change("add", "--add=new", TAGGED),
    change("add to both", "--add=new", BOTH),
    change("add to Samba's", "--add=new", SAMBAS),
    change("add to different ones", "--add=new", DIFFERENT),
    change("set", "--set=a,b", TAGGED),
    change("set the first", "--set=a,b", {}),
    change("set both", "--set=a,b", BOTH),
    change("remove", "--remove=work", BOTH),
    change("clear", "--clear", BOTH),
]
