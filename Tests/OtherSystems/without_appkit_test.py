#!/usr/bin/env python3
"""Configures the project without AppKit. Checks the output of CMake and the list of tests.

usage: without_appkit_test.py SOURCE CMAKE CTEST
"""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCE, CMAKE, CTEST = sys.argv[1:]


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, timeout=120, check=True).stdout


class WithoutAppKit(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        # With an empty value, CMake treats gnustep-config as missing.
        settings = ("-DVEL_GNUSTEP_CONFIG=", "-DVEL_EXAMPLES=ON")
        cls.output = run(CMAKE, "-S", SOURCE, "-B", Path(folder.name), *settings)
        cls.test_list = run(CTEST, "--test-dir", Path(folder.name), "--show-only")

    def test_the_output_names_the_missing_program(self):
        self.assertIn(
            "The AppKit back end is left out. Missing: gnustep-config, of the package libgnustep-gui-dev",
            self.output,
        )

    def test_the_list_contains_no_tests_that_need_appkit(self):
        self.assertIn("FoundationTests", self.test_list)
        self.assertNotIn("Cocoa", self.test_list)
        self.assertNotIn("ObjectiveC", self.test_list)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
