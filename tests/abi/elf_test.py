"""Checks what the loader and packagers read in the library: elf_test.py LIBRARY."""

import json
import re
import struct
import subprocess
import sys
import unittest


def readelf(option):
    return subprocess.check_output(["readelf", option, "--wide", LIBRARY], text=True)


class Elf(unittest.TestCase):
    def test_dynamic_section(self):
        entries = dict(re.findall(r"\((\w+)\)\s+(.+)", readelf("--dynamic")))
        self.assertEqual(entries["SONAME"], "Library soname: [libpelion_core.so.0]")
        self.assertIn("BIND_NOW", entries["FLAGS"])
        self.assertNotIn("RPATH", entries)
        self.assertNotIn("RUNPATH", entries)
        self.assertNotIn("TEXTREL", entries)

    def test_needs_no_python(self):
        needed = re.findall(r"\(NEEDED\).*\[(.+?)\.so", readelf("--dynamic"))
        self.assertIn("libstdc++", needed)
        self.assertLessEqual(set(needed), {"libstdc++", "libm", "libgcc_s", "libc", "ld-linux-x86-64"})

    def test_segments(self):
        segments = readelf("--segments")
        self.assertRegex(segments, r"GNU_RELRO ")
        self.assertRegex(segments, r"GNU_STACK .* RW +0x")
        self.assertNotRegex(segments, r"LOAD .* RWE ")

    def test_dlopen_note(self):
        note = subprocess.check_output(
            ["objcopy", "--dump-section", ".note.dlopen=/dev/stdout", LIBRARY, "/dev/null"])
        owner_size, content_size, kind, owner = struct.unpack_from("=III4s", note)
        self.assertEqual((owner_size, kind, owner), (4, 0x407C0C0A, b"FDO\0"))
        self.assertEqual(len(note), 16 + (content_size + 3) // 4 * 4)
        content = note[16 : 16 + content_size]
        self.assertTrue(content.endswith(b"}]\0"))
        [entry] = json.loads(content[:-1])
        self.assertEqual(set(entry), {"feature", "description", "priority", "soname"})
        self.assertEqual((entry["feature"], entry["priority"]), ("python", "recommended"))
        minors = [int(re.fullmatch(r"libpython3\.(\d+)m?\.so\.1\.0", name)[1])
                  for name in entry["soname"]]
        self.assertEqual(minors, list(range(13, 5, -1)), "every version, the best first")
        self.assertRegex(readelf("--segments"), r"NOTE .*\n(.*\n)*.*\.note\.dlopen", "is loaded")


if __name__ == "__main__":
    LIBRARY = sys.argv.pop(1)
    unittest.main()
