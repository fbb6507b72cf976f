# Cross building for macOS with Zig, for the processor PELION_CORE_PROCESSOR: aarch64 or x86_64. Its
# clang brings Apple's headers and the stubs to link with; the programs run on a Mac alone.

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES PELION_CORE_PROCESSOR)
set(CMAKE_SYSTEM_PROCESSOR ${PELION_CORE_PROCESSOR})
set(zig ${CMAKE_CURRENT_LIST_DIR}/../tools/zig.sh)
set(CMAKE_CXX_COMPILER ${zig} c++ -target ${PELION_CORE_PROCESSOR}-macos)
set(CMAKE_CXX_ARCHIVE_CREATE "${zig} ar qc <TARGET> <LINK_FLAGS> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_FINISH "${zig} ranlib <TARGET>")

set(CMAKE_FIND_ROOT_PATH ${CMAKE_CURRENT_LIST_DIR}/../build/cross_headers)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(Boost_INCLUDE_DIR ${CMAKE_FIND_ROOT_PATH} CACHE PATH "Folder of headers for every system")
