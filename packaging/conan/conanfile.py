"""The Conan recipe: `conan create packaging/conan` from the root of the sources."""

import pathlib
import re

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeToolchain, cmake_layout
from conan.tools.files import copy, rmdir

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent


class TqOsBaseRecipe(ConanFile):
    name = "tqosbase"
    description = "OS base library beneath a CAD application: text, numbers, heap, containers, streams"
    topics = ("code pages", "printf", "heap", "porting")
    settings = "os", "arch", "compiler", "build_type"
    package_type = "library"
    options = {"shared": [True, False]}
    default_options = {"shared": True}

    def set_version(self):
        text = (ROOT / "include/TqOsBase/Version.h").read_text(encoding="utf-8")
        self.version = re.search(r'kVersion\[\] = "([0-9.]+)"', text)[1]

    def export_sources(self):
        for part in ("CMakeLists.txt", "COPYRIGHT", "cmake/*", "include/*", "src/*", "tools/*", "docs/*"):
            copy(self, part, ROOT, self.export_sources_folder)

    def validate(self):
        check_min_cppstd(self, 20)

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        for part in ("TESTS", "EXAMPLES", "FUZZ", "BENCH"):
            toolchain.cache_variables[f"TQ_BUILD_{part}"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "COPYRIGHT", self.source_folder, f"{self.package_folder}/licenses")
        # One of the two libraries is the package's; programs find it through what Conan generates.
        lib = pathlib.Path(self.package_folder, "lib")
        rmdir(self, lib / "cmake")
        rmdir(self, lib / "pkgconfig")
        for library in lib.glob("libTqOsBase.a" if self.options.shared else "libTqOsBase.[sd]*"):
            library.unlink()

    def package_info(self):
        self.cpp_info.libs = ["TqOsBase"]
        self.cpp_info.set_property("cmake_file_name", "TqOsBase")
        target = "TqOsBase" if self.options.shared else "TqOsBaseStatic"
        self.cpp_info.set_property("cmake_target_name", f"TqOsBase::{target}")
        self.cpp_info.set_property("pkg_config_name", "TqOsBase")
