"""Fails when a host that was compiled earlier could not run with the library as it is now.

usage: interfaces.py LIBRARY BASELINE [--update]

Additions pass. --update describes LIBRARY in BASELINE instead.
"""

import pathlib
import re
import subprocess
import sys

SUPPRESSIONS = str(pathlib.Path(__file__).with_name("foreign.ini"))
DESCRIBE = ["abidw", "--exported-interfaces-only", "--no-corpus-path",
            "--no-comp-dir-path", "--no-show-locs", "--no-parameter-names", "--no-elf-needed",
            "--no-write-default-sizes", "--type-id-style", "hash", "--suppressions", SUPPRESSIONS]
COMPARE = ["abidiff", "--no-added-syms", "--suppressions", SUPPRESSIONS]


def main(library, baseline, update=None):
    if update:
        text = subprocess.check_output([*DESCRIBE, library], text=True)
        # Where the sources lay does not matter.
        text = re.sub(r" path='[^']*/src/", " path='src/", text)
        pathlib.Path(baseline).write_text(text)
        return
    if "name='IPythonAPI'" not in pathlib.Path(baseline).read_text():
        sys.exit("The baseline describes no types.")
    sys.exit(subprocess.run([*COMPARE, baseline, library]).returncode)


main(*sys.argv[1:])
