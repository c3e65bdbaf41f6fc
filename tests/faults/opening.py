# SPDX-License-Identifier: Apache-2.0
"""qm open, named by QM, with an application that keeps what it gets in the folder RECORD."""
import os
import re

from inject import Case

QM = os.path.realpath(os.environ["QM"])
RECORD = os.environ["RECORD"]


def script_paths():
    return [os.path.join(RECORD, name) for name in os.listdir(RECORD)
            if re.fullmatch(r"script\.\d+", name)]


def forget_scripts():
    for path in script_paths():
        os.remove(path)


def scripts():
    """What the application got. It may be late with the script of the run before."""
    contents = set()
    for path in script_paths():
        with open(path, "rb") as script:
            contents.add(script.read())
    return contents


def has_the_script_or_none(fault, outcome, right):
    return outcome.state <= right.state


def has_relative_path(fault, outcome, right):
    """Without the current folder, the path goes as it was given."""
    folder = os.fsencode(os.getcwd()) + b"/"
    return (fault.call == "getcwd" and outcome.status == 0 and
            outcome.state - right.state == {script.replace(folder, b"") for script in right.state})


cases = [Case("open", [QM, "open", "f"], forget_scripts, scripts, has_the_script_or_none,
              has_relative_path)]
