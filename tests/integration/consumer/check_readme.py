#!/usr/bin/env python3
"""check_readme.py README MAIN_CPP: the program that the README shows is the one that the tests build and run."""

import difflib
import pathlib
import re
import sys


def main():
    readme, program = (pathlib.Path(name).read_text() for name in sys.argv[1:])
    shown = re.findall(r"^```cpp\n(.*?)^```$", readme, re.DOTALL | re.MULTILINE)
    if program in shown:
        return
    if not shown:
        sys.exit("The README shows no program.")
    sys.exit("".join(difflib.unified_diff(shown[0].splitlines(True), program.splitlines(True),
                                          sys.argv[1], sys.argv[2])))


main()
