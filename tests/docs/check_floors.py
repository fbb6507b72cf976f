"""Whether every folder includes only those above it in the list of CONTRIBUTING.md.

    check_floors.py ROOT
"""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
floors = re.findall(r"^    src/(\S+)/ ", (root / "CONTRIBUTING.md").read_text(), re.MULTILINE)


def floor_of(path):
    """The place in the list of a path below src/ or include/pelion_core/; None above all."""
    folders = [str(folder) for folder in path.parents]
    return next((floors.index(folder) for folder in folders if folder in floors), None)


def included(path, base, name):
    """The path of an included file below its base; None for what is not ours."""
    if name.startswith("pelion_core/"):
        return pathlib.Path(name[len("pelion_core/"):])
    for folder in (path.parent, base):
        if (folder / name).exists():
            return (folder / name).relative_to(base)
    return None


failures = 0
count = 0
for base in (root / "src", root / "include" / "pelion_core"):
    for path in sorted(base.rglob("*.*")):
        own = floor_of(path.relative_to(base))
        for name in re.findall(r'^#include "([^"]+)"', path.read_text(), re.MULTILINE):
            other = included(path, base, name)
            if own is None or other is None:
                continue
            count += 1
            place = floor_of(other)
            if place is None or place > own:
                print("%s includes %s, which stands on it" % (path.relative_to(root), name))
                failures += 1
print("%d includes on %d floors" % (count, len(floors)))
sys.exit(failures != 0 or len(floors) < 7 or count < 100)
