#!/usr/bin/env bash
# fresh_debian.sh COMMAND...: runs each command in a clone of this checkout's HEAD on a minimal
# Debian 12, where nothing is installed that the project does not install itself: no compiler, no
# make, no Python. Stops at the first failure; says the status and the time of each.
#
# Needs root. The system lies in build/fresh and is made anew every time.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source tools/debian_root.sh

place=$PWD/build/fresh
make_root bookworm "$place/root" --variant=minbase --include=ca-certificates,git
clone_into "$place/root"
number=0
for command in "$@"; do
  number=$((number + 1))
  step "$place/root" "$place/$number.log" "$command" "$command"
done
