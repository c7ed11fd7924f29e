#!/usr/bin/env python3
"""check_headers.py SOURCE_DIR INCLUDE_DIR: the installed headers are those of the tree that export something."""

import pathlib
import re
import sys


def main():
    source, installed = map(pathlib.Path, sys.argv[1:])
    exports = re.compile(r"\bKESTRUNE_(PLATFORM_)?EXPORT\b")
    expected = {path.name: path.read_text() for path in source.rglob("*.h") if exports.search(path.read_text())}
    found = {path.name: path.read_text() for path in installed.iterdir()}
    problems = [f"{name} is not installed" for name in sorted(expected.keys() - found.keys())]
    problems += [f"{name} is installed and exports nothing" for name in sorted(found.keys() - expected.keys())]
    problems += [f"{name} is not that of the tree" for name in sorted(expected.keys() & found.keys())
                 if expected[name] != found[name]]
    if not expected:
        problems.append(f"no header in {source} exports anything")
    if problems:
        sys.exit("\n".join(problems))
    print(f"{len(found)} headers")


main()
