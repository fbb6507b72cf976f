# What is built, and how every target of the project is compiled.

option(PELION_CORE_PROGRAM "Build the program pelion" ${PROJECT_IS_TOP_LEVEL})
option(PELION_CORE_EXAMPLES "Build the example hosts" ${PROJECT_IS_TOP_LEVEL})
option(PELION_CORE_TESTS "Build the tests" ${PROJECT_IS_TOP_LEVEL})
option(PELION_CORE_BENCH "Build the benchmarks" OFF)
option(PELION_CORE_FUZZ "Build the fuzzers (clang)" OFF)
option(PELION_CORE_WERROR "Treat warnings as errors" OFF)
set(PELION_CORE_SANITIZE "" CACHE STRING "Sanitizers for every target, as -fsanitize takes them")

function(pelion_compile target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES
    CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF)
  # A product and a sum must round as they are written, on every machine.
  if(MSVC)
    target_compile_options(${target} PRIVATE
      /W4 /permissive- /utf-8 /Zc:__cplusplus /EHsc /fp:precise
      $<$<BOOL:${PELION_CORE_WERROR}>:/WX>)
    # Boost is used by its headers alone, which would name libraries to the linker.
    target_compile_definitions(${target} PRIVATE BOOST_ALL_NO_LIB)
  else()
    target_compile_options(${target} PRIVATE
      -Wall -Wextra -Wpedantic -Wconversion -Wshadow -ffp-contract=off
      $<$<BOOL:${PELION_CORE_WERROR}>:-Werror>)
  endif()
  if(PELION_CORE_FUZZ)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
  if(PELION_CORE_SANITIZE)
    set(flags -fsanitize=${PELION_CORE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(${target} PRIVATE ${flags})
    target_link_options(${target} PRIVATE ${flags})
  endif()
endfunction()

# Small calls are what a host makes most. Exported functions call each other and need not be
# replaceable, and the call frame is to inline into each of them.
function(pelion_optimise target)
  if(NOT MSVC)
    target_compile_options(${target} PRIVATE
      $<$<CXX_COMPILER_ID:GNU>:-fno-semantic-interposition>
      $<$<CONFIG:RelWithDebInfo>:-O3>)
  endif()
endfunction()

# pelion_keep_ours(variable): takes the sources for other systems out of a list, by the ends of their
# names.
function(pelion_keep_ours variable)
  set(others _win32 _posix _elf _macos)
  if(WIN32)
    list(REMOVE_ITEM others _win32)
  elseif(APPLE)
    list(REMOVE_ITEM others _posix _macos)
  else()
    list(REMOVE_ITEM others _posix _elf)
  endif()
  list(JOIN others "|" others)
  list(FILTER ${variable} EXCLUDE REGEX "(${others})\\.cpp$")
  set(${variable} ${${variable}} PARENT_SCOPE)
endfunction()

# pelion_find_headers(package version): a library of headers alone, as package::package. A cross build
# has them beside Boost's.
macro(pelion_find_headers package version)
  if(NOT CMAKE_CROSSCOMPILING)
    find_package(${package} ${version} REQUIRED)
  elseif(NOT TARGET ${package}::${package})
    add_library(${package}::${package} INTERFACE IMPORTED)
  endif()
endmacro()
