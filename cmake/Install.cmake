# `cmake --install` gives a host the headers, the library and what find_package and pkg-config need.

install(TARGETS pelion_core EXPORT pelion_core
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/pelion_core
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
