import os
import re

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load

required_conan_version = ">=2.0"


class PelionCore(ConanFile):
    name = "pelion_core"
    description = "Drive an embedded Python that the user chose"
    topics = ("python", "embedding")
    package_type = "shared-library"
    settings = "os", "arch", "compiler", "build_type"

    @property
    def _root(self):
        return os.path.join(self.recipe_folder, "..", "..")

    def set_version(self):
        text = load(self, os.path.join(self._root, "CMakeLists.txt"))
        self.version = re.search(r"project\(pelion_core VERSION (\S+)", text)[1]

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "cmake/*", "include/*", "src/*"):
            copy(self, pattern, src=self._root, dst=self.export_sources_folder)

    def layout(self):
        cmake_layout(self)

    def requirements(self):
        # Handles are Boost's, so a host needs the headers too.
        self.requires("boost/[>=1.71 <2]", options={"header_only": True}, transitive_headers=True)
        self.requires("nlohmann_json/[>=3.9 <4]", visible=False)

    def validate(self):
        check_min_cppstd(self, 17)

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["PELION_CORE_TESTS"] = False
        toolchain.cache_variables["PELION_CORE_EXAMPLES"] = False
        toolchain.cache_variables["PELION_CORE_PROGRAM"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()

    def package_info(self):
        self.cpp_info.libs = ["pelion_core_host", "pelion_core"]
        # The package's own CMake and pkg-config files serve hosts better than generated ones.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs = [os.path.join("lib", "cmake", "pelion_core")]
