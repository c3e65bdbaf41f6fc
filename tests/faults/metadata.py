# SPDX-License-Identifier: Apache-2.0
"""An application that has a file of each kind looked at, named by SHOW_METADATA. The files are in
SAMPLES, MEDIA_SAMPLES and PDF_SAMPLES, and in the current folder.

GLib and ICU end a program that they get no memory in, and libplist uses what it gets unseen. So only
C++'s operator fails, which these do not have.
"""
import json
import os

from inject import Case

SHOW = os.path.realpath(os.environ["SHOW_METADATA"])
FILES = {
    "text": "f.txt",
    "image": os.path.join(os.environ["SAMPLES"], "camera.jpg"),
    "recording": os.path.join(os.environ["MEDIA_SAMPLES"], "large-cover.mp3"),
    "PDF": os.path.join(os.environ["PDF_SAMPLES"], "all.pdf"),
    "disk image": "disk.dmg",
}


def has_no_entries(fault, outcome, right):
    """A file that cannot be read has none; one that cannot be looked at is not there."""
    if outcome.status != 0 or outcome.errors:
        return False
    shown, known = json.loads(outcome.output), json.loads(right.output)
    return shown == [None] or shown == [{**known[0], "entries": []}]


def has_less_of_a_page(fault, outcome, right):
    """When no process answers about a PDF, be it that it ended or that its program was not there, one
    is asked again for all but the text of the page."""
    is_asked_again = fault.call in ("receive", "access") and not outcome.errors
    unsure = [text.replace(b"meta.no", b"meta.yes") for text in (outcome.output, right.output)]
    return is_asked_again and unsure[0] == unsure[1] or has_no_entries(fault, outcome, right)


cases = [Case(kind, [SHOW, path], excused=has_less_of_a_page if kind == "PDF" else has_no_entries,
              spared="libglib", left_out=("memory",), share=0.8)
         for kind, path in FILES.items()]
