#!/usr/bin/env python3
"""Builds the library as a subproject of a host's project. The library is then static. The host's installation
contains the library only if VEL_INSTALL is on."""

import unittest

from package import CC, CONSUMERS, EXPECTED_OUTPUT, LIB, SOURCE, WARNING_FLAGS, WORK
from package import cmake_build, make_folder, pkg_config, run


class SubprojectTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = make_folder("subproject")

    def build(self, *settings):
        # A unity build compiles many source files as one. It is fast, and many games use it.
        unity_settings = ["-DCMAKE_UNITY_BUILD=ON", "-DCMAKE_UNITY_BUILD_BATCH_SIZE=0"]
        cmake_build("subproject", self.folder, f"-DVEL_SOURCE={SOURCE}", *unity_settings, *settings)
        self.assertEqual(run(self.folder / "host_cpp"), EXPECTED_OUTPUT)
        self.assertEqual(run(self.folder / "host_c"), EXPECTED_OUTPUT)

    # The tests run in the order of their numbers. Tests 1 to 3 share a build folder, so only the first
    # test compiles the library. Tests 4 and 5 use the library that test 3 installs.
    def test_1_add_subdirectory_adds_only_the_library_and_installs_nothing(self):
        self.build("-DFETCH=OFF")
        targets = run("cmake", "--build", self.folder, "--target", "help")
        self.assertIn("libVelLaunchScreen.a", targets)
        for unwanted in ("launchscreen:", "Tests:", "package:"):
            self.assertNotIn(unwanted, targets)
        prefix = make_folder("subproject_nothing")
        run("cmake", "--install", self.folder, "--prefix", prefix)
        self.assertEqual(list(prefix.iterdir()), [])

    def test_2_fetch_content_builds_the_library(self):
        self.build("-DFETCH=ON")

    def test_3_vel_install_installs_the_library(self):
        # VEL_COCOA is off because appkit_test.py tests the installed AppKit components.
        self.build("-DFETCH=ON", "-DVEL_INSTALL=ON", "-DVEL_COCOA=OFF")
        run("cmake", "--install", self.folder, "--prefix", make_folder("static"))
        self.assertTrue((WORK / "static" / LIB / "libVelLaunchScreen.a").is_file())

    def test_4_cmake_finds_the_static_library(self):
        folder = make_folder("find_static")
        cmake_build("find_package", folder, f"-DCMAKE_PREFIX_PATH={WORK / 'static'}")
        self.assertEqual(run(folder / "host_cpp"), EXPECTED_OUTPUT)
        self.assertEqual(run(folder / "host_c"), EXPECTED_OUTPUT)

    def test_5_pkg_config_finds_the_static_library(self):
        program = make_folder("pkg_config_static") / "host"
        flags = pkg_config("--static", "--cflags", "--libs", prefix=WORK / "static")
        run(CC, "-std=c99", *WARNING_FLAGS, CONSUMERS / "host.c", *flags, "-o", program)
        self.assertEqual(run(program), EXPECTED_OUTPUT)


if __name__ == "__main__":
    unittest.main(failfast=True)
