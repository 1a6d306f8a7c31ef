#!/usr/bin/env python3
"""Configures the project as on a system without AppKit.

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
        # An empty value stands for a system without gnustep-config.
        settings = ("-DVEL_GNUSTEP_CONFIG=", "-DVEL_EXAMPLES=ON")
        cls.output = run(CMAKE, "-S", SOURCE, "-B", Path(folder.name), *settings)
        cls.tests = run(CTEST, "--test-dir", Path(folder.name), "--show-only")

    def test_the_output_says_that_the_back_end_is_left_out_and_why(self):
        self.assertIn(
            "The AppKit back end is left out. Missing: gnustep-config, of the package libgnustep-gui-dev",
            self.output,
        )

    def test_the_tests_of_appkit_are_left_out(self):
        self.assertIn("FoundationTests", self.tests)
        self.assertNotIn("Cocoa", self.tests)
        self.assertNotIn("ObjectiveC", self.tests)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
