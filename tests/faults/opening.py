# SPDX-License-Identifier: Apache-2.0
"""qm open, named by QM, with an application that keeps what it gets in the folder RECORD."""
import glob
import os

from inject import Case

QM = os.path.realpath(os.environ["QM"])
SCRIPTS = os.path.join(glob.escape(os.environ["RECORD"]), "script.*")


def forget_scripts():
    for script in glob.glob(SCRIPTS):
        os.remove(script)


def scripts():
    return sorted(open(script, "rb").read() for script in glob.glob(SCRIPTS))


def has_the_script_or_none(fault, outcome, right):
    """The application may be late with the one of the run before."""
    return all(script in right.state for script in outcome.state)


def has_relative_path(fault, outcome, right):
    """Without the current folder, the path goes as it was given."""
    folder = os.fsencode(os.getcwd()) + b"/"
    return (fault.call == "getcwd" and outcome.status == 0 and
            outcome.state == [script.replace(folder, b"") for script in right.state])


cases = [Case("open", [QM, "open", "f"], forget_scripts, scripts, has_the_script_or_none,
              has_relative_path)]
