#!/usr/bin/python3
"""Two serial-line CAN adapters on one bus, as two pseudo-terminals.

    slcan_emulator.py

Prints the two terminals' names, a line each, then serves until its input ends, which is as if both were unplugged.
`slcan_attach -n NAME TERMINAL` makes a CAN link of each, with a bitrate that can be set and a controller whose state
the adapter reports. A line of input

    0 sb000255

makes adapter 0 send that text: sa, sw, sp and sb report the states from error active to bus off with both error
counters, e1a an acknowledgment error. The line "0 unplug" takes adapter 0 off, and the link with it; "0 plug" puts it
on a new terminal, whose name is printed.
"""
import os
import pty
import select
import sys
import tty

FRAMES = (b"t", b"T", b"r", b"R")


class Adapter:
    def __init__(self):
        self.plug()

    def plug(self):
        # The slave end stays open: with its last close the line ends, and the link with it.
        self.master, self.slave = pty.openpty()
        for end in (self.master, self.slave):
            tty.setraw(end)
        self.pending = b""
        self.is_open = False
        print(os.ttyname(self.slave), flush=True)

    def is_plugged(self):
        return self.master >= 0

    def lines(self):
        self.pending += os.read(self.master, 65536)
        *whole, self.pending = self.pending.split(b"\r")
        return whole

    def send(self, line):
        if self.is_plugged():
            os.write(self.master, line + b"\r")

    def unplug(self):
        # The end of the master hangs the line up.
        os.close(self.slave)
        os.close(self.master)
        self.master = -1


def serve(adapter, other):
    for line in adapter.lines():
        command = line[:1]
        if command not in FRAMES:
            if command in (b"O", b"C"):
                adapter.is_open = command == b"O"
            adapter.send(b"")
        elif adapter.is_open and other.is_open:
            other.send(line)


def obey(order, adapters):
    adapter = adapters[int(order[:1])]
    if order[2:] == b"plug":
        adapter.plug()
    elif order[2:] == b"unplug":
        adapter.unplug()
    else:
        adapter.send(order[2:])


def main():
    adapters = [Adapter(), Adapter()]
    orders = b""
    while True:
        plugged = [adapter for adapter in adapters if adapter.is_plugged()]
        ready, _, _ = select.select([adapter.master for adapter in plugged] + [sys.stdin], [], [])
        for adapter in plugged:
            if adapter.master in ready:
                serve(adapter, adapters[1 - adapters.index(adapter)])
        if sys.stdin in ready:
            received = os.read(sys.stdin.fileno(), 4096)
            if not received:
                return
            *whole, orders = (orders + received).split(b"\n")
            for order in whole:
                obey(order, adapters)


if __name__ == "__main__":
    main()
