# What `cmake --install` puts where. The components are named after the Debian packages that carry them.
include(CMakePackageConfigHelpers)

set(VANTORIUM_INSTALL_KINDS "shared;static" CACHE STRING "Which libraries are installed: shared, static or shared;static")
foreach(kind IN LISTS VANTORIUM_INSTALL_KINDS)
  if(NOT kind MATCHES "^(shared|static)$")
    message(FATAL_ERROR "VANTORIUM_INSTALL_KINDS has `${kind}` in it: it takes shared, static or shared;static.")
  endif()
endforeach()
if(NOT VANTORIUM_INSTALL_KINDS)
  message(FATAL_ERROR "VANTORIUM_INSTALL_KINDS is empty: it takes shared, static or shared;static.")
endif()
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vantorium)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The .pc files count from their own folder, so that the package may be moved; folders given in full stay as given.
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(VANTORIUM_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH VANTORIUM_PC_PREFIX /${pkgconfig_dir} /)
  string(REGEX REPLACE "^(.*)/$" "\${pcfiledir}/\\1" VANTORIUM_PC_PREFIX ${VANTORIUM_PC_PREFIX})
endif()
cmake_path(APPEND VANTORIUM_PC_LIBDIR "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND VANTORIUM_PC_INCLUDEDIR "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})

# vantorium_install_library(<component> <file name> <runtime package> HEADERS <patterns>)
function(vantorium_install_library component file_name runtime)
  cmake_parse_arguments(PARSE_ARGV 3 arg "" "" "HEADERS")
  set(target_shared vantorium_${component}_shared)
  set(target_static vantorium_${component})
  # A host finds the core beside itself, wherever the package was moved.
  set_target_properties(${target_shared} PROPERTIES INSTALL_RPATH "$ORIGIN")
  foreach(kind IN LISTS VANTORIUM_INSTALL_KINDS)
    install(TARGETS ${target_${kind}} EXPORT vantorium-${component}-${kind}
      ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libvantorium-dev
      LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${runtime} NAMELINK_COMPONENT libvantorium-dev)
    install(EXPORT vantorium-${component}-${kind} NAMESPACE vantorium:: DESTINATION ${package_dir}
      COMPONENT libvantorium-dev)
  endforeach()
  file(GLOB headers CONFIGURE_DEPENDS ${arg_HEADERS})
  install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vantorium COMPONENT libvantorium-dev)
  set(dependencies ${PROJECT_SOURCE_DIR}/packaging/cmake/vantorium-${component}-dependencies.cmake)
  if(EXISTS ${dependencies})
    install(FILES ${dependencies} DESTINATION ${package_dir} COMPONENT libvantorium-dev)
  endif()
  configure_file(packaging/pkgconfig/${file_name}.pc.in ${PROJECT_BINARY_DIR}/packaging/${file_name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/packaging/${file_name}.pc DESTINATION ${pkgconfig_dir} COMPONENT libvantorium-dev)
endfunction()

set(public ${PROJECT_SOURCE_DIR}/include/vantorium)
vantorium_install_library(headless vantorium-headless libvantorium HEADERS ${public}/headless*)
if(VANTORIUM_GTK)
  vantorium_install_library(gtk vantorium-gtk libvantorium-gtk HEADERS ${public}/gtk*)
endif()
file(GLOB host_headers ${public}/gtk* ${public}/headless*)
file(GLOB core_headers CONFIGURE_DEPENDS ${public}/*.h ${public}/*.hpp)
list(REMOVE_ITEM core_headers ${host_headers})
install(DIRECTORY ${public}/c DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vantorium COMPONENT libvantorium-dev)
vantorium_install_library(core vantorium libvantorium
  HEADERS ${core_headers} ${PROJECT_BINARY_DIR}/include/vantorium/version.h)

configure_package_config_file(packaging/cmake/vantorium-config.cmake.in
  ${PROJECT_BINARY_DIR}/packaging/vantorium-config.cmake INSTALL_DESTINATION ${package_dir}
  PATH_VARS CMAKE_INSTALL_PREFIX NO_CHECK_REQUIRED_COMPONENTS_MACRO NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/packaging/vantorium-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/packaging/vantorium-config.cmake
  ${PROJECT_BINARY_DIR}/packaging/vantorium-config-version.cmake
  DESTINATION ${package_dir} COMPONENT libvantorium-dev)

install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT libvantorium-dev)
# As in the tree, so that the pages find each other; what they say of sources is only found there.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT libvantorium-dev)
install(FILES tools/sandbox/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/tools/sandbox COMPONENT libvantorium-dev)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT libvantorium-dev)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licence)

if(VANTORIUM_TOOLS)
  install(TARGETS vantorium-drive vantorium-sandbox RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT vantorium-tools)
  install(FILES packaging/man/vantorium-drive.1 packaging/man/vantorium-sandbox.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT vantorium-tools)
  install(DIRECTORY tools/sandbox/catalogue/ DESTINATION ${CMAKE_INSTALL_DATADIR}/vantorium/sandbox
    COMPONENT vantorium-tools
    PATTERN "*.py" EXCLUDE PATTERN .gitignore EXCLUDE PATTERN art EXCLUDE PATTERN playable-src EXCLUDE)
endif()
