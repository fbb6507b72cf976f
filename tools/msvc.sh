#!/usr/bin/env bash
# msvc.sh [SOURCE...]: compiles the library, the front door and pelion, or some of their
# sources, as Microsoft's compiler reads them: clang for its binary interface, with _MSC_VER defined,
# over the headers of Windows that come with Zig. Nothing is linked or run.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

place=build/msvc_check
rm -rf "$place"
mkdir -p "$place"
headers=$(tools/cross_headers.sh)
for script in src/host/*.py; do  # as src/host/CMakeLists.txt has them
  printf 'R"python(%s\n)python"\n' "$(<"$script")" >"$place/$(basename "$script" .py)_py.h"
done
zig=$(tools/zig.sh env | sed -n 's/.*lib_dir = "\(.*\)".*/\1/p')

flags=(
  -target x86_64-windows-msvc -std=c++17 -O1
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -Wno-unused-command-line-argument
  # The headers are those of MinGW-w64, which ask for their own name and for GCC.
  -fgnuc-version=4.2.1 -D__MINGW32__ -D__MINGW64__ -D_UCRT -D_LIBCPP_NO_VCRUNTIME
  -isystem "$zig/libc/include/any-windows-any" -isystem "$headers"
  -DBOOST_ALL_NO_LIB -DPELION_VERSION='"0"' -Iinclude -Isrc -Isrc/host -I"$place")

compile() {
  local source=$1 building=()
  shift
  [[ $source != src/* || $source == src/host/* ]] || building=(-DPELION_CORE_BUILDING)
  tools/zig.sh c++ "$@" "${building[@]}" -c "$source" -o "$place/${source//\//.}.obj" || {
    echo "failed: $source" >&2
    return 1
  }
}
export -f compile
export place

[[ $# -gt 0 ]] || mapfile -t sources < <(find src tools/pelion -name '*.cpp' \
  ! -name '*_posix.cpp' ! -name '*_elf.cpp' ! -name '*_macos.cpp' | sort)
[[ $# -eq 0 ]] || sources=("$@")
printf '%s\0' "${sources[@]}" |
  xargs -0 -P "$(nproc)" -I{} bash -c 'compile "$@"' - {} "${flags[@]}"
echo "${#sources[@]} sources compiled for Microsoft's binary interface"
