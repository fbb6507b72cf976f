"""Finds the Python runtimes that the tests drive, one line each on standard output:

    name;version;library;program;home

With --environments DIR every interpreter that brings no NumPy of its own is given as the virtual
environment DIR/<name> when there is one; with --install that is made first, with the newest NumPy
and pandas that PyPI has for it. What is left out is said on standard error.
"""
import argparse
import glob
import os
import subprocess
import sys

DESCRIBE = """
import os, sys, sysconfig
var = sysconfig.get_config_var
names = [var("INSTSONAME"), var("LDLIBRARY")]
folders = [var("LIBDIR"), os.path.join(var("LIBDIR") or "", var("MULTIARCH") or "")]
found = [os.path.join(f, n) for f in folders for n in names if f and n and ".so" in n]
found = [p for p in found if os.path.exists(p)]
print(";".join([".".join(map(str, sys.version_info[:3])), found[0] if found else "",
                sys.executable, getattr(sys, "base_prefix", sys.prefix)]))
"""


def candidates():
    root = os.environ.get("PYENV_ROOT", os.path.expanduser("~/.pyenv"))
    yield from os.environ.get("PELION_TEST_PYTHONS", "").split()
    yield "/usr/bin/python3"
    yield from sorted(glob.glob(os.path.join(root, "versions", "*", "bin", "python")))


def ask(program, code):
    """What the code prints, or None when it or the program does not run."""
    environment = {k: v for k, v in os.environ.items() if not k.startswith("PYTHON")}
    try:
        result = subprocess.run([program, "-c", code], env=environment, stdout=subprocess.PIPE,
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
    parser.add_argument("--environments", default="")
    parser.add_argument("--install", action="store_true")
    options = parser.parse_args()
    seen = set()
    for program in candidates():
        description = ask(program, DESCRIBE)
        if description is None:
            print("skipped: " + program + " does not run", file=sys.stderr)
            continue
        version, library, program, home = description.split(";")
        if not library:
            print("skipped: " + program + " has no shared library", file=sys.stderr)
            continue
        if library in seen:
            continue
        seen.add(library)
        name = version + ("-debian" if home == "/usr" else "")
        if options.environments and not version.startswith("2."):
            folder = os.path.join(options.environments, name)
            program = with_tables(program, folder, options.install)
        print(";".join([name, version, library, program, home]))


if __name__ == "__main__":
    main()
