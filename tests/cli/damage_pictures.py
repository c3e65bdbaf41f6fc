#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Damages pictures and lets an application tell what is in them.

usage: damage_pictures.py PROGRAM WORKER SAMPLES COUNT SEED

PROGRAM is given COUNT damaged files, many at a time, with sound ones in between. Those have to be
told of exactly as ever, and the application has to end well whatever becomes of the processes that
do the reading. How these ended is printed; with one that was the end of them, also each file that
is so by itself and how it is made, "NUMBER NAME", of this SEED. Limits of memory and descriptors
are checked unless SANITIZERS is set.
"""

import itertools
import json
import os
import random
import resource
import shutil
import signal
import subprocess
import sys
import time

PROGRAM, WORKER, SAMPLES = sys.argv[1:4]
COUNT, SEED = int(sys.argv[4]), int(sys.argv[5])
SANITIZED = bool(os.environ.get("SANITIZERS"))

FILES_OF_A_RUN = 2500
SOUND_EVERY = 10
EXTENSIONS = ["jpg", "jpeg", "png", "gif", "bmp", "tiff", "tif", "webp", "heic", "heif", "ico",
              "raw", "cr2", "nef", "arw", "dng", "psd", "xcf"]
EXTREMES = (b"\0\0\0\0", b"\xff\xff\xff\xff", b"\x7f\xff\xff\xff", b"\xff\xff\xff\x7f",
            b"\x80\0\0\0", b"\0\0\0\x80", b"\0\0\0\1", b"\1\0\0\0", b"\xff\xff\xff\xfe")

# Of one process that reads: the time for a file, and several times what sound files take.
SECONDS_FOR_A_FILE = 10
KIBIBYTES = 64 << 10
DESCRIPTORS = 8
READERS = 8  # at a time; none of them gets so many files that it is replaced for that
# Of the application: a few files and two sockets for each process at a time.
DESCRIPTORS_OF_ALL = 48
KIBIBYTES_OF_ALL = 128 << 10

ORIGINALS = {}
for sample in sorted(os.listdir(SAMPLES)):
    with open(os.path.join(SAMPLES, sample), "rb") as sample_file:
        ORIGINALS[sample] = sample_file.read()


def place(chance, data):
    """Somewhere in the data, mostly near the beginning, where formats say what they hold."""
    end = chance.choice((32, 128, 512, 4096, len(data)))
    return chance.randrange(max(1, min(end, len(data))))


def truncated(chance, data):
    return data[: place(chance, data)]


def flipped(chance, data):
    data = bytearray(data)
    for _ in range(chance.choice((1, 1, 2, 8, 64))):
        data[place(chance, data)] ^= 1 << chance.randrange(8)
    return bytes(data)


def extreme(chance, data):
    for _ in range(chance.choice((1, 1, 2, 4))):
        at = place(chance, data)
        value = chance.choice(EXTREMES)[: chance.choice((1, 2, 4))]
        data = data[:at] + value + data[at + len(value):]
    return data


def spliced(chance, data):
    """The beginning of one, the end of another."""
    other = chance.choice(list(ORIGINALS.values()))
    return data[: place(chance, data)] + other[place(chance, other):]


def repeated(chance, data):
    """A piece of it a second time, over something else or between."""
    start, at = place(chance, data), place(chance, data)
    piece = data[start : start + chance.choice((4, 12, 40, 300, 5000))]
    return data[:at] + piece + data[at + chance.choice((0, len(piece))):]


def without(chance, data):
    at = place(chance, data)
    return data[:at] + data[at + chance.choice((1, 2, 4, 12, 100, 2000)):]


def damaged(chance, data):
    for _ in range(chance.choice((1, 1, 1, 2, 3))):
        data = chance.choice((truncated, flipped, flipped, extreme, extreme, spliced, repeated,
                              without))(chance, data or b"\0")
    return data


def make(number):
    """Writes the file of that number; its name."""
    chance = random.Random(f"{SEED}/{number}")
    sample = chance.choice(list(ORIGINALS))
    name = f"{number}.{chance.choice(EXTENSIONS)}"
    with open(name, "wb") as file:
        file.write(damaged(chance, ORIGINALS[sample]))
    return name, sample


def limited():
    if not SANITIZED:
        resource.setrlimit(resource.RLIMIT_NOFILE, (DESCRIPTORS_OF_ALL, DESCRIPTORS_OF_ALL))


def accounts_of_readers():
    """How the processes have ended that were started, when all of them have."""
    deadline = time.monotonic() + 30
    while any(name.endswith(".open") for name in os.listdir("programs/accounts")):
        assert time.monotonic() < deadline, "a process that reads is left"
        time.sleep(0.02)
    accounts = []
    for name in os.listdir("programs/accounts"):
        with open(f"programs/accounts/{name}", encoding="utf-8") as file:
            accounts.append(json.load(file))
        os.remove(f"programs/accounts/{name}")
    return accounts


def show(files):
    """What the application tells of the files, and the accounts of its readers."""
    command = ["programs/show_metadata", "--jobs", "4", *files]
    # Output goes to a file: the application's own use is measured, and nobody has to empty a pipe.
    with open("answers", "wb") as out, open("complaints", "wb") as complaints:
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=out,
                                   stderr=complaints, preexec_fn=limited)
        _, status, used = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
    with open("complaints", "rb") as file:
        text = file.read()
    assert process.returncode == 0 and not text, (process.returncode, text[-2000:])
    assert SANITIZED or used.ru_maxrss < KIBIBYTES_OF_ALL, used.ru_maxrss
    with open("answers", encoding="utf-8") as file:
        answers = json.load(file)
    assert len(answers) == len(files)
    return answers, accounts_of_readers()


def has_died(account):
    return account["status"] not in (0, -signal.SIGKILL)


def check_accounts(accounts):
    for account in accounts:
        # One that takes too long is killed as well, so it is told by what it has used.
        assert account["seconds"] < SECONDS_FOR_A_FILE, account
        assert SANITIZED or account["kibibytes"] < KIBIBYTES, account
        assert SANITIZED or account["descriptors"] <= DESCRIPTORS, account
    # One takes the place of each that died, and none that of another.
    deaths = sum(has_died(account) for account in accounts)
    assert len(accounts) <= READERS + deaths, accounts


def check_answer(name, answer):
    entries = answer["entries"]
    assert answer["path"] == name and answer["category"] == 1, answer
    assert all(entry["key"] and entry["value"] for entry in entries), answer
    keys = [entry["key"] for entry in entries]
    assert not keys or keys[0] == "dimensions" and len(set(keys)) == len(keys), answer


def guilty(files):
    """Those of the files that are the end of a process that reads nothing else."""
    if not any(has_died(account) for account in show(files)[1]):
        return []
    if len(files) == 1:
        return files
    half = len(files) // 2
    return guilty(files[:half]) + guilty(files[half:])


def run(numbers, sound):
    """One run of the application: its readers' accounts, and how many of the files are pictures."""
    made = dict(make(number) for number in numbers)
    expected, files = {}, []
    remaining = itertools.cycle(sound.items())
    for index, name in enumerate(made):
        if index % SOUND_EVERY == 0:
            good, entries = next(remaining)
            files.append(good)
            expected[len(files) - 1] = entries
        files.append(name)
    answers, accounts = show(files)
    for index, (name, answer) in enumerate(zip(files, answers)):
        if index in expected:
            assert answer["entries"] == expected[index], (name, answer)
        else:
            check_answer(name, answer)
    check_accounts(accounts)
    if any(has_died(account) for account in accounts):
        for name in guilty(list(made)):
            print(f"the end of its reader: {name.split('.')[0]} {made[name]}, of seed {SEED}")
            shutil.copy(name, f"kept-{SEED}-{name}")
    for name in made:
        os.remove(name)
    return accounts, sum(bool(answer["entries"]) for answer in answers) - len(expected)


