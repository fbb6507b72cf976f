# Finds the interpreters that the tests drive, one name|version|library|program|home each: those of
# major version 3 into PELION_TEST_INTERPRETERS, older ones into PELION_REFUSED_INTERPRETERS. Finding
# none is an error where one could be had.

if(WIN32)
  # PELION_WINDOWS_PYTHON in the environment: folders of Windows Pythons. Wine shows the file system
  # as drive Z.
  set(libraries $ENV{PELION_WINDOWS_PYTHON})
  list(TRANSFORM libraries APPEND /python3?*.dll)
  file(GLOB libraries ${libraries})
  foreach(library IN LISTS libraries)
    string(REGEX REPLACE ".*/python3([0-9]+)[.]dll" "3.\\1" version ${library})
    cmake_path(GET library PARENT_PATH home)
    string(APPEND found
      "${version}-windows;${version};Z:${library};Z:${home}/python.exe;Z:${home}\n")
  endforeach()
  if(NOT found)
    message(STATUS "Left out the tests on a real Python: PELION_WINDOWS_PYTHON names none")
  endif()
else()
  find_program(PELION_PYTHON3 python3 REQUIRED)
  set(PELION_FOUND_INTERPRETERS "" CACHE STRING
      "For a cross build: what tools/find_interpreters.py prints where the tests will run")
  set(PELION_TEST_ENVIRONMENTS ${PROJECT_SOURCE_DIR}/build/environments CACHE PATH
      "Virtual environments with NumPy and pandas, one for each interpreter")
  set(found "${PELION_FOUND_INTERPRETERS}")
  if(NOT CMAKE_CROSSCOMPILING)
    execute_process(
      COMMAND ${PELION_PYTHON3} ${PROJECT_SOURCE_DIR}/tools/find_interpreters.py
              --environments ${PELION_TEST_ENVIRONMENTS}
      OUTPUT_VARIABLE found COMMAND_ERROR_IS_FATAL ANY)
  endif()
  if(NOT found)
    message(FATAL_ERROR "No Python with a shared runtime library was found: install libpython3-dev.")
  endif()
endif()
string(STRIP "${found}" found)
string(REPLACE ";" "|" found "${found}")
string(REPLACE "\n" ";" found "${found}")
set(PELION_TEST_INTERPRETERS ${found})
list(FILTER PELION_TEST_INTERPRETERS INCLUDE REGEX "^3\\.")
if(PELION_CORE_SANITIZE AND NOT CMAKE_CROSSCOMPILING)
  # Under the sanitizers, which look at our code, three stand for all: the first, which has the packages
  # of the examples, the oldest, and the newest.
  set(sorted ${PELION_TEST_INTERPRETERS})
  list(SORT sorted COMPARE NATURAL)
  list(GET PELION_TEST_INTERPRETERS 0 first)
  list(GET sorted 0 oldest)
  list(GET sorted -1 newest)
  set(PELION_TEST_INTERPRETERS ${first} ${oldest} ${newest})
  list(REMOVE_DUPLICATES PELION_TEST_INTERPRETERS)
endif()
set(PELION_REFUSED_INTERPRETERS ${found})
list(FILTER PELION_REFUSED_INTERPRETERS EXCLUDE REGEX "^3\\.")

# What CTest is told of a test on an interpreter, given as version|library|program|home.
set(pelion_empty_folder ${PROJECT_BINARY_DIR}/empty)
file(MAKE_DIRECTORY ${pelion_empty_folder})
function(pelion_python_properties result interpreter)
  set(${result} TIMEOUT 300 ENVIRONMENT "PELION_TEST_PYTHON=${interpreter}" PARENT_SCOPE)
endfunction()

# pelion_python_test(name label interpreter command...): leaves out by the exit code 77.
function(pelion_python_test name label interpreter)
  add_test(NAME ${name} COMMAND ${ARGN} WORKING_DIRECTORY ${pelion_empty_folder})
  pelion_python_properties(properties "${interpreter}")
  set_tests_properties(${name} PROPERTIES LABELS ${label} SKIP_RETURN_CODE 77 ${properties})
endfunction()

# pelion_interpreter_of(line name interpreter): the two halves of an entry of the list.
function(pelion_interpreter_of line name interpreter)
  string(REGEX MATCH "^([^|]*)[|](.*)" ignored "${line}")
  set(${name} ${CMAKE_MATCH_1} PARENT_SCOPE)
  set(${interpreter} "${CMAKE_MATCH_2}" PARENT_SCOPE)
endfunction()
