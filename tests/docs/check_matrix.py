"""Whether the README's table of systems says what its commands do: each is a command of ./run, tests
are run by just those that are said to test, what stands in code type is what the command names, and
no command for another system is left out.

    check_matrix.py ROOT
"""
import json
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
run = (root / "run").read_text()
presets = json.loads((root / "CMakePresets.json").read_text())
commands = set(re.findall(r"[a-z0-9]+", run.split("case ${1-help} in")[1].split("help |")[0]))
scripts = {path.stem for path in (root / "tools").glob("*.sh")} & commands


def named(kind, name):
    return next((each for each in presets[kind] if each["name"] == name), {})


def text_of(command):
    """What decides where a command runs and by which compiler."""
    text = run
    if command in scripts:
        text = (root / "tools" / (command + ".sh")).read_text()
    text += json.dumps(named("workflowPresets", command)) + json.dumps(named("configurePresets", command))
    for toolchain in set(re.findall(r"cmake/\w+\.cmake", text)):
        text += (root / toolchain).read_text()
    return text


def runs_tests(command):
    steps = named("workflowPresets", command).get("steps", [])
    return command == "test" or any(step["type"] == "test" for step in steps) or (
        command in scripts and re.search(r"^[^#]*\bctest ", text_of(command), re.MULTILINE) is not None)


problems = []
table = (root / "README.md").read_text().split("\n## Where it runs\n")[1].split("\n## ")[0]
rows = [row.strip("|").split("|") for row in re.findall(r"^\|.*\|$", table, re.MULTILINE)[2:]]
shown = set()
for row in rows:
    status, command = re.fullmatch(r" (tested|built only) by `\./run (\w+)` ", row[-1]).groups()
    shown.add(command)
    if command not in commands:
        problems.append("there is no ./run " + command)
    elif (status == "tested") != runs_tests(command):
        problems.append("./run %s is not what shows that it is %s" % (command, status))
    for word in re.findall(r"`([^`]+)`", "|".join(row[:-1])):
        if word not in text_of(command):
            problems.append("./run %s does not name %s" % (command, word))
problems += ["no row for ./run " + command for command in (scripts | {"test", "windows"}) - shown]
print("\n".join(problems) or "%d rows" % len(rows))
sys.exit(bool(problems))
