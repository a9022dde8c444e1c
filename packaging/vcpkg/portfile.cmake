# An overlay port that builds the sources it lies in: vcpkg install tqosbase --overlay-ports=packaging/vcpkg
get_filename_component(SOURCE_PATH "${CMAKE_CURRENT_LIST_DIR}/../.." ABSOLUTE)

vcpkg_cmake_configure(
  SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS
    -DTQ_BUILD_TESTS=OFF
    -DTQ_BUILD_EXAMPLES=OFF
    -DTQ_BUILD_FUZZ=OFF
    -DTQ_INSTALL=ON)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME TqOsBase CONFIG_PATH lib/cmake/TqOsBase)
vcpkg_fixup_pkgconfig()

# Both libraries stay, whatever the triplet: the CMake package names both, and on these systems a program takes the one
# that it links.
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/COPYRIGHT")
