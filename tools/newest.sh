#!/usr/bin/env bash
# newest.sh: builds a clone of this checkout's HEAD in Debian's unstable suite, with each of its
# compilers and with warnings as errors, and runs the tests on every CPython that it has, debug builds
# too. FREE_THREADED=1 adds a free-threaded one, which is built from Debian's source.
#
# Needs root. The system lies in build/newest and is made anew every time.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source tools/debian_root.sh

place=$PWD/build/newest
root=$place/root
start=$SECONDS
make_root sid "$root" --variant=minbase --skip=cleanup/apt/lists \
  --include=ca-certificates,g++,clang,lld,cmake,ninja-build,binutils,libboost-dev,libcli11-dev \
  --include=nlohmann-json3-dev,libgtest-dev,python3,python3-numpy,python3-pandas,python3-matplotlib
clone_into "$root"
echo "Debian unstable: made after $((SECONDS - start)) s"

# The version of /usr/bin/python3 is found without being named.
step "$root" "$place/pythons.log" "its Pythons" '
  packages= pythons=
  versions=$(apt-cache pkgnames python3. | sed -n "s/^python\(3[.][0-9]*\)-dbg$/\1/p" | sort -V)
  for version in $versions; do packages+=" python$version-dbg python$version-venv libpython$version"; done
  apt-get install -q -y --no-install-recommends $packages
  own=$(readlink /usr/bin/python3)
  for version in $versions; do
    [[ python$version == "$own" ]] || pythons+=" /usr/bin/python$version"
    pythons+=" /usr/bin/python${version}d"
  done
  echo $pythons >/root/pythons'

# The newest free-threaded one that there is a source of, of the testing suite. Without Debian's
# patches, whose site module looks for packages in the folder of the other build.
if [[ -n ${FREE_THREADED-} ]]; then
  step "$root" "$place/free_threaded.log" "a free-threaded Python" '
    sed "s/ sid / testing /; s/^deb /deb-src /" /etc/apt/sources.list >/etc/apt/sources.list.d/testing.list
    apt-get update -q
    apt-get install -q -y --no-install-recommends dpkg-dev make libffi-dev libssl-dev zlib1g-dev
    cd /root
    apt-get source -q --download-only python3.13
    dpkg-source --skip-patches -x python3.13_*.dsc python
    cd python
    ./configure -q --prefix=/opt/free-threaded --disable-gil --enable-shared
    make -s -j "$(nproc)"
    make -s install
    echo /opt/free-threaded/lib >/etc/ld.so.conf.d/free-threaded.conf
    ldconfig
    echo /opt/free-threaded/bin/python3.13t >>/root/pythons'
fi

settings='export PELION_TEST_PYTHONS=$(cat /root/pythons)'
step "$root" "$place/environments.log" "NumPy and pandas for each" "$settings
  python3 tools/find_interpreters.py --environments build/environments --install"
cut -d ';' -f 1 "$place/environments.log" | grep '^3' | paste -sd ' '

for compiler in g++ clang++; do
  build=build/${compiler%++}
  linker=bfd
  [[ $compiler == g++ ]] || linker=lld
  step "$root" "$place/build-$compiler.log" "built with $compiler" "$settings
    cmake -S . -B $build -G Ninja -D CMAKE_CXX_COMPILER=$compiler -D PELION_CORE_WERROR=ON \
      -D CMAKE_BUILD_TYPE=RelWithDebInfo -D CMAKE_SHARED_LINKER_FLAGS=-fuse-ld=$linker
    cmake --build $build"
  # What the installed tree and the binary interface are compared with was made on Debian 12. Debug
  # builds end the process over calls from several threads and over calls with an error pending, see
  # docs/versions.md.
  step "$root" "$place/test-$compiler.log" "tested with $compiler" "$settings
    ctest --test-dir $build --output-on-failure --parallel 2 --label-exclude '^(fuzz|install)$' \
      --exclude-regex 'debug:(host.Session.HostThreadsTakeTurns|robustness.faults)'"
  grep 'tests passed' "$place/test-$compiler.log"
done
