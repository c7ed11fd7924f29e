#!/usr/bin/env python3
"""run_example.py PROGRAM: runs the example on a bus of its own; its one frame must come out at the other end."""

import os
import socket
import subprocess
import sys
import tempfile

EXPECTED = '123 "2a"'


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def main():
    with tempfile.TemporaryDirectory() as home:
        environment = dict(os.environ, QT_QPA_PLATFORM="offscreen", HOME=home, XDG_RUNTIME_DIR=home)
        result = subprocess.run([sys.argv[1], str(free_port())], env=environment, stderr=subprocess.PIPE, text=True,
                                timeout=60)
    print(result.stderr, end="")
    if result.returncode != 0:
        sys.exit(f"It ended with status {result.returncode}.")
    if result.stderr.splitlines() != [EXPECTED]:
        sys.exit(f"It should have said: {EXPECTED}")


main()
