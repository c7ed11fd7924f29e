#!/usr/bin/env python3
"""check_headers.py SOURCE_DIR INCLUDE_DIR: the installed headers are those of the tree that export something, and those
that they include."""

import pathlib
import re
import sys


def with_included(exporting, tree):
    """The texts by name, with those of the tree that they reach."""
    own_include = re.compile(r'^#include "(.+)"$', re.MULTILINE)
    reached = {}
    names = list(exporting)
    while names:
        name = names.pop()
        if name in tree and name not in reached:
            reached[name] = tree[name]
            names += own_include.findall(tree[name])
    return reached


def main():
    source, installed = map(pathlib.Path, sys.argv[1:])
    exports = re.compile(r"\bKESTRUNE_(PLATFORM_)?EXPORT\b")
    tree = {path.name: path.read_text() for path in source.rglob("*.h")}
    expected = with_included((name for name, text in tree.items() if exports.search(text)), tree)
    found = {path.name: path.read_text() for path in installed.iterdir()}
    problems = [f"{name} is not installed" for name in sorted(expected.keys() - found.keys())]
    problems += [f"{name} is installed, exports nothing, and no other needs it"
                 for name in sorted(found.keys() - expected.keys())]
    problems += [f"{name} is not that of the tree" for name in sorted(expected.keys() & found.keys())
                 if expected[name] != found[name]]
    if not expected:
        problems.append(f"no header in {source} exports anything")
    if problems:
        sys.exit("\n".join(problems))
    print(f"{len(found)} headers")


main()
