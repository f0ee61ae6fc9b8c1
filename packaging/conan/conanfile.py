"""Conan 2 recipe: `conan create packaging/conan` builds and tests the package.

The GTK host is built with the system's gtkmm, WebKitGTK and libpulse, for Conan has no WebKitGTK."""
import os
import re

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load, rmdir
from conan.tools.gnu import PkgConfigDeps


class VantoriumConan(ConanFile):
    name = "vantorium"
    license = "MIT"
    description = "Advertising SDK: a core that knows no toolkit, a headless host, and one for GTK 4"
    topics = ("advertising", "sdk", "gtk")
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False], "gtk": [True, False]}
    default_options = {"shared": True, "gtk": False}

    @property
    def _tree(self):
        return os.path.join(self.recipe_folder, "..", "..")

    def set_version(self):
        project = load(self, os.path.join(self._tree, "CMakeLists.txt"))
        self.version = re.search(r"project\(vantorium VERSION ([0-9.]+)", project).group(1)

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "LICENSE", "cmake/*", "packaging/*", "include/*", "src/*", "bindings/*",
                        "hosts/*", "resources/*", "examples/*"):
            copy(self, pattern, self._tree, self.export_sources_folder)

    def validate(self):
        check_min_cppstd(self, 20)

    def layout(self):
        cmake_layout(self)

    def requirements(self):
        self.requires("fmt/[>=9 <11]")
        self.requires("icu/[>=72]")
        self.requires("isa-l/[>=2.30 <3]")
        self.requires("libcurl/[>=7.88 <9]")
        self.requires("minizip/[>=1.2.13 <2]")
        self.requires("nlohmann_json/[>=3.11 <4]")
        self.requires("zlib/[>=1.2.13 <2]")

    def build_requirements(self):
        self.tool_requires("cmake/[>=3.25]")
        self.tool_requires("pkgconf/[>=1.8]")

    def generate(self):
        CMakeDeps(self).generate()
        modules = PkgConfigDeps(self)
        modules.set_property("isa-l", "pkg_config_name", "libisal")  # as its own build names it
        modules.generate()
        toolchain = CMakeToolchain(self)
        toolchain.variables["VANTORIUM_GTK"] = bool(self.options.gtk)
        toolchain.variables["VANTORIUM_INSTALL_KINDS"] = "shared" if self.options.shared else "static"
        for part in ("TOOLS", "TESTS", "BENCH", "WERROR"):
            toolchain.variables[f"VANTORIUM_{part}"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", self.source_folder, os.path.join(self.package_folder, "licenses"))
        # Conan writes these for its consumers, with its own dependencies in them.
        rmdir(self, os.path.join(self.package_folder, "lib", "cmake"))
        rmdir(self, os.path.join(self.package_folder, "lib", "pkgconfig"))
        rmdir(self, os.path.join(self.package_folder, "share"))

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "vantorium")
        linked = ["libcurl::libcurl", "fmt::fmt", "icu::icu-i18n", "icu::icu-uc", "isa-l::isa-l", "minizip::minizip",
                  "zlib::zlib"]
        # Only compiled in, yet a recipe has to say where each requirement goes.
        compiled_in = ["nlohmann_json::nlohmann_json"]
        self._component("core", "vantorium", linked + compiled_in)
        self._component("headless", "vantorium-headless", ["core", "fmt::fmt"])
        if self.options.gtk:
            self._component("gtk", "vantorium-gtk", ["core", "fmt::fmt", "icu::icu-i18n", "icu::icu-uc"])

    def _component(self, name, library, requires):
        component = self.cpp_info.components[name]
        component.set_property("cmake_target_name", f"vantorium::{name}")
        component.set_property("pkg_config_name", library)
        component.libs = [library]
        component.requires = requires
        component.system_libs = ["m", "pthread"]
