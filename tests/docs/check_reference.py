"""Makes the reference: any warning fails it, and so does a namespace without a comment, of whose
names Doxygen would say nothing.

    check_reference.py DOXYGEN DOXYFILE OUTPUT HEADERS
"""
import glob
import os
import re
import subprocess
import sys

doxygen, doxyfile, output, headers = sys.argv[1:]
os.makedirs(output, exist_ok=True)
with open(doxyfile, encoding="utf-8") as file:
    settings = file.read() + '\nOUTPUT_DIRECTORY = "%s"\n' % output
for page in glob.glob(os.path.join(output, "namespace*.html")):
    os.remove(page)
status = subprocess.run([doxygen, "-"], input=settings.encode()).returncode
names = set()
for header in glob.glob(os.path.join(headers, "**", "*.h"), recursive=True):
    with open(header, encoding="utf-8") as file:
        names.update(re.findall(r"^namespace ([a-z_:]+) \{", file.read(), re.MULTILINE))
pages = {name: name.replace("_", "__").replace("::", "_1_1") for name in names}
silent = [name for name, page in pages.items()
          if not os.path.exists(os.path.join(output, "namespace%s.html" % page))]
print("%d namespaces, without a comment: %s" % (len(names), silent))
sys.exit(status or not names or bool(silent))