def prepare():
    os.makedirs("programs/accounts")
    shutil.copy(PROGRAM, "programs/show_metadata")
    shutil.copy(WORKER, "programs/reader")
    watched = os.path.join(os.path.dirname(os.path.abspath(__file__)), "watched_worker.py")
    shutil.copy(watched, "programs/quillmere-media-worker")
    os.chmod("programs/quillmere-media-worker", 0o755)
    for number, data in enumerate(ORIGINALS.values()):
        with open(f"sound-{number}.{EXTENSIONS[number % len(EXTENSIONS)]}", "wb") as file:
            file.write(data)


def main():
    prepare()
    names = sorted(name for name in os.listdir() if name.startswith("sound-"))
    answers, _ = show(names)
    sound = {name: answer["entries"] for name, answer in zip(names, answers)}
    assert all(sound.values()), sound
    accounts, pictures = [], 0
    for start in range(0, COUNT, FILES_OF_A_RUN):
        numbers = range(start, min(COUNT, start + FILES_OF_A_RUN))
        more, found = run(numbers, sound)
        accounts += more
        pictures += found
    deaths = [account["status"] for account in accounts if has_died(account)]
    print(f"{COUNT} files of seed {SEED}: {pictures} of them still pictures, {len(deaths)} of "
          f"{len(accounts)} processes died {sorted(set(deaths))}, "
          f"at most {max(account['kibibytes'] for account in accounts) >> 10} MiB, "
          f"{max(account['descriptors'] for account in accounts)} descriptors, "
          f"{max(account['seconds'] for account in accounts):.1f} s")
    assert 0 < pictures < COUNT


if __name__ == "__main__":
    main()
