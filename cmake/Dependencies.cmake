# Everything the library, its hosts, tools and tests link. All are Debian packages: scripts/setup installs them. What
# pkg-config finds has our name in front, for an application that adds this folder may look for the same.
find_package(Threads REQUIRED)
find_package(CURL REQUIRED)
find_package(ZLIB REQUIRED)
find_package(fmt REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(ICU REQUIRED COMPONENTS i18n uc)
find_package(PkgConfig REQUIRED)
pkg_check_modules(VANTORIUM_MINIZIP REQUIRED IMPORTED_TARGET minizip)
pkg_check_modules(VANTORIUM_LIBISAL REQUIRED IMPORTED_TARGET libisal)

if(VANTORIUM_GTK)
  pkg_check_modules(VANTORIUM_GTKMM REQUIRED IMPORTED_TARGET gtkmm-4.0)
  pkg_check_modules(VANTORIUM_WEBKIT REQUIRED IMPORTED_TARGET webkitgtk-6.0)
  pkg_check_modules(VANTORIUM_GDK_PIXBUF REQUIRED IMPORTED_TARGET gdk-pixbuf-2.0)
  pkg_check_modules(VANTORIUM_PULSE REQUIRED IMPORTED_TARGET libpulse)
endif()
