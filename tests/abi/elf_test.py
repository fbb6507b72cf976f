"""Checks what the loader and packagers read in the library: elf_test.py LIBRARY."""

import json
import re
import subprocess
import sys
import unittest


def output(*command):
    return subprocess.check_output([*command, LIBRARY]).decode(errors="replace")


class Elf(unittest.TestCase):
    def test_dynamic_section(self):
        section = output("readelf", "--dynamic", "--wide")
        self.assertIn("[libpelion_core.so.0]", section)
        self.assertIn("BIND_NOW", section)
        self.assertNotRegex(section, "RPATH|RUNPATH|TEXTREL")
        needed = set(re.findall(r"\(NEEDED\).*\[(.+?)\.so", section))
        self.assertLessEqual(needed, {"libstdc++", "libm", "libgcc_s", "libc", "ld-linux-x86-64"})

    def test_dlopen_note_names_every_version_the_best_first(self):
        note = output("readelf", "--string-dump=.note.dlopen", "--wide")
        [entry] = json.loads(re.search(r"\[\{.*\}\]", note)[0])
        minors = re.findall(r"libpython3\.(\d+)m?\.so\.1\.0", " ".join(entry["soname"]))
        self.assertEqual(minors, [str(minor) for minor in range(13, 5, -1)])


if __name__ == "__main__":
    LIBRARY = sys.argv.pop(1)
    unittest.main()
