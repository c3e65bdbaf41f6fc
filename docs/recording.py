# SPDX-License-Identifier: Apache-2.0
"""Runs command lines as a user in a terminal would, for the examples in documents.

They run in the folder /home/anna/Pictures of a user who does not exist: in the output, the folder
that stands for it has that name, whoever owns its files is anna, and they were made on one day.
"""

import os
import pty
import re
import select
import struct
import subprocess
import tempfile
import time
import zlib

LIMIT = 60.0
HOME = "home/anna"
CREATED = "2026-08-14 20:30:58"
STYLE = re.compile(r"\x1b\[([0-9;]*)m")
END_OF_OUTPUT = b"\x01end of output\x02"


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def picture(width, height):
    """An evening sky as a PNG, not compressed, so that its bytes are the same everywhere."""
    rows = b"".join(
        b"\0" + b"".join(bytes((min(255, 40 + 4 * y + x // 2), 30 + 2 * y, 90 - y))
                         for x in range(width))
        for y in range(height))
    stored = struct.pack("<BHH", 1, len(rows), len(rows) ^ 0xFFFF) + rows
    image = b"\x78\x01" + stored + struct.pack(">I", zlib.adler32(rows))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", image) + chunk(b"IEND", b""))


def set_dates(path, date):
    subprocess.run(["touch", "--no-dereference", "--date", date + " UTC", path], check=True)


def make_pictures(root):
    """The folder that the examples are about; answers its path."""
    folder = os.path.join(root, HOME, "Pictures")
    os.makedirs(os.path.join(folder, "2026"))
    sunset = os.path.join(folder, "sunset.png")
    with open(sunset, "wb") as file:
        file.write(picture(64, 45))
    os.chmod(sunset, 0o644)
    os.chmod(os.path.join(folder, "2026"), 0o755)
    os.setxattr(sunset, "user.xdg.tags", b"Holiday,Best")
    os.symlink("sunset.png", os.path.join(folder, "cover"))
    set_dates(sunset, "2026-08-14 20:31:05")
    set_dates(os.path.join(folder, "cover"), "2026-09-01 08:00:00")
    set_dates(os.path.join(folder, "2026"), "2026-09-02 10:15:00")
    return folder


def as_annas(text, root):
    text = text.replace(os.path.realpath(root) + "/" + HOME, "/" + HOME)
    text = re.sub(r'(Created: +|"created": ")\d{4}-\d\d-\d\d \d\d:\d\d:\d\d', r"\g<1>" + CREATED, text)
    text = re.sub(r"(Owner: +)\S+", r"\1anna:anna", text)
    return re.sub(r'("(?:owner|group)": ")[^"]+', r"\1anna", text)


def read_all(controller, child):
    """What is written to the terminal until nobody has it open any more."""
    output, deadline = b"", time.monotonic() + LIMIT
    while True:
        if not select.select([controller], [], [], max(0, deadline - time.monotonic()))[0]:
            child.kill()
            raise TimeoutError("the examples do not come to an end")
        try:
            data = os.read(controller, 65536)
        except OSError:
            data = b""
        if not data:
            return output
        output += data


def environment(root, qm):
    keep = {name: os.environ[name] for name in ("DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR")
            if name in os.environ}
    programs = os.path.join(root, "bin")
    os.mkdir(programs)
    os.symlink(os.path.realpath(qm), os.path.join(programs, "qm"))
    return dict(keep, HOME=os.path.join(os.path.realpath(root), HOME), LC_ALL="C.UTF-8", TZ="UTC",
                TERM="xterm", PATH=programs + ":/usr/bin:/bin")


def run(qm, commands):
    """The output of each command line, with its styles, one after the other in one shell."""
    script = "".join(f"{command}\nstatus=$?; printf '{END_OF_OUTPUT.decode()}'; (exit $status)\n"
                     for command in commands)
    with tempfile.TemporaryDirectory() as root:
        folder = make_pictures(root)
        controller, terminal = pty.openpty()
        child = subprocess.Popen(["sh", "-c", script], stdin=subprocess.DEVNULL, stdout=terminal,
                                 stderr=terminal, cwd=os.path.realpath(folder),
                                 env=environment(root, qm), start_new_session=True)
        os.close(terminal)
        output = read_all(controller, child)
        os.close(controller)
        child.wait()
        outputs = output.replace(b"\r\n", b"\n").split(END_OF_OUTPUT)[:-1]
        if len(outputs) != len(commands):
            raise RuntimeError("the shell ended early: " + output.decode(errors="replace"))
        return [as_annas(text.decode("utf-8"), root) for text in outputs]
