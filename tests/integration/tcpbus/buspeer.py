#!/usr/bin/env python3
"""A node of the embedded bus that shares no code with it: plain sockets, and the bytes by hand.

    buspeer.py join PORT    takes part in the bus at PORT
    buspeer.py host PORT    carries a bus at PORT for one client; PORT 0 takes a free one

Both do the same once connected: they print each frame they receive as a line

    IDENTIFIER KIND LENGTH DATA        123 - 2 0102      1ABCDEF0 xf 1 FF

with the letters x extended, r remote, e error, f CAN FD, b bit rate switch, s error state indicator; they send each
line of the same form that they read from standard input; and they answer every remote frame with a data frame of the
same identifier that holds the letters "PY". Ready is said by the line "ready PORT", the end of the connection by
"ended". The line "quit", or the end of input, ends the program.
"""

import os
import selectors
import socket
import struct
import sys

GREETING = b"CANNELLONIv1"
EXTENDED, REMOTE, ERROR = 0x80000000, 0x40000000, 0x20000000
FD, SWITCH, STATE = 0x80, 1, 2


def encode(identifier, kind, length, data):
    marks = (EXTENDED if "x" in kind else 0) | (REMOTE if "r" in kind else 0) | (ERROR if "e" in kind else 0)
    head = struct.pack(">IB", identifier | marks, length | (FD if "f" in kind else 0))
    if "f" in kind:
        head += bytes([(SWITCH if "b" in kind else 0) | (STATE if "s" in kind else 0)])
    return head + data


def decode(buffer):
    """The first frame of the buffer and the number of its bytes, or None."""
    if len(buffer) < 5:
        return None
    raw, length = struct.unpack_from(">IB", buffer)
    kind = "".join(letter for letter, mark in (("x", EXTENDED), ("r", REMOTE), ("e", ERROR)) if raw & mark)
    at = 5
    if length & FD:
        length &= ~FD
        at += 1
        if len(buffer) < at:
            return None
        kind += "f" + "".join(letter for letter, flag in (("b", SWITCH), ("s", STATE)) if buffer[5] & flag)
    size = at + (0 if raw & REMOTE else length)
    if len(buffer) < size:
        return None
    return (raw & 0x1FFFFFFF, kind, length, bytes(buffer[at:size])), size


def say(text):
    print(text, flush=True)


def connect(mode, port):
    if mode == "join":
        say(f"ready {port}")
        return socket.create_connection(("127.0.0.1", port))
    with socket.create_server(("127.0.0.1", port)) as server:
        say(f"ready {server.getsockname()[1]}")
        return server.accept()[0]


def receive_exactly(connection, size):
    received = b""
    while len(received) < size:
        part = connection.recv(size - len(received))
        if not part:
            sys.exit("the connection ended before the greeting")
        received += part
    return received


def show(frame):
    identifier, kind, length, data = frame
    digits = 8 if "x" in kind or "e" in kind else 3
    say(" ".join((f"{identifier:0{digits}X}", kind or "-", str(length), data.hex().upper() or "-")))


class Node:
    def __init__(self, connection):
        self.connection = connection
        self.buffer = bytearray()

    def receive(self):
        part = self.connection.recv(65536)
        if not part:
            return False
        self.buffer += part
        while (found := decode(self.buffer)) is not None:
            frame, size = found
            del self.buffer[:size]
            show(frame)
            if "r" in frame[1]:
                self.connection.sendall(encode(frame[0], frame[1].replace("r", ""), 2, b"PY"))
        return True

    def command(self, line):
        identifier, kind, length, data = line.split()
        self.connection.sendall(encode(int(identifier, 16), kind, int(length),
                                       b"" if data == "-" else bytes.fromhex(data)))


def main():
    connection = connect(sys.argv[1], int(sys.argv[2]))
    connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    connection.sendall(GREETING)
    if receive_exactly(connection, len(GREETING)) != GREETING:
        sys.exit("the other side said another greeting")
    say("joined")

    node = Node(connection)
    waiting = b""
    selector = selectors.DefaultSelector()
    selector.register(connection, selectors.EVENT_READ)
    selector.register(sys.stdin, selectors.EVENT_READ)
    while True:
        for key, _ in selector.select():
            if key.fileobj is connection:
                try:
                    alive = node.receive()
                except ConnectionResetError:
                    alive = False
                if not alive:
                    say("ended")
                    return
                continue
            part = os.read(sys.stdin.fileno(), 65536)
            waiting += part
            if not part or b"quit\n" in waiting:
                return
            *lines, waiting = waiting.split(b"\n")
            for line in lines:
                node.command(line.decode())


if __name__ == "__main__":
    main()
