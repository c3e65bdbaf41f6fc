# SPDX-License-Identifier: Apache-2.0
"""The folder that samples are made in, which the makers beside this are given, and its files."""
import os
import subprocess
import sys

FOLDER = sys.argv[1]


def path(name):
    return os.path.join(FOLDER, name)


def run(*words):
    done = subprocess.run(words, stdin=subprocess.DEVNULL, capture_output=True, check=False)
    if done.returncode != 0:
        sys.exit(f"failed: {' '.join(words)}\n{done.stderr.decode(errors='replace')}")


def read(name):
    with open(path(name), "rb") as file:
        return file.read()


def write(name, data):
    with open(path(name), "wb") as file:
        file.write(data)


def empty():
    os.makedirs(FOLDER, exist_ok=True)
    for name in os.listdir(FOLDER):
        os.remove(path(name))
