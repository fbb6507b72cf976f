# An overlay port for the checkout it lies in:
#   vcpkg install pelion-core --overlay-ports=packaging/vcpkg
vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY)

cmake_path(GET CURRENT_PORT_DIR PARENT_PATH SOURCE_PATH)
cmake_path(APPEND SOURCE_PATH ../..)
cmake_path(NORMAL_PATH SOURCE_PATH)

vcpkg_cmake_configure(
  SOURCE_PATH ${SOURCE_PATH}
  OPTIONS -DPELION_CORE_TESTS=OFF -DPELION_CORE_EXAMPLES=OFF
          -DPELION_CORE_PROGRAM=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(CONFIG_PATH lib/cmake/pelion_core)
vcpkg_fixup_pkgconfig()
vcpkg_copy_pdbs()
file(REMOVE_RECURSE ${CURRENT_PACKAGES_DIR}/debug/include)
