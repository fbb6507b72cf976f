# For a cross build whose sysroot lacks them: the system's own headers must not be seen, so libraries
# that are headers alone get a folder that holds nothing else.
get_property(checking GLOBAL PROPERTY IN_TRY_COMPILE)
if(NOT checking)
  set(headers ${CMAKE_BINARY_DIR}/headers)
  file(MAKE_DIRECTORY ${headers})
  foreach(library boost CLI nlohmann)
    file(CREATE_LINK /usr/include/${library} ${headers}/${library} SYMBOLIC)
  endforeach()
  set(Boost_INCLUDE_DIR ${headers} CACHE PATH "Folder that holds only headers for every system")
endif()
