# SPDX-License-Identifier: Apache-2.0
"""Watches a process and all that it starts, from /proc, while it runs.

Its readers are no children of it (they end with a socket of its), so they are known by their folder,
from which nothing else may run.
"""
import dataclasses
import os
import time

PAGE = os.sysconf("SC_PAGE_SIZE") // 1024


@dataclasses.dataclass
class Sample:
    """One look at the process, with what it has started by (number, start)."""
    kibibytes: int
    descriptors: int
    others: dict  # (number, start) to (program, kibibytes, descriptors)


def started(process):
    """When it has started, which tells it from a later one with the same number."""
    with open(f"/proc/{process}/stat", encoding="utf-8", errors="replace") as file:
        return file.read().rpartition(")")[2].split()[19]


def exists(process, start):
    try:
        return started(process) == start
    except OSError:
        return False


def resident(process):
    with open(f"/proc/{process}/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * PAGE


def largest(process):
    """Its largest resident size so far in KiB, or 0 when it has ended."""
    with open(f"/proc/{process}/status", encoding="utf-8", errors="replace") as file:
        return next((int(line.split()[1]) for line in file if line.startswith("VmHWM:")), 0)


def descriptors(process):
    return len(os.listdir(f"/proc/{process}/fd"))


def children(process):
    for task in os.listdir(f"/proc/{process}/task"):
        try:
            with open(f"/proc/{process}/task/{task}/children", encoding="ascii") as file:
                yield from map(int, file.read().split())
        except OSError:
            pass  # the thread has ended


def descendants(process):
    """Numbers of all that have this one above them."""
    try:
        for child in children(process):
            yield child
            yield from descendants(child)
    except OSError:
        pass  # it has ended


def of_folder(folder):
    """Numbers of those whose programs lie in a folder."""
    for process in filter(str.isdigit, os.listdir("/proc")):
        try:
            if os.path.dirname(os.readlink(f"/proc/{process}/exe")) == folder:
                yield int(process)
        except OSError:
            pass  # it has ended, or is one of the kernel's


def look_at(processes):
    found = {}
    for process in processes:
        try:
            program = os.path.basename(os.readlink(f"/proc/{process}/exe"))
            found[process, started(process)] = program, resident(process), descriptors(process)
        except OSError:
            pass  # it has ended
    return found


def watch(running, folder, pause=0.02):
    """Samples of the process (of subprocess) until it ends."""
    samples = []
    while running.poll() is None:
        try:
            others = {*of_folder(folder), *descendants(running.pid)} - {running.pid}
            samples.append(Sample(resident(running.pid), descriptors(running.pid),
                                  look_at(others)))
        except OSError:
            pass  # it has just ended
        time.sleep(pause)
    return samples


def left_behind(samples, patience=10):
    """What the process has started and has not ended some seconds after it."""
    seen = {key: other[0] for sample in samples for key, other in sample.others.items()}
    deadline = time.monotonic() + patience
    while True:
        left = {key: program for key, program in seen.items() if exists(*key)}
        if not left or time.monotonic() > deadline:
            return left
        time.sleep(0.1)
