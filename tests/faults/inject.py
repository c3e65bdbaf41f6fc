#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Lets calls of the system fail, one after the other, under command lines.

usage: inject.py LIBRARY CASES [NAME...]

CASES is a Python file that defines `cases`, a list of Case. Each command line is run once without
faults: what it prints is right, and how often it makes which call is counted. Then it is run again
with one of these calls failing, or with all from that one on: each in turn where there are few,
some of them, evenly, where there are many. FAULTS tells how many at most (20).
"""
import dataclasses
import errno
import os
import runpy
import subprocess
import sys
import typing

# The errors with which a call fails in turn; EIO for those that are not listed.
ERRORS = {
    "memory": (errno.ENOMEM,), "mmap": (errno.ENOMEM,), "thread": (errno.EAGAIN,),
    "clone": (errno.EAGAIN,), "spawn": (errno.ENOMEM,), "stat": (errno.EIO, errno.ENOMEM),
    "open": (errno.EIO, errno.EMFILE), "socket": (errno.EMFILE,), "socketpair": (errno.EMFILE,),
    "pipe": (errno.EMFILE,), "lsetxattr": (errno.ENOSPC, errno.EIO),
    "lgetxattr": (errno.EIO, errno.ENOMEM), "connect": (errno.ECONNREFUSED,),
    "send": (errno.EPIPE,), "receive": (errno.ECONNRESET,),
}
LIMIT = 40  # seconds; far beyond what any command line here takes


@dataclasses.dataclass(frozen=True)
class Fault:
    call: str
    first: int
    lasts: bool
    error: int

    def __str__(self):
        return f"{self.call} {self.first}{'-' if self.lasts else ''}, error {self.error}"


@dataclasses.dataclass
class Outcome:
    status: int
    output: bytes
    errors: bytes
    state: typing.Any


@dataclasses.dataclass
class Case:
    """A command line, and what may come of it.

    prepare is called before each run, and what state answers after each is compared. A line of error
    is a right answer where what is left behind is_sound. excused is asked about answers that are
    neither the right ones nor an error: whether they are right all the same.
    """
    name: str
    words: list
    prepare: typing.Callable = lambda: None
    state: typing.Callable = lambda: None
    is_sound: typing.Callable = lambda fault, outcome, right: True
    excused: typing.Callable = lambda fault, outcome, right: False
    lasting: bool = True  # whether faults may go on, too
    spared: str = ""  # libraries whose calls do not fail
    left_out: tuple = ()  # calls that do not fail
    share: float = 1  # of the runs that others get


def run(case, library, **variables):
    case.prepare()
    environment = dict(os.environ, LD_PRELOAD=library,
                       FAULT_PROGRAM=os.path.basename(case.words[0]), **variables)
    if case.spared:
        environment["FAULT_SPARED"] = case.spared
    done = subprocess.run(case.words, env=environment, capture_output=True, timeout=LIMIT,
                          stdin=subprocess.DEVNULL, check=False)
    return Outcome(done.returncode, done.stdout, done.stderr, case.state())


def counts_of(case, library):
    path = "counts"
    right = run(case, library, FAULT_COUNTS=path)
    with open(path, encoding="ascii") as file:
        counts = {name: int(count) for name, count in (line.split() for line in file)}
    os.remove(path)
    return right, counts


def some_of(count, most):
    """At most so many of the numbers from 1 to count, evenly, with the first and the last ones."""
    if count <= most:
        return range(1, count + 1)
    return sorted({1 + round(i * (count - 1) / (most - 1)) for i in range(most)})


def faults_of(case, counts, most):
    for call, count in counts.items():
        if call in case.left_out:
            continue
        for first in some_of(count, max(2, round(most * case.share))):
            for error in ERRORS.get(call, (errno.EIO,)):
                yield Fault(call, first, False, error)
                if case.lasting:
                    yield Fault(call, first, True, error)


def is_subsequence(part, whole):
    rest = iter(whole)
    return all(line in rest for line in part)


def complaint_about(case, fault, outcome, right):
    if outcome.status < 0:
        return f"ended by signal {-outcome.status}"
    lines = outcome.errors.splitlines()
    if len(lines) > 1 or (lines and not outcome.errors.endswith(b"\n")):
        return "not one line of error"
    if outcome.status != 0 and not lines:
        return "failed without a word"
    if outcome == right:
        return None
    # What was printed before an error counts.
    is_part = is_subsequence(outcome.output.splitlines(), right.output.splitlines())
    if lines and is_part and case.is_sound(fault, outcome, right):
        return None
    return None if case.excused(fault, outcome, right) else "another answer"


def inject(case, library, most):
    right, counts = counts_of(case, library)
    assert right.status == 0 and not right.errors, (case.name, right)
    complaints = []
    number = 0
    for number, fault in enumerate(faults_of(case, counts, most), 1):
        try:
            outcome = run(case, library, FAULT_CALL=fault.call, FAULT_FIRST=str(fault.first),
                          FAULT_LAST="0" if fault.lasts else str(fault.first),
                          FAULT_ERROR=str(fault.error))
        except subprocess.TimeoutExpired:
            complaints.append(f"{case.name}: {fault}: hangs")
            continue
        except Exception as error:
            error.add_note(f"{case.name}: {fault}")
            raise
        if complaint := complaint_about(case, fault, outcome, right):
            complaints.append(f"{case.name}: {fault}: {complaint}: status {outcome.status}, "
                              f"{outcome.output[-300:]!r}, {outcome.errors[-300:]!r}, {outcome.state}")
    print(f"{case.name}: {number} faults, {len(complaints)} complaints")
    return complaints


def main():
    library, path, *names = sys.argv[1:]
    most = int(os.environ.get("FAULTS", "20"))
    sys.modules["inject"] = sys.modules["__main__"]
    complaints = []
    for case in runpy.run_path(path)["cases"]:
        if not names or case.name in names:
            complaints += inject(case, os.path.realpath(library), most)
    print("".join(complaint + "\n" for complaint in complaints), end="", file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
