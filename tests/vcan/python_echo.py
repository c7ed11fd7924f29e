#!/usr/bin/python3
"""Sends back every frame of a CAN link, with the lowest bit of its identifier turned.

    python_echo.py LINK
"""
import sys

import can


def main():
    with can.Bus(interface="socketcan", channel=sys.argv[1], fd=True) as bus:
        print("ready", flush=True)
        for message in bus:
            message.arbitration_id ^= 1
            bus.send(message)


if __name__ == "__main__":
    main()
