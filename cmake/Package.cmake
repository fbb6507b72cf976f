# `cpack` makes an archive of the installed tree or, of a build for /usr, Debian packages: for running,
# for building, and with the program. There the libraries lie in the folder of their architecture.

set(CPACK_PACKAGE_VENDOR "The pelion_core developers")
set(CPACK_PACKAGE_CONTACT ${CPACK_PACKAGE_VENDOR})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime dev)
if(TARGET pelion)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_GENERATOR TGZ)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
elseif(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(CPACK_GENERATOR DEB)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
find_program(PELION_CORE_SHLIBDEPS dpkg-shlibdeps)
mark_as_advanced(PELION_CORE_SHLIBDEPS)

set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Shared library, loads the Python runtime a host names.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libpelion-core0)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS
  "libpython3.11 | libpython3.12 | libpython3.13 | libpython3.14 | libpython3.15")
# The program needs the library, which lies in another of these packages.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
if(PELION_CORE_SHLIBDEPS)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
endif()

set(CPACK_COMPONENT_TOOLS_DESCRIPTION "Finds the Pythons of a machine, and says what is wrong with one.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME pelion)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libpelion-core0 (= ${PROJECT_VERSION})")
if(PELION_CORE_SHLIBDEPS)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
endif()

set(CPACK_COMPONENT_DEV_DESCRIPTION "Headers, and what CMake and pkg-config need to find them.")
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libpelion-core-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
  "libpelion-core0 (= ${PROJECT_VERSION}), libboost-dev (>= 1.71)")

include(CPack)
