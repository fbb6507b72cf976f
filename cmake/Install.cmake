# `cmake --install` gives a host the headers, the libraries and what find_package and pkg-config need.

option(PELION_CORE_INSTALL "Make rules to install the library" ${PROJECT_IS_TOP_LEVEL})
if(NOT PELION_CORE_INSTALL)
  return()
endif()

include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/pelion_core)
set(generated ${PROJECT_BINARY_DIR}/install)

install(TARGETS pelion_core pelion_core_host EXPORT pelion_core
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
if(TARGET pelion)
  install(TARGETS pelion RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  if(NOT WIN32)
    install(FILES ${PROJECT_SOURCE_DIR}/tools/pelion/pelion.1 COMPONENT tools
      DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES ${PROJECT_SOURCE_DIR}/tools/pelion/completion.bash COMPONENT tools RENAME pelion
      DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  endif()
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/pelion_core
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)

install(EXPORT pelion_core NAMESPACE pelion_core:: FILE pelion_core-targets.cmake
  DESTINATION ${package_dir} COMPONENT dev)
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/pelion_core-config.cmake.in ${generated}/pelion_core-config.cmake
  INSTALL_DESTINATION ${package_dir} NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
# The ABI number follows the major version.
write_basic_package_version_file(
  ${generated}/pelion_core-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${generated}/pelion_core-config.cmake ${generated}/pelion_core-config-version.cmake
  DESTINATION ${package_dir} COMPONENT dev)

# The folders are relative to the file, so that an installed tree can be moved; one that was set to
# an absolute path stays absolute.
cmake_path(SET pc_prefix "\${pcfiledir}")
file(RELATIVE_PATH up ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
cmake_path(APPEND pc_prefix ${up})
cmake_path(APPEND pc_libdir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND pc_includedir "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
foreach(name pelion_core pelion_core_host)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${name}.pc.in ${generated}/${name}.pc @ONLY)
  install(FILES ${generated}/${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endforeach()
