#!/usr/bin/env bash
# macos.sh: builds the library, pelion and the examples for macOS, for both of its processors, with
# warnings as errors. Nothing is run, which takes a Mac; and Zig's linker exports every visible
# symbol, whatever the list says.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

tools/cross_headers.sh >/dev/null
for processor in aarch64 x86_64; do
  start=$SECONDS
  build=build/macos-$processor
  echo "==> building for macOS on $processor"
  cmake -S . -B "$build" -G Ninja --toolchain cmake/macos.cmake \
    -D PELION_CORE_PROCESSOR="$processor" -D CMAKE_BUILD_TYPE=RelWithDebInfo \
    -D PELION_CORE_WERROR=ON -D PELION_CORE_TESTS=OFF >"$build.log" || {
    cat "$build.log"
    exit 1
  }
  cmake --build "$build" --parallel "$(nproc)"
  [[ -f $build/src/libpelion_core.dylib ]]
  echo "built for macOS on $processor after $((SECONDS - start)) s"
done
