#!/usr/bin/env bash
# cross_headers.sh: makes the folder of headers that serve every system, build/cross_headers, and
# prints its name. Boost is of Debian 13, since that of Debian 12 is too old for today's clang.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

place=$PWD/build/cross_headers
if [[ ! -e $place/boost ]]; then
  echo "==> fetching Boost's headers of Debian 13" >&2
  command -v mmdebstrap >/dev/null || {
    echo "cross_headers: install mmdebstrap" >&2
    exit 1
  }
  rm -rf "$place" build/debian13
  mmdebstrap --quiet --variant=extract --include=libboost1.83-dev \
    --aptopt='Acquire::Check-Valid-Until "false"' \
    --dpkgopt='path-exclude=*' --dpkgopt='path-include=/usr/include/boost/*' \
    trixie build/debian13 "$(tools/debian_mirror.sh)" >&2
  mkdir -p "$place"
  # The system's own headers must not be seen.
  for library in CLI nlohmann; do ln -s "/usr/include/$library" "$place/$library"; done
  mv build/debian13/usr/include/boost "$place/boost"
  rm -rf build/debian13
fi
echo "$place"
