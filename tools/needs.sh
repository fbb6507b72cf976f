# What each command of ./run needs, and how it comes onto the machine. Sourced by it.
#
# An entry is "package=probe": the Debian package to install when the probe fails.

# The system's own interpreter, the one that Debian's Python packages belong to.
python=/usr/bin/python3

build_needs=(
  cmake=command:cmake ninja-build=command:ninja "g++=command:c++"
  libboost-dev=header:boost/version.hpp libcli11-dev=header:CLI/CLI.hpp
  nlohmann-json3-dev=header:nlohmann/json.hpp libgtest-dev=header:gtest/gtest.h
  "python3=command:$python" doxygen=command:doxygen
  doxygen-awesome-css=file:/usr/share/doxygen-awesome-css/doxygen-awesome.css
  abigail-tools=command:abidiff pkg-config=command:pkg-config binutils=command:readelf)
python_needs=(
  libpython=runtime python3-venv=module:ensurepip python3-numpy=module:numpy
  python3-pandas=module:pandas python3-matplotlib=module:matplotlib)
test_needs=(
  valgrind=command:valgrind clang=command:clang++ libc++-dev=file:/usr/include/c++/v1
  libc++abi-dev=file:/usr/lib/x86_64-linux-gnu/libc++abi.so)
windows_needs=(
  g++-mingw-w64-x86-64-posix=command:x86_64-w64-mingw32-g++-posix
  wine64=file:/usr/lib/wine/wine64 wine=command:wine
  googletest=file:/usr/src/googletest/CMakeLists.txt)

arm64_needs=(
  g++-aarch64-linux-gnu=command:aarch64-linux-gnu-g++
  qemu-user-static=command:qemu-aarch64-static
  googletest=file:/usr/src/googletest/CMakeLists.txt)

# "name;version;library;program;home" of $python.
own_settings() { "$python" tools/find_interpreters.py "$python"; }

present() {
  local what=${1#*:}
  case $1 in
    command:*) command -v "$what" ;;
    header:*) echo "#include <$what>" | c++ -std=c++17 -x c++ -E - ;;
    module:*) "$python" -c "import importlib.util as u; exit(u.find_spec('$what') is None)" ;;
    file:*) [[ -e $what ]] ;;
    runtime) [[ -n $(own_settings) ]] ;;
  esac >/dev/null 2>&1
}

need() {
  local entry missing=()
  for entry in "$@"; do
    present "${entry#*=}" || missing+=("${entry%%=*}")
  done
  [[ ${#missing[@]} -eq 0 ]] || install_packages "${missing[@]}"
}

# The runtime library's package bears Python's version, which is known once there is a Python.
need_build() {
  local version
  need "${build_needs[@]}"
  version=$("$python" -c 'import sys; print("%d.%d" % sys.version_info[:2])')
  need "${python_needs[@]/#libpython/libpython$version}"
}

# The debug interpreter's library is libpython3.11d.so.1.0 in the package libpython3.11-dbg. Every
# interpreter found on this machine gets a virtual environment with NumPy and pandas.
need_tests() {
  local library
  need_build
  library=$(own_settings | cut -d ';' -f 3)
  library=${library/.so/d.so}
  need "${test_needs[@]}" "$(basename "${library%%d.so*}")-dbg=file:$library"
  say "looking for interpreters; NumPy and pandas for each go into build/environments"
  "$python" tools/find_interpreters.py --environments "$PWD/build/environments" --install
}

need_fuzz() {
  need_build
  need clang=command:clang++
  need "libclang-rt-dev=file:$(clang++ -print-file-name=libclang_rt.fuzzer-x86_64.a)"
}

install_packages() {
  local as_root=()
  command -v apt-get >/dev/null || fail "install these first, by their names on Debian: $*"
  if [[ $EUID -ne 0 ]]; then
    command -v sudo >/dev/null || fail "neither root nor sudo: have someone install $*"
    as_root=(sudo)
  fi
  say "installing $*"
  "${as_root[@]}" apt-get update -q
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -q -y --no-install-recommends "$@"
}

# A virtual environment under build/ with packages from PyPI, on top of the system's own packages.
virtual_environment() {
  local folder=build/environments/$1 package
  shift
  if [[ ! -x $folder/bin/python ]]; then
    say "creating the virtual environment $folder"
    "$python" -m venv --system-site-packages "$folder"
  fi
  for package in "$@"; do
    "$folder/bin/python" -c "import ${package%%=*}" 2>/dev/null && continue
    say "installing $package from PyPI into $folder"
    "$folder/bin/python" -m pip install -q --disable-pip-version-check "$package"
  done
}
