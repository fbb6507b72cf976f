"""Turns the fenced code blocks of the documentation into what the tests build and run.

    extract_blocks.py FOLDER PAGE...

A ```cpp block with a `main` is a whole program; any other is the body of a function that runs in a
loaded interpreter, with the library's namespaces at hand. A line that prints and ends in a comment,
`std::cout << 1 + 1 << '\\n';  // 2`, promises what it prints. ```sh is a script for an empty folder,
```cmake a project around the program that stands before it and is named by its first line.

Writes blocks.cpp and a folder for each script and project, and prints a line `kind;name` for each.
"""
import os
import re
import sys

KINDS = ("cpp", "sh", "cmake")
PROMISE = re.compile(r"std::cout <<.*<< '\\n';\s*// (.*)$", re.MULTILINE)


def blocks(page):
    """(language, first line, text) of each fenced block."""
    with open(page, encoding="utf-8") as file:
        lines = file.read().split("\n")
    starts = [i for i, line in enumerate(lines) if line.startswith("```")]
    for begin, end in zip(starts[::2], starts[1::2]):
        language = lines[begin][3:]
        if language not in KINDS:
            sys.exit("%s:%d: no test for a block in '%s'" % (page, begin + 1, language))
        yield language, begin + 2, "\n".join(lines[begin + 1:end]) + "\n"


def as_function(name, page, line, text):
    is_program = "int main()" in text
    body = '#line %d "%s"\n%s' % (line, page, text)
    if is_program:
        body = body.replace("int main()", "int block()").rstrip()[:-1] + "  return 0;\n}\n"
    else:
        body = ("using namespace pelion_core;\nusing namespace pelion_core::api;\n"
                "void block() {\n%s}\n" % body)
    includes = re.findall(r"^#include .*\n", body, re.MULTILINE)
    body = re.sub(r"^#include .*$", "", body, flags=re.MULTILINE)
    promised = "".join(found + "\n" for found in PROMISE.findall(text))
    run = "&%s::block, nullptr" if is_program else "nullptr, &%s::block"
    entry = '    {"%s", R"-(%s)-", %s},\n' % (name, promised, run % name)
    return includes, "namespace %s {\n%s}\n\n" % (name, body), entry, is_program


def write(folder, name, text):
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
        file.write(text)


def main():
    output, pages = sys.argv[1], sys.argv[2:]
    includes, functions, entries = {"#include <pelion_core/pelion_core.h>\n",
                                    "#include <iostream>\n"}, "", ""
    for page in pages:
        stem = os.path.splitext(os.path.basename(page))[0].lower()
        program = ""
        for number, (language, line, text) in enumerate(blocks(page), 1):
            name = "%s_%d" % (stem, number)
            kind = language
            if language == "cpp":
                found, function, entry, is_program = as_function(name, page, line, text)
                includes.update(found)
                functions += function
                entries += entry
                kind = "program" if is_program else "fragment"
                program = text if is_program else program
            elif language == "sh":
                write(os.path.join(output, name), "script.sh", text)
            else:
                write(os.path.join(output, name), "CMakeLists.txt", text)
                write(os.path.join(output, name), program.split("\n")[0][3:], program)
            print("%s;%s" % (kind, name))
    write(output, "blocks.cpp", "".join(sorted(includes)) + '#include "run_block.h"\n\n' + functions +
          "const std::vector<Block>& allBlocks() {\n  static const std::vector<Block> blocks = {\n" +
          entries + "  };\n  return blocks;\n}\n")


if __name__ == "__main__":
    main()
