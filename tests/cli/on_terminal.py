#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs a command with its streams on terminals and records what it writes.

usage: on_terminal.py [--limit SECONDS] stdout|stderr|both OUT ERR COMMAND [ARGUMENT...]

The streams named are on pseudo-terminals, one each, so that the bytes of each are known; the
other one is the file itself. The terminals pass every byte unchanged. The exit status is the
command's, 128 and the number of the signal that ended it, or 124 when it took too long.
"""

import os
import pty
import select
import subprocess
import sys
import termios
import time


def open_terminal():
    controller, terminal = pty.openpty()
    attributes = termios.tcgetattr(terminal)
    attributes[1] &= ~termios.OPOST  # or line feeds would arrive as two bytes
    termios.tcsetattr(terminal, termios.TCSANOW, attributes)
    return controller, terminal


def drain(controllers, deadline):
    """Copies from the terminals until all are closed. Answers whether that came to pass."""
    while controllers:
        left = deadline - time.monotonic()
        ready = select.select(list(controllers), [], [], max(left, 0))[0]
        if not ready:
            return False
        for controller in ready:
            try:
                data = os.read(controller, 65536)
            except OSError:  # no one has the terminal open any more
                data = b""
            if data:
                controllers[controller].write(data)
            else:
                del controllers[controller]
    return True


def main(arguments):
    limit = 60.0
    if arguments[0] == "--limit":
        limit = float(arguments[1])
        arguments = arguments[2:]
    streams, out, err = arguments[:3]
    records = [open(out, "wb", buffering=0), open(err, "wb", buffering=0)]
    targets = []
    controllers = {}
    for name, record in zip(("stdout", "stderr"), records):
        if streams not in (name, "both"):
            targets.append(record.fileno())
            continue
        controller, terminal = open_terminal()
        controllers[controller] = record
        targets.append(terminal)
    child = subprocess.Popen(
        arguments[3:], stdin=subprocess.DEVNULL, stdout=targets[0], stderr=targets[1]
    )
    for terminal in set(targets) - {record.fileno() for record in records}:
        os.close(terminal)
    if not drain(controllers, time.monotonic() + limit):
        child.kill()
        child.wait()
        return 124
    status = child.wait()
    return status if status >= 0 else 128 - status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
