#!/bin/sh
# every_function.sh LIBRARY TABLE: each function that the library exports is called by the table of the
# faults and the soak.
set -eu
# Functions by their prefix, and constructors.
names=$(nm -DC --defined-only "$1" |
        grep -oP 'pelion_core::api::.*?\K\b((py|get_)\w+(?=[(\[])|(\w+)(?=::\3\())' | sort -u | grep -vx pyClose)
test "$(echo "$names" | wc -l)" -gt 100
for name in $names; do
  grep -q "F(.*\b$name[({]" "$2" || missing="${missing-} $name"
done
test -z "${missing-}" || { echo "Not in $2:$missing"; exit 1; }
