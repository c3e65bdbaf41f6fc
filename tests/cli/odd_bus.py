#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Listens at a socket and speaks the D-Bus protocol badly.

usage: odd_bus.py SOCKET BEHAVIOUR
"""

import os
import socket
import struct
import sys
import threading
import time

RETURN, ERROR, SIGNAL = 2, 3, 4


def padded(data, size):
    return data + bytes(-len(data) % size)


def text(value):
    return struct.pack("<I", len(value)) + value + b"\0"


def field(code, signature, value):
    return bytes([code, 1]) + signature + b"\0" + value


def message(kind, serial, fields, body=b"", length=None):
    """The fields are given whole; `length` is what the head claims of the body."""
    array = b""
    for entry in fields:
        array = padded(array, 8) + entry
    claimed = len(body) if length is None else length
    head = struct.pack("<cBBBIII", b"l", kind, 0, 1, claimed, serial, len(array))
    return padded(head + array, 8) + body


def reply_to(serial, own, kind=RETURN, body=b"", length=None, name=b"a.b.Error", sender=b":1.9"):
    fields = [
        field(5, b"u", struct.pack("<I", serial)),
        field(6, b"s", text(b":1.1")),
        field(7, b"s", text(sender)),
    ]
    if kind == ERROR:
        fields.append(field(4, b"s", text(name)))
    if body:
        fields.append(field(8, b"g", b"\1s\0"))
    return message(kind, own, fields, body, length)


class Client:
    def __init__(self, connection):
        self.connection = connection
        self.buffer = b""

    def line(self):
        while b"\r\n" not in self.buffer:
            self.receive()
        line, self.buffer = self.buffer.split(b"\r\n", 1)
        return line.strip(b"\0")

    def receive(self):
        data = self.connection.recv(65536)
        if not data:
            raise EOFError
        self.buffer += data

    def call(self):
        """Reads one message and answers its serial."""
        while len(self.buffer) < 16:
            self.receive()
        body, serial, array = struct.unpack("<III", self.buffer[4:16])
        size = (16 + array + 7) // 8 * 8 + body
        while len(self.buffer) < size:
            self.receive()
        self.buffer = self.buffer[size:]
        return serial

    def send(self, data):
        self.connection.sendall(data)

    def authenticate(self):
        """The lines of the client come in one packet, so each gets its answer in turn."""
        while True:
            line = self.line()
            if line.startswith(b"AUTH"):
                self.send(b"DATA\r\n" if line == b"AUTH EXTERNAL" else b"OK " + b"0" * 32 + b"\r\n")
            elif line.startswith(b"DATA"):
                self.send(b"OK " + b"0" * 32 + b"\r\n")
            elif line == b"NEGOTIATE_UNIX_FD":
                self.send(b"ERROR\r\n")
            elif line == b"BEGIN":
                return


def flood(client):
    signal = message(
        SIGNAL,
        7,
        [
            field(1, b"o", text(b"/x")),
            field(2, b"s", text(b"a.b")),
            field(3, b"s", text(b"C")),
        ],
    )
    while True:
        client.send(signal * 100)


BUS = b"org.freedesktop.DBus"
ABSENT = b"org.freedesktop.DBus.Error.NameHasNoOwner"


def serve(client, behaviour, number):
    """The number tells the first client from later ones."""
    if behaviour == "close":
        return
    if behaviour == "silent" or (behaviour == "absent-then-silent" and number == 2):
        time.sleep(3600)
    if behaviour == "garbage":
        client.line()
        client.send(os.urandom(4096) + b"\r\n")
        return
    if behaviour == "refuse":
        client.line()
        client.send(b"REJECTED\r\n" * 3)
        return
    client.authenticate()
    serial = client.call()
    if behaviour == "hello-silent":
        time.sleep(3600)
    if behaviour == "hello-flood":
        flood(client)
    if behaviour == "hello-garbage":
        client.send(b"l" + bytes(range(200)) * 20)
        return
    if behaviour == "hello-error":
        client.send(reply_to(serial, 1, ERROR, text(b"no")))
        return
    if behaviour == "no-name":
        client.send(reply_to(serial, 1, body=text(b"not a name")))
        return
    client.send(reply_to(serial, 1, body=text(b":1.2"), sender=BUS))
    # Who has the name? Then the script comes.
    serial = client.call()
    if behaviour == "owner-silent":
        time.sleep(3600)
    if behaviour == "absent-then-silent" and number == 1:
        client.send(reply_to(serial, 2, ERROR, text(b"none"), name=ABSENT, sender=BUS))
        client.connection.recv(1)
        return
    client.send(reply_to(serial, 2, body=text(b":1.9"), sender=BUS))
    serial = client.call()
    if behaviour == "reply-flood":
        flood(client)
    if behaviour == "reply-garbage":
        client.send(b"l" + bytes(range(200)) * 20)
    if behaviour == "reply-huge":
        client.send(reply_to(serial, 3, body=text(b"x"), length=0x7FFFFFFF))
    if behaviour == "absent-then-silent":
        client.send(reply_to(serial, 3, ERROR, text(b"again")))
        client.connection.recv(1)
    if behaviour == "reply-bad-text":
        client.send(reply_to(serial, 3, body=struct.pack("<I", 4096) + b"x\0"))
        time.sleep(3600)
    if behaviour == "reply-others-first":
        client.send(reply_to(serial + 100, 3, ERROR, text(b"not running")))
        client.send(reply_to(serial, 4, ERROR, text(b"not running"), sender=b":1.3"))
        client.send(reply_to(serial, 5, body=text(b"")))
        time.sleep(3600)


def converse(connection, number):
    try:
        serve(Client(connection), sys.argv[2], number)
    except (EOFError, ConnectionError):
        pass
    connection.close()


def main():
    listener = socket.socket(socket.AF_UNIX)
    listener.bind(sys.argv[1])
    listener.listen()
    number = 0
    while True:
        connection, _ = listener.accept()
        number += 1
        threading.Thread(target=converse, args=(connection, number), daemon=True).start()


main()
