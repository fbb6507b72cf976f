"""Finds the Python runtimes that the tests drive, one line each on standard output:

    name;version;library;program;home

They are those of this machine, or those of the programs that are named. With --environments DIR every
interpreter that brings no NumPy of its own is given as the virtual environment DIR/<name> when there
is one; with --install that is made first, with the newest NumPy and pandas that PyPI has for it. What
is left out is said on standard error.
"""
import argparse
import glob
import os
import pathlib
import re
import subprocess
import sys

SYSTEMS_OWN = "/usr/bin/python3"
FLAGS = {"d": "-debug", "t": "-free-threaded"}
ASK = pathlib.Path(__file__).parent.parent / "src" / "host" / "ask.py"


def candidates():
    root = os.environ.get("PYENV_ROOT", os.path.expanduser("~/.pyenv"))
    yield SYSTEMS_OWN
    yield from os.environ.get("PELION_TEST_PYTHONS", "").split()
    yield from sorted(glob.glob(os.path.join(root, "versions", "*", "bin", "python")))


def ask(program, code, *arguments):
    """What the code prints, or None when it or the program does not run."""
    environment = {k: v for k, v in os.environ.items() if not k.startswith("PYTHON")}
    try:
        result = subprocess.run([program, "-c", code, *arguments], env=environment, stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL, universal_newlines=True)
    except OSError:
        return None
    return result.stdout.strip() if result.returncode == 0 else None


def with_tables(program, folder, install):
    """The program itself or its environment, whichever imports NumPy and pandas."""
    tables = "import numpy, pandas"
    if ask(program, tables) is not None:
        return program
    environment = os.path.join(folder, "bin", "python")
    if install and ask(environment, tables) is None:
        print("making " + folder, file=sys.stderr, flush=True)
        subprocess.run([program, "-m", "venv", folder], check=False)
        subprocess.run([environment, "-m", "pip", "install", "--quiet", "--only-binary=:all:",
                        "--disable-pip-version-check", "numpy", "pandas"], check=False)
    return environment if ask(environment, "pass") is not None else program


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("programs", nargs="*", metavar="PROGRAM")
    parser.add_argument("--environments", default="")
    parser.add_argument("--install", action="store_true")
    options = parser.parse_args()
    seen = set()
    for candidate in options.programs or candidates():
        description = ask(candidate, ASK.read_text(), "settings")
        if description is None:
            print("skipped: " + candidate + " does not run", file=sys.stderr)
            continue
        version, program, home, library = (description + "\n").split("\n")[1:5]
        if not library:
            print("skipped: " + program + " has no shared library", file=sys.stderr)
            continue
        if library in seen:
            continue
        seen.add(library)
        flags = re.search(r"python3\.[0-9]+([a-z]*)", os.path.basename(library))
        name = version + "".join(FLAGS.get(flag, "") for flag in (flags[1] if flags else ""))
        if candidate == SYSTEMS_OWN and home == "/usr":
            name += "-debian"
        if options.environments and not version.startswith("2."):
            folder = os.path.join(options.environments, name)
            program = with_tables(program, folder, options.install)
        print(";".join([name, version, library, program, home]))


if __name__ == "__main__":
    main()
