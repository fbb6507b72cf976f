"""Turns the fenced code blocks of the documentation into what the tests build and run.

    extract_blocks.py FOLDER PAGE...

A ```cpp block with a `main` is a whole program; any other is the body of a function that runs in a
loaded interpreter, with the library's namespaces at hand; on the page of the front door, in a session
`python`. A line that prints and ends in a comment,
`std::cout << 1 + 1 << '\\n';  // 2`, promises what it prints. ```sh is a script for an empty folder,
```cmake a project around the program that stands before it and is named by its first line; ```text is
what the program before it prints.

Writes the tests of C++ into blocks_test.cpp and a folder for each script and project, and prints a
line `kind;name` for each of the latter.
"""
import os
import re
import sys

PROMISE = re.compile(r"std::cout <<.*<< '\\n';\s*// (.*)$", re.MULTILINE)
INCLUDE = re.compile(r"^#include .*\n", re.MULTILINE)
HEAD = '''#include "host/host_python.h"
#include "support/real_python.h"
#include <iostream>
using namespace pelion_core;
using namespace pelion_core::api;
using Fragment = real::RealPython;
using Front = front::Host;
namespace py = pelion_core::host;
'''
TEST = '''
TEST%(kind)s, %(name)s) {
  testing::internal::CaptureStdout();
%(body)s  EXPECT_EQ(testing::internal::GetCapturedStdout(), R"-(%(promised)s)-");
}
'''


def blocks(page):
    """(language, first line, text) of each fenced block."""
    with open(page, encoding="utf-8") as file:
        lines = file.read().split("\n")
    starts = [i for i, line in enumerate(lines) if line.startswith("```")]
    for begin, end in zip(starts[::2], starts[1::2]):
        yield lines[begin][3:], begin + 2, "\n".join(lines[begin + 1:end]) + "\n"


def promised_by(text):
    return "".join(found + "\n" for found in PROMISE.findall(text))


def as_test(name, page, line, text):
    body = '#line %d "%s"\n%s' % (line, page, INCLUDE.sub("\n", text))
    promised = promised_by(text)
    if "int main()" not in text:
        fixture = "_F(Front" if name.startswith("host_") else "_F(Fragment"
        return TEST % {"kind": fixture, "name": name, "body": body, "promised": promised}
    # What stands before main, such as a specialisation, may belong to any namespace.
    before, main = body.split("int main()")
    function = "namespace %s {\nint block()%s  return 0;\n}\n}\n" % (name, main.rstrip()[:-1])
    return "".join(INCLUDE.findall(text)) + before + function + TEST % {
        "kind": "(Program", "name": name, "promised": promised,
        "body": "  EXPECT_EQ(%s::block(), 0);\n" % name}


def write(folder, name, text):
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
        file.write(text)


def main():
    output, pages = sys.argv[1], sys.argv[2:]
    tests = HEAD
    for page in pages:
        stem = os.path.splitext(os.path.basename(page))[0].lower()
        for number, (language, line, text) in enumerate(blocks(page), 1):
            name = "%s_%d" % (stem, number)
            if language == "cpp":
                tests += as_test(name, page, line, text)
                program = text
                continue
            if language == "text":
                if text != promised_by(program):
                    sys.exit("%s:%d: the program above prints something else" % (page, line))
                continue
            print("%s;%s" % (language, name))
            if language == "sh":
                write(os.path.join(output, name), "script.sh", text)
            elif language == "cmake":
                write(os.path.join(output, name), "CMakeLists.txt", text)
                write(os.path.join(output, name), program.split("\n")[0][3:], program)
    write(output, "blocks_test.cpp", tests)


main()
