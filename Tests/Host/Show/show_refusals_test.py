#!/usr/bin/env python3
"""Tests the arguments that `launchscreen show` refuses."""

import unittest

from program import run
from show import LOG_PREFIX, show


class Refusals(unittest.TestCase):
    def test_invalid_duration_prints_only_the_log_line_of_the_library(self):
        for duration in ("abc", "0", "", "nan"):
            with self.subTest(duration):
                result = show("--duration", duration)
                self.assertEqual(result.returncode, 1)
                self.assertEqual(result.stdout, "")
                self.assertRegex(
                    result.stderr,
                    rf"\A{LOG_PREFIX}LaunchScreenManager \(-\[LaunchScreenManager "
                    r"parseParameters:\]\): Max duration time is nil or empty!\n\Z",
                )

    def test_empty_event_name_prints_the_log_line_of_the_library(self):
        result = show("--event", "")
        self.assertEqual(result.returncode, 1)
        self.assertRegex(
            result.stderr, r"parseParameters:\]\): Next event name is nil or empty!\n\Z"
        )

    def test_negative_duration_prints_the_error_of_the_library(self):
        result = show("--duration", "-3")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(
            result.stderr,
            "launchscreen: the launch screen cannot be shown: LaunchScreen view controller is NIL\n",
        )

    def test_sheet_without_content_controller_is_refused(self):
        result = show("--present", "sheet")
        self.assertEqual(result.returncode, 1)
        self.assertIn("--content-controller", result.stderr.splitlines()[-1])

    def test_usage_error_prints_one_line(self):
        for arguments in (
            ["show", "--size", "big"],
            ["show", "--skip-after", "1"],  # needs --mode skip
            ["show", "--events", "/nonexistent/events"],
            [],  # no command
        ):
            with self.subTest(arguments):
                result = run(*arguments)
                self.assertEqual(result.returncode, 2)
                self.assertEqual(result.stdout, "")
                self.assertEqual(len(result.stderr.splitlines()), 1)


if __name__ == "__main__":
    unittest.main()
