"""Checks that each message that the troubleshooting page explains is one that the library throws.

    check_messages.py PAGE SOURCES
"""
import glob
import os
import re
import sys

page, sources = sys.argv[1:]
with open(page, encoding="utf-8") as file:
    messages = re.findall(r'^### "(.*)"', file.read(), re.MULTILINE)
paths = glob.glob(os.path.join(sources, "**", "*.*"), recursive=True)
code = "".join(open(path, encoding="utf-8").read() for path in paths)
unknown = [message for message in messages if '"%s"' % message not in code]
print("%d messages, not thrown: %s" % (len(messages), unknown))
sys.exit(not messages or bool(unknown))
