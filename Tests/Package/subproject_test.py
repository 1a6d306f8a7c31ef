#!/usr/bin/env python3
"""Projects build the library along with themselves; it is static then, and installed on request."""

import unittest

from package import CC, CONSUMERS, LIB, RUN, SOURCE, STRICT, WORK, cmake_build, fresh_folder
from package import pkg_config, run


class SubprojectTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = fresh_folder("subproject")

    def build(self, *settings):
        # A unity build: as games are built, and the quickest.
        unity = ["-DCMAKE_UNITY_BUILD=ON", "-DCMAKE_UNITY_BUILD_BATCH_SIZE=0"]
        cmake_build("subproject", self.folder, f"-DVEL_SOURCE={SOURCE}", *unity, *settings)
        self.assertEqual(run(self.folder / "host_cpp"), RUN)
        self.assertEqual(run(self.folder / "host_c"), RUN)

    # The steps share a folder, and with it the library that the first one builds.
    def test_1_by_add_subdirectory_with_nothing_but_the_library(self):
        self.build("-DFETCH=OFF")
        targets = run("cmake", "--build", self.folder, "--target", "help")
        self.assertIn("libVelLaunchScreen.a", targets)
        for unwanted in ("launchscreen:", "Tests", "package:"):
            self.assertNotIn(unwanted, targets)
        prefix = fresh_folder("subproject_nothing")
        run("cmake", "--install", self.folder, "--prefix", prefix)
        self.assertEqual(list(prefix.iterdir()), [])

    def test_2_by_fetch_content(self):
        self.build("-DFETCH=ON")

    def test_3_installed_on_request(self):
        self.build("-DFETCH=ON", "-DVEL_INSTALL=ON")
        run("cmake", "--install", self.folder, "--prefix", fresh_folder("static"))
        self.assertTrue((WORK / "static" / LIB / "libVelLaunchScreen.a").is_file())

    def test_4_the_static_library_is_found_by_cmake(self):
        folder = fresh_folder("find_static")
        cmake_build("find_package", folder, f"-DCMAKE_PREFIX_PATH={WORK / 'static'}")
        self.assertEqual(run(folder / "host_cpp"), RUN)
        self.assertEqual(run(folder / "host_c"), RUN)

    def test_5_the_static_library_is_found_by_pkg_config(self):
        program = fresh_folder("pkg_config_static") / "host"
        flags = pkg_config("--static", "--cflags", "--libs", prefix=WORK / "static")
        run(CC, "-std=c99", *STRICT, CONSUMERS / "host.c", *flags, "-o", program)
        self.assertEqual(run(program), RUN)


if __name__ == "__main__":
    unittest.main(failfast=True)
