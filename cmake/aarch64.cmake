# Cross building for Linux on arm64 with Debian's compiler. What it makes runs under QEMU.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

set(CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
include(${CMAKE_CURRENT_LIST_DIR}/cross_headers.cmake)

# How GCC 10 changed the passing of some classes concerns only who mixes objects of older ones.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
