#!/usr/bin/env bash
# debian_mirror.sh: prints the mirror that this machine uses, in whichever of the two files names it.
set -euo pipefail

sources=$(cat /etc/apt/sources.list /etc/apt/sources.list.d/debian.sources 2>/dev/null || true)
mirror=$(awk '/^(deb|URIs:) .*http/ && !/security/ {print $2; exit}' <<<"$sources")
echo "${mirror:-http://deb.debian.org/debian}"
