#!/usr/bin/env python3
"""What is in the Debian packages, and what they need."""

import os
import unittest

from debian import DEVELOPMENT, PACKAGES, PROGRAM, RUNTIME, contents, field, made_packages


class DebianContentsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.made = made_packages()

    def files(self, package):
        return {name for name in contents(self.made[package]) if not name.endswith("/")}

    def test_there_are_three(self):
        self.assertEqual(set(self.made), set(PACKAGES))

    def test_the_library_comes_with_what_a_program_needs_that_runs(self):
        self.assertEqual(
            {os.path.basename(name) for name in self.files(RUNTIME)},
            {"libVelLaunchScreen.so.1", "libVelLaunchScreen.so.1.0.0", "copyright"},
        )

    def test_what_building_a_program_takes_comes_apart(self):
        files = self.files(DEVELOPMENT)
        for name in ("VelLaunchScreen.h", "vel_launch_screen.h"):
            self.assertIn(f"/usr/include/VelLaunchScreen/{name}", files)
        names = {os.path.basename(name) for name in files}
        wanted = {"libVelLaunchScreen.so", "vellaunchscreen.pc", "VelLaunchScreenConfig.cmake"}
        self.assertLessEqual(wanted, names)

    def test_building_takes_the_same_version_of_the_library(self):
        version = field(self.made[RUNTIME], "Version")
        self.assertEqual(field(self.made[DEVELOPMENT], "Depends"), f"{RUNTIME} (= {version})")

    def test_the_program_comes_with_its_manual_and_completion(self):
        self.assertEqual(
            self.files(PROGRAM),
            {
                "/usr/bin/launchscreen",
                "/usr/share/man/man1/launchscreen.1",
                "/usr/share/bash-completion/completions/launchscreen",
                "/usr/share/doc/launchscreen/copyright",
            },
        )

    def test_the_library_and_the_program_know_what_they_need(self):
        for package in (RUNTIME, PROGRAM):
            needs = field(self.made[package], "Depends")
            self.assertRegex(needs, r"\blibc6\b.*\blibstdc\+\+6\b")


if __name__ == "__main__":
    unittest.main()
