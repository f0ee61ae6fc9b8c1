# An overlay port, kept with the sources that it builds:
#   vcpkg install vantorium --overlay-ports=packaging/vcpkg
get_filename_component(SOURCE_PATH "${CURRENT_PORT_DIR}/../../.." ABSOLUTE)

# A triplet has one kind of libraries.
if(VCPKG_LIBRARY_LINKAGE STREQUAL "dynamic")
  set(kind shared)
else()
  set(kind static)
endif()
vcpkg_check_features(OUT_FEATURE_OPTIONS feature_options FEATURES gtk VANTORIUM_GTK)
vcpkg_find_acquire_program(PKGCONFIG)

vcpkg_cmake_configure(
  SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS
    ${feature_options}
    "-DPKG_CONFIG_EXECUTABLE=${PKGCONFIG}"
    -DVANTORIUM_INSTALL_KINDS=${kind}
    -DVANTORIUM_TOOLS=OFF
    -DVANTORIUM_TESTS=OFF
    -DVANTORIUM_BENCH=OFF
    -DVANTORIUM_WERROR=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(CONFIG_PATH lib/cmake/vantorium)
vcpkg_fixup_pkgconfig()

file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share"
                    "${CURRENT_PACKAGES_DIR}/share/doc")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
