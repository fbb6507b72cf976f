#!/usr/bin/env bash
# arm64.sh: cross-builds this checkout for arm64 and runs the tests in an arm64 Debian 12, with its
# Python, NumPy and pandas, under QEMU.
#
# Needs root, Debian's cross compiler and QEMU, which it lets the kernel start arm64 programs with.
# The system lies in build/arm64-root and is made anew every time; none of its packages' scripts run.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source tools/debian_root.sh

root=$PWD/build/arm64-root
build=$PWD/build/arm64
start=$SECONDS
make_root bookworm "$root" --variant=extract --architectures=arm64 \
  --include=bash,dash,coreutils,diffutils,grep,sed,cmake,binutils,python3,python3-venv \
  --include=libpython3.11,python3-numpy,python3-pandas,python3-matplotlib
# The alternatives, which only the packages' scripts would choose.
for library in blas lapack; do
  ln -s "$library/lib$library.so.3" "$root/usr/lib/aarch64-linux-gnu/lib$library.so.3"
done
mkdir -p "$root/tmp" "$root/root"
echo "Debian for arm64: unpacked after $((SECONDS - start)) s"

formats=/proc/sys/fs/binfmt_misc
[[ -e $formats/register ]] || mount -t binfmt_misc none "$formats"
[[ -e $formats/qemu-aarch64 ]] || cat /usr/lib/binfmt.d/qemu-aarch64.conf >"$formats/register"
interpreters=$(inside "$root" 'python3 tools/find_interpreters.py /usr/bin/python3')
echo "tested on $interpreters"

start=$SECONDS
cmake -S . -B "$build" -G Ninja --toolchain cmake/aarch64.cmake -D CMAKE_BUILD_TYPE=RelWithDebInfo \
  -D PELION_CORE_WERROR=ON -D PELION_FOUND_INTERPRETERS="$interpreters" >"$build.log" ||
  { cat "$build.log" && exit 1; }
cmake --build "$build" --parallel "$(nproc)"
echo "built for arm64 after $((SECONDS - start)) s"

# Left out: what needs this machine's compiler and tools, and the doctor's test of a program that is not
# there, since under QEMU posix_spawn does not say so.
not_there='docs[.](readme_2|floors|matrix|reference)$|:doctor$'
# The tests of the binary interface only read files, on this machine; all else runs there.
ctest --test-dir "$build/tests/install" --output-on-failure
step "$root" "$build-test.log" "tested on arm64" "ctest --test-dir '$build' --output-on-failure \
  --parallel $(nproc) --timeout 1200 --label-exclude '^install$' --exclude-regex '$not_there'"
grep 'tests passed' "$build-test.log"
