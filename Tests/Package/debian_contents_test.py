#!/usr/bin/env python3
"""Checks the contents and the dependencies of the Debian packages."""

import os
import unittest

from debian import DEVELOPMENT, PACKAGES, PROGRAM, RUNTIME, contents, field, package_files


class DebianContentsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.packages = package_files()

    def files(self, package):
        return {name for name in contents(self.packages[package]) if not name.endswith("/")}

    def test_there_are_three_packages(self):
        self.assertEqual(set(self.packages), set(PACKAGES))

    def test_the_library_package_has_only_the_shared_library_and_a_copyright_file(self):
        self.assertEqual(
            {os.path.basename(name) for name in self.files(RUNTIME)},
            {"libVelLaunchScreen.so.1", "libVelLaunchScreen.so.1.0.0", "copyright"},
        )

    def test_the_development_package_has_files_for_building_programs_with_the_library(self):
        files = self.files(DEVELOPMENT)
        for name in ("VelLaunchScreen.h", "vel_launch_screen.h"):
            self.assertIn(f"/usr/include/VelLaunchScreen/{name}", files)
        names = {os.path.basename(name) for name in files}
        expected = {"libVelLaunchScreen.so", "vellaunchscreen.pc", "VelLaunchScreenConfig.cmake"}
        self.assertLessEqual(expected, names)

    def test_no_package_has_files_of_the_objective_c_interface(self):
        for package in PACKAGES:
            for name in self.files(package):
                self.assertNotRegex(name, "VelFindAppKit|VelLaunchScreenAppKit|ObjectiveC")

    def test_the_development_package_depends_on_the_library_package_of_its_version(self):
        version = field(self.packages[RUNTIME], "Version")
        self.assertEqual(field(self.packages[DEVELOPMENT], "Depends"), f"{RUNTIME} (= {version})")

    def test_the_program_package_has_exactly_four_files(self):
        self.assertEqual(
            self.files(PROGRAM),
            {
                "/usr/bin/launchscreen",
                "/usr/share/man/man1/launchscreen.1",
                "/usr/share/bash-completion/completions/launchscreen",
                "/usr/share/doc/launchscreen/copyright",
            },
        )

    def test_the_library_package_recommends_libdecor(self):
        self.assertEqual(field(self.packages[RUNTIME], "Recommends"), "libdecor-0-0")

    def test_the_library_and_program_packages_depend_on_libc_and_libstdcxx(self):
        for package in (RUNTIME, PROGRAM):
            depends = field(self.packages[package], "Depends")
            self.assertRegex(depends, r"\blibc6\b.*\blibstdc\+\+6\b")


if __name__ == "__main__":
    unittest.main()
