# The Debian packages: `cpack` in a build that was configured with the preset "package". One for servers and tests
# (libvantorium), one that brings GTK, one to build with, one with the tools.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vantorium)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The Vantorium developers <vantorium@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL libvantorium libvantorium-dev)
set(CPACK_VANTORIUM_BUILD ${PROJECT_BINARY_DIR})
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/debian/documents.cmake)
string(TIMESTAMP VANTORIUM_BUILD_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)  # SOURCE_DATE_EPOCH, when it is set
configure_file(packaging/debian/changelog.in ${PROJECT_BINARY_DIR}/packaging/debian-changelog @ONLY)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(this_version "(= ${PROJECT_VERSION}-1)")
set(about "Vantorium fetches videos and small playable games from an ad service, keeps
them on disk so that they start at once, shows them over the application's
window, and pays the user for watching or playing.
.")

# vantorium_debian_package(<package> SECTION <section> SUMMARY <line> TEXT <paragraph> [DEPENDS|RECOMMENDS|SUGGESTS <list>])
# A macro, for CPack reads the variables of this scope.
macro(vantorium_debian_package package)
  cmake_parse_arguments(deb "" "SECTION;SUMMARY;TEXT;DEPENDS;RECOMMENDS;SUGGESTS" "" ${ARGN})
  string(TOUPPER ${package} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${deb_SECTION})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${deb_SUMMARY}\n${about}\n${deb_TEXT}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${deb_DEPENDS}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_RECOMMENDS "${deb_RECOMMENDS}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_SUGGESTS "${deb_SUGGESTS}")
endmacro()

vantorium_debian_package(libvantorium SECTION libs SUMMARY "advertising SDK, the library"
  TEXT "This package holds the core, which knows no toolkit, and the headless host,
on which applications test their ads without a screen."
  RECOMMENDS "ca-certificates")
vantorium_debian_package(libvantorium-dev SECTION libdevel SUMMARY "advertising SDK, to build applications with"
  TEXT "This package holds the headers for C++ and C, the archives, examples, the
documentation, and what CMake and pkg-config need to find them.
Applications of GTK 4 need libvantorium-gtk and the packages suggested,
too."
  DEPENDS "libvantorium ${this_version}, libcurl4-openssl-dev | libcurl-dev, libfmt-dev, libicu-dev, libisal-dev, libminizip-dev, zlib1g-dev"
  RECOMMENDS "pkg-config, libvantorium-gtk ${this_version}"
  SUGGESTS "vantorium-tools, libgtkmm-4.0-dev, libwebkitgtk-6.0-dev, libgdk-pixbuf-2.0-dev, libpulse-dev, librtmp-dev, libssh2-1-dev, libkrb5-dev, libldap-dev")
if(VANTORIUM_GTK)
  list(APPEND CPACK_COMPONENTS_ALL libvantorium-gtk)
  vantorium_debian_package(libvantorium-gtk SECTION libs SUMMARY "advertising SDK, the host for GTK 4"
    TEXT "This package holds the library that applications of GTK 4 show ads with."
    DEPENDS "libvantorium ${this_version}"
    RECOMMENDS "libgtk-4-media-gstreamer, gstreamer1.0-plugins-base, gstreamer1.0-plugins-good, gstreamer1.0-libav, librsvg2-common, webp-pixbuf-loader")
endif()
if(VANTORIUM_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL vantorium-tools)
  vantorium_debian_package(vantorium-tools SECTION devel SUMMARY "advertising SDK, local ad service and player of scripts"
    TEXT "This package holds vantorium-sandbox, an ad service on this machine with a
catalogue of ads and faults to order, and vantorium-drive, which plays scripts
of an application's ad flow against the SDK.")
endif()
include(CPack)
