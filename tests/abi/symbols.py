"""Compares the names that a library exports with the list of them; --update writes the list.

usage: symbols.py TOOL LIBRARY LIST [--update]

TOOL is nm for an ELF library and objdump for a DLL. `c++filt < LIST` shows what the names mean.
"""

import difflib
import pathlib
import re
import subprocess
import sys


def exported(tool, library):
    if library.endswith(".dll"):
        text = subprocess.check_output([tool, "-p", library], text=True)
        table = text.partition("[Ordinal/Name Pointer] Table")[2].partition("\n\n")[0]
        names = re.findall(r"^\s*\[.*\]\s+(?:[0-9a-f]+\s+)?(\S+)$", table, re.MULTILINE)
    else:
        text = subprocess.check_output(
            [tool, "-D", "--defined-only", "--format=posix", library], text=True)
        names = [line.split()[0] for line in text.splitlines()]
    return "".join(name + "\n" for name in sorted(names))


def main(tool, library, list_file, update=None):
    list_file = pathlib.Path(list_file)
    now = exported(tool, library)
    if update:
        list_file.parent.mkdir(parents=True, exist_ok=True)
        list_file.write_text(now)
        return
    before = list_file.read_text()
    if not now or now != before:
        changes = difflib.unified_diff(before.splitlines(), now.splitlines(), "the list", library, n=0)
        sys.exit("The exported names are not those of the list:\n" + "\n".join(changes))


main(*sys.argv[1:])
