"""Changes the library a little, one place at a time, and says which changes no test notices.

    mutate.py COPY COUNT SEED

COPY is made anew, a clone of what is committed here, which is changed and built. The places are drawn
at random. A change that does not compile or never ends counts as noticed.
"""
import pathlib
import random
import re
import shutil
import subprocess
import sys

RULES = [(re.compile(pattern), replacement) for pattern, replacement in (
    (r'"(\w+)"', r'"\1x"'),
    (r" == ", " != "), (r" != ", " == "),
    (r" < ", " <= "), (r" > ", " >= "),
    (r" && ", " || "), (r" \|\| ", " && "),
    (r" \+ ", " - "), (r" \* ", " / "),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"),
    (r"\bif \((.+)\) ", r"if (!(\1)) "),
    (r"(?<=return )(api->\w*(?:Check|Has|Is|Rich)\w*\(.*\));", r"!(\1);"),
    (r"^ +[\w.]+(?:->|\.|::)?\w+\([^{]*\);$", ""),  # a call for its effect
)]
TARGETS = ["unit_tests", "unload_test", "python_tests", "faults_test", "stand_in_answer",
           "stand_in_forward", "replay_names", "replay_text", "replay_components", "replay_columns",
           "pelion_core_host_tests", "pelion_core_doctor_tests", "pelion"]
TESTS = ["--tests-regex", "debian:|^unit|^doctor", "--exclude-regex", "soak|lives|example",
         "--parallel", "2", "--timeout", "60", "--stop-on-failure"]


def changes(source):
    """(path, line number, the line, the line changed) of every change that the rules know."""
    paths = [path for pattern in ("*.cpp", "*.h") for path in (source / "src").rglob(pattern)]
    for path in sorted(paths):
        if path.stem.endswith(("_win32", "_note_elf", "_macos")):
            continue
        for number, line in enumerate(path.read_text().split("\n")):
            if line.lstrip().startswith(("//", "#", "static_assert")):
                continue
            for pattern, replacement in RULES:
                changed = pattern.sub(replacement, line, count=1)
                if changed != line:
                    yield path, number, line, changed


def succeeds(source, *command):
    return subprocess.run(command, cwd=source, stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL).returncode == 0


def is_noticed(source):
    build = ("cmake", "--build", "--preset", "dev", "--target", *TARGETS)
    tests = ("ctest", "--test-dir", "build/dev", *TESTS)
    return not succeeds(source, *build) or not succeeds(source, *tests)


def main(copy, count, seed):
    source = pathlib.Path(copy)
    here = pathlib.Path.cwd()
    shutil.rmtree(source, ignore_errors=True)
    subprocess.run(["git", "clone", "--quiet", here, source], check=True)
    subprocess.run(["cmake", "--preset", "dev", "-D",
                    "PELION_TEST_ENVIRONMENTS=%s/build/environments" % here],
                   cwd=source, stdout=subprocess.DEVNULL, check=True)
    print("Changing what is committed", flush=True)
    if is_noticed(source):
        sys.exit("The tests fail without any change.")
    candidates = list(changes(source))
    chosen = random.Random(seed).sample(candidates, min(int(count), len(candidates)))
    unnoticed = 0
    for path, number, line, changed in chosen:
        original = path.read_text()
        lines = original.split("\n")
        lines[number] = changed
        path.write_text("\n".join(lines))
        if not is_noticed(source):
            unnoticed += 1
            print("%s:%d\n  %s\n  %s" % (path.relative_to(source), number + 1, line.strip(),
                                         changed.strip() or "(nothing)"), flush=True)
        path.write_text(original)
    print("%d of %d possible changes; unnoticed: %d" % (len(chosen), len(candidates), unnoticed))


main(*sys.argv[1:])
