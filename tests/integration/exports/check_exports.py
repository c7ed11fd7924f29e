#!/usr/bin/env python3
"""check_exports.py LIBRARY SONAME LIST: the library has that name, misses no symbol, and exports what LIST says.

A line of LIST is "class NAME" (everything in it, and its type information), "operators NAME" (those for comparing and
streaming the record) or "object NAME".
A line that nothing in the library answers to is an error, too: the list says what there is. Beside the list, the
instances of templates and the inline functions of the standard library and of Qt may appear as weak symbols, since
the compiler leaves them wherever they are used.
"""

import pathlib
import re
import subprocess
import sys

# Mangled names of what belongs to std, to the compiler's library or to Qt: of functions, of statics within them
# (Z...E), and of their type information.
FOREIGN = re.compile(r"_Z(TV|TI|TS|TT|GV|Z)*(N[KVRO]*)*(S[tabsiod]|\d+Q|\d+q|\d+__gnu_cxx|(pl|eq|ne|ls|rs)I)")
OPERATOR = re.compile(r"(\w+::)*operator(==|<<|>>)\((QDataStream&, )?(?P<record>[\w:]+)( const)?&(, (?P=record) const&)?\)$")
# What the linker may put around the data of any library.
MARKS = {"_edata", "_end", "__bss_start"}
WEAK = {"W", "V", "u"}
# The linker's own marks. It shows them as soon as a library that is linked shows its own, as Qt's do.
LINKER = {"__bss_start", "_edata", "_end"}
TYPE_INFORMATION = re.compile(r"^(vtable|VTT|typeinfo|typeinfo name|guard variable|(non-)?virtual thunk) (for|to) ")


def output_of(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def read_list(path):
    lines = [line.strip() for line in pathlib.Path(path).read_text().splitlines()]
    entries = [tuple(line.split(" ", 1)) for line in lines if line and not line.startswith("#")]
    unknown = [kind for kind, _ in entries if kind not in ("class", "operators", "object")]
    if unknown or not entries:
        sys.exit(f"{path}: {unknown or 'empty'}")
    return entries


def exported_symbols(library):
    """(type letter, mangled, demangled) of each."""
    nm = ("nm", "--dynamic", "--defined-only", "--no-sort", "--format=posix", library)
    mangled = [line.split(" ")[:2] for line in output_of(*nm).splitlines()]
    names = output_of("c++filt", *(name.split("@")[0] for name, _ in mangled)).splitlines()
    return [(letter, name, demangled) for (name, letter), demangled in zip(mangled, names, strict=True)]


def answers(entry, name):
    kind, listed = entry
    if kind == "object":
        return name == listed
    if kind == "operators":
        found = OPERATOR.match(name)
        return found is not None and found["record"] == listed
    plain = TYPE_INFORMATION.sub("", name)
    return plain == listed or plain.startswith(listed + "::")


def check_symbols(library, entries):
    symbols = exported_symbols(library)
    problems = []
    for letter, mangled, name in symbols:
        if any(answers(entry, name) for entry in entries):
            continue
        if mangled in MARKS or letter in WEAK and FOREIGN.match(mangled):
            continue
        problems.append(f"not in the list: {letter} {name}  ({mangled})")
    problems += [f"in the list, but not exported: {' '.join(entry)}" for entry in entries
                 if not any(answers(entry, name) for _, _, name in symbols)]
    return problems


def check_names(library, soname):
    dynamic = output_of("readelf", "--dynamic", "--wide", library)
    if f"Library soname: [{soname}]" not in dynamic:
        yield f"the SONAME is not {soname}"
    resolved = subprocess.run(("ldd", "-r", library), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True).stdout
    yield from (line.strip() for line in resolved.splitlines() if "undefined symbol" in line or "not found" in line)


def main():
    library, soname, listed = sys.argv[1:]
    entries = read_list(listed)
    problems = check_symbols(library, entries) + list(check_names(library, soname))
    if problems:
        sys.exit(f"{library}:\n" + "\n".join(problems))
    print(f"{library}: {len(entries)} entries")


main()
