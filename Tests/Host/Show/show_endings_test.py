#!/usr/bin/env python3
"""Tests what `launchscreen show` reports, and how it ends."""

import os
import subprocess
import unittest

from program import TIMEOUT, start
from show import LOG_PREFIX, reports, running_show, show


# A modal launch screen closes when the library dismisses it. An embedded launch screen may close a
# second later, which would make a test longer.
MODAL_ARGUMENTS = ["--present", "modal"]


def time_of_dismissal(output):
    return min(float(line.split()[0]) for line in output.splitlines() if "dismissed" in line)


class Endings(unittest.TestCase):
    def test_every_step_of_an_embedded_run_is_reported(self):
        result = show("--duration", "0.3")
        self.assertEqual(result.returncode, 0)
        self.assertEqual(
            reports(result.stdout),
            [
                "content loaded",
                "covered",
                "controls removed",
                "controls restored",
                "dismissed",
                "event recorded: launch_end",
                "uncovered",
            ],
        )
        self.assertRegex(
            result.stderr,
            rf"\A{LOG_PREFIX}LaunchScreenContent \(-\[LaunchScreenContent "
            r"presentForWindow:withPresentationMode:\]\) mode: 0\n\Z",
        )

    def test_remaining_seconds_are_reported(self):
        result = show("--duration", "1.2", "--mode", "forced", *MODAL_ARGUMENTS)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(
            [line for line in reports(result.stdout) if line.endswith("left")], ["1 s left"]
        )

    def test_every_step_of_modal_and_sheet_runs_is_reported(self):
        for arguments, mode in (
            (MODAL_ARGUMENTS, 2),
            (["--present", "sheet", "--content-controller"], 1),
        ):
            with self.subTest(arguments):
                result = show("--duration", "0.3", "--size", "640x480", "--indicator", *arguments)
                self.assertEqual(result.returncode, 0)
                self.assertEqual(
                    reports(result.stdout),
                    [
                        "content loaded",
                        "covered",
                        "dismissed",
                        "uncovered",
                        "event recorded: launch_end",
                    ],
                )
                self.assertTrue(result.stderr.endswith(f" mode: {mode}\n"))

    def test_no_event_is_recorded_if_option_skip_after_ends_the_run(self):
        result = show("--mode", "skip", "--skip-after", "0.2", "--duration", "60", *MODAL_ARGUMENTS)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(reports(result.stdout)[-2:], ["dismissed", "uncovered"])
        self.assertNotIn("event recorded", result.stdout)

    def test_enter_key_dismisses_the_launch_screen_in_skip_mode(self):
        with running_show(
            "covered", "--mode", "skip", "--duration", "60", *MODAL_ARGUMENTS, stdin=subprocess.PIPE
        ) as process:
            process.stdin.write(b"\n")
            process.stdin.flush()
            for line in process.stdout:
                process.received_output += line
            self.assertEqual(process.wait(TIMEOUT), 0)
            self.assertEqual(
                reports(process.received_output.decode())[-2:], ["dismissed", "uncovered"]
            )

    def test_enter_key_does_nothing_without_skip_mode(self):
        # `subprocess` refuses `input` together with `stdin`. By default, `stdin` is /dev/null.
        result = show("--duration", "0.3", *MODAL_ARGUMENTS, stdin=None, input="\n\n")
        self.assertEqual(result.returncode, 0)
        self.assertIn("event recorded", result.stdout)
        self.assertGreaterEqual(time_of_dismissal(result.stdout), 0.3)

    def test_end_of_input_does_not_dismiss_the_launch_screen(self):
        # The standard input is /dev/null, so the input ends immediately.
        result = show("--mode", "skip", "--duration", "0.5", *MODAL_ARGUMENTS)
        self.assertEqual(result.returncode, 0)
        self.assertGreaterEqual(time_of_dismissal(result.stdout), 0.5)

    def test_run_succeeds_if_standard_input_is_closed(self):
        process = start(
            "show", "--display", "headless", "--mode", "skip", "--duration", "0.3", *MODAL_ARGUMENTS,
            preexec_fn=lambda: os.close(0),
        )
        output, _ = process.communicate(timeout=TIMEOUT)
        self.assertEqual(process.returncode, 0)
        self.assertEqual(reports(output.decode())[-1], "uncovered")


if __name__ == "__main__":
    unittest.main()
