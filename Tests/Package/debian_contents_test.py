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

    def test_the_library_package_has_only_the_shared_library_and_its_copyright_file(self):
        self.assertEqual(
            {os.path.basename(name) for name in self.files(RUNTIME)},
            {"libVelLaunchScreen.so.1", "libVelLaunchScreen.so.1.0.0", "copyright"},
        )

    def test_the_development_package_has_the_headers_the_symlink_and_the_build_system_files(self):
        files = self.files(DEVELOPMENT)
        for name in ("VelLaunchScreen.h", "vel_launch_screen.h"):
            self.assertIn(f"/usr/include/VelLaunchScreen/{name}", files)
        names = {os.path.basename(name) for name in files}
        expected = {"libVelLaunchScreen.so", "vellaunchscreen.pc", "VelLaunchScreenConfig.cmake"}
        self.assertLessEqual(expected, names)

    def test_no_package_has_files_for_appkit(self):
        for package in PACKAGES:
            for name in self.files(package):
                self.assertNotRegex(name, "VelFindAppKit|VelLaunchScreenAppKit|ObjectiveC")

    def test_the_development_package_depends_on_the_same_version_of_the_library(self):
        version = field(self.packages[RUNTIME], "Version")
        self.assertEqual(field(self.packages[DEVELOPMENT], "Depends"), f"{RUNTIME} (= {version})")

    def test_the_program_package_has_no_files_but_these_four(self):
        self.assertEqual(
            self.files(PROGRAM),
            {
                "/usr/bin/launchscreen",
                "/usr/share/man/man1/launchscreen.1",
                "/usr/share/bash-completion/completions/launchscreen",
                "/usr/share/doc/launchscreen/copyright",
            },
        )

    def test_the_library_recommends_libdecor(self):
        self.assertEqual(field(self.packages[RUNTIME], "Recommends"), "libdecor-0-0")

    def test_the_library_and_the_program_depend_on_the_standard_libraries(self):
        for package in (RUNTIME, PROGRAM):
            depends = field(self.packages[package], "Depends")
            self.assertRegex(depends, r"\blibc6\b.*\blibstdc\+\+6\b")


if __name__ == "__main__":
    unittest.main()
