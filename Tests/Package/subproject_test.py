#!/usr/bin/env python3
"""Builds the library as a subproject: static, and installed only with VEL_INSTALL."""

import unittest

from package import CC, CONSUMERS, LIB, RUN, SOURCE, STRICT, WORK, cmake_build, fresh_folder
from package import pkg_config, run


class SubprojectTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = fresh_folder("subproject")

    def build(self, *settings):
        # Many games use unity builds. Unity builds are also the fastest builds.
        unity = ["-DCMAKE_UNITY_BUILD=ON", "-DCMAKE_UNITY_BUILD_BATCH_SIZE=0"]
        cmake_build("subproject", self.folder, f"-DVEL_SOURCE={SOURCE}", *unity, *settings)
        self.assertEqual(run(self.folder / "host_cpp"), RUN)
        self.assertEqual(run(self.folder / "host_c"), RUN)

    # The tests share a build folder, so only the first test compiles the library.
    def test_1_add_subdirectory_builds_and_installs_only_the_library(self):
        self.build("-DFETCH=OFF")
        targets = run("cmake", "--build", self.folder, "--target", "help")
        self.assertIn("libVelLaunchScreen.a", targets)
        for unwanted in ("launchscreen:", "Tests", "package:"):
            self.assertNotIn(unwanted, targets)
        prefix = fresh_folder("subproject_nothing")
        run("cmake", "--install", self.folder, "--prefix", prefix)
        self.assertEqual(list(prefix.iterdir()), [])

    def test_2_fetch_content_builds_it(self):
        self.build("-DFETCH=ON")

    def test_3_vel_install_installs_it(self):
        self.build("-DFETCH=ON", "-DVEL_INSTALL=ON")
        run("cmake", "--install", self.folder, "--prefix", fresh_folder("static"))
        self.assertTrue((WORK / "static" / LIB / "libVelLaunchScreen.a").is_file())

    def test_4_cmake_finds_the_static_library(self):
        folder = fresh_folder("find_static")
        cmake_build("find_package", folder, f"-DCMAKE_PREFIX_PATH={WORK / 'static'}")
        self.assertEqual(run(folder / "host_cpp"), RUN)
        self.assertEqual(run(folder / "host_c"), RUN)

    def test_5_pkg_config_finds_the_static_library(self):
        program = fresh_folder("pkg_config_static") / "host"
        flags = pkg_config("--static", "--cflags", "--libs", prefix=WORK / "static")
        run(CC, "-std=c99", *STRICT, CONSUMERS / "host.c", *flags, "-o", program)
        self.assertEqual(run(program), RUN)


if __name__ == "__main__":
    unittest.main(failfast=True)
