#!/usr/bin/env bash
# zig.sh ARGUMENT...: runs Zig, whose clang and headers build for systems that this machine is not.
# From PyPI, into build/zig.
set -euo pipefail

build=$(dirname "$(dirname "$(realpath "${BASH_SOURCE[0]}")")")/build
zig() { echo "$build"/zig/lib/python3*/site-packages/ziglang/zig; }
if [[ ! -x $(zig) ]]; then
  echo "==> installing ziglang from PyPI into build/zig" >&2
  /usr/bin/python3 -m venv "$build/zig"
  "$build/zig/bin/python" -m pip install -q --disable-pip-version-check ziglang==0.17.1
fi
export ZIG_GLOBAL_CACHE_DIR=$build/zig-cache
exec "$(zig)" "$@"
