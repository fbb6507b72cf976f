# The binary interface under guard: what the loader and packagers read in the library, the names that
# it exports, and the types behind them. `cmake --build BUILD --target update_abi` takes the present
# names and types as the new baseline; `c++filt < symbols.txt` shows what the names mean.
add_test(NAME install.not_linked_against_python
         COMMAND ${CMAKE_OBJDUMP} --private-headers $<TARGET_FILE:pelion_core>)
set_tests_properties(install.not_linked_against_python PROPERTIES
  LABELS install
  PASS_REGULAR_EXPRESSION "NEEDED[^\n]*libc\\.so|DLL Name: KERNEL32"
  FAIL_REGULAR_EXPRESSION "(NEEDED|DLL Name)[^\n]*python;RPATH;RUNPATH")

if(PELION_CORE_SANITIZE)
  return()
endif()

function(abi_test name)
  add_test(NAME install.abi.${name} COMMAND ${ARGN})
  set_tests_properties(install.abi.${name} PROPERTIES LABELS install TIMEOUT 120)
endfunction()

string(TOLOWER ${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR} platform)
set(baseline ${PROJECT_SOURCE_DIR}/packaging/abi/${platform})
if(NOT EXISTS ${baseline})
  message(STATUS "Left out the tests of the binary interface: there is no baseline for ${platform}")
  return()
endif()

set(library $<TARGET_FILE:pelion_core>)
set(names "${CMAKE_NM} -D --defined-only --format=posix ${library} | cut -d ' ' -f 1 | LC_ALL=C sort")
if(WIN32)
  set(names "${CMAKE_OBJDUMP} -p ${library} | sed -n 's/^\\t\\[ *[0-9]*\\] \\(+base\\[ *[0-9]*\\]  [0-9a-f]* \\)\\?\\([^ ]*\\)$/\\2/p'")
endif()
abi_test(Symbols sh -c "${names} | diff ${baseline}/symbols.txt -")
add_custom_target(update_abi sh -c "${names} > ${baseline}/symbols.txt" VERBATIM)
add_dependencies(update_abi pelion_core)
if(WIN32)
  return()
endif()

abi_test(EveryFunctionIsInTheTable ${CMAKE_CURRENT_SOURCE_DIR}/every_function.sh
  ${library} ${PROJECT_SOURCE_DIR}/tests/support/every_function.h)
abi_test(Dynamic readelf --dynamic --wide ${library})
set_tests_properties(install.abi.Dynamic PROPERTIES
  PASS_REGULAR_EXPRESSION "\\[libpelion_core\\.so\\.0\\].*BIND_NOW"
  FAIL_REGULAR_EXPRESSION "TEXTREL;NEEDED[^\n]*\\[libboost")
abi_test(DlopenNote readelf --string-dump=.note.dlopen ${library})
set_tests_properties(install.abi.DlopenNote PROPERTIES  # every version, the best first
  PASS_REGULAR_EXPRESSION "python3\\.15.*3\\.14.*3\\.13.*3\\.12.*3\\.11.*3\\.10.*3\\.9.*3\\.8.*3\\.7m.*3\\.6m[^,]*\\]\\}\\]")

# Types are compared on an unoptimised library: what the optimiser at link time leaves of the debug
# information is not enough.
get_target_property(sources pelion_core SOURCES)
list(TRANSFORM sources PREPEND ${PROJECT_SOURCE_DIR}/src/)
add_library(pelion_core_described SHARED ${sources})
pelion_compile(pelion_core_described)
target_compile_options(pelion_core_described PRIVATE -O0 -g)
target_compile_definitions(pelion_core_described PRIVATE PELION_CORE_BUILDING)
target_include_directories(pelion_core_described PRIVATE
  ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(pelion_core_described PRIVATE Boost::headers ${CMAKE_DL_LIBS})
target_link_options(pelion_core_described PRIVATE
  -Wl,--version-script=${PROJECT_SOURCE_DIR}/src/exports.map)
set_target_properties(pelion_core_described PROPERTIES
  CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)

# Additions pass.
set(foreign --suppressions ${CMAKE_CURRENT_SOURCE_DIR}/foreign.ini)
set(interfaces ${baseline}/interfaces.abi)
abi_test(Interfaces
  abidiff --no-added-syms ${foreign} ${interfaces} $<TARGET_FILE:pelion_core_described>)
add_dependencies(update_abi pelion_core_described)
add_custom_command(TARGET update_abi POST_BUILD
  COMMAND abidw --exported-interfaces-only --no-corpus-path --no-comp-dir-path --no-show-locs
          --no-parameter-names --no-elf-needed --no-write-default-sizes --type-id-style hash
          ${foreign} --out-file ${interfaces} $<TARGET_FILE:pelion_core_described>
  # Where the sources lay does not matter.
  COMMAND sed -i "s| path='[^']*/src/| path='src/|" ${interfaces}
  VERBATIM)
