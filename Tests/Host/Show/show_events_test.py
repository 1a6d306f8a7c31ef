#!/usr/bin/env python3
"""Tests the file to which `launchscreen show` appends events."""

import json
import os
import tempfile
import unittest

from program import TIMEOUT, start
from show import running_show, show


class EventsFile(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.file = os.path.join(folder.name, "events")

    def events(self):
        with open(self.file, encoding="utf-8") as file:
            return [json.loads(line) for line in file]

    def test_each_run_appends_its_event(self):
        for name in ("first", "second"):
            result = show(
                "--duration", "0.1", "--present", "modal",
                "--event", name, "--events", self.file,
            )
            self.assertEqual(result.returncode, 0)
        self.assertEqual([event["event"] for event in self.events()], ["first", "second"])
        for event in self.events():
            self.assertRegex(event["time"], r"\A\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z\Z")
            # The countdown takes 0.1 s. The library records the event 0.5 s after the countdown.
            self.assertGreaterEqual(event["seconds"], 0.6)

    def test_run_in_skip_mode_appends_no_event(self):
        show("--mode", "skip", "--skip-after", "0", "--present", "modal", "--events", self.file)
        self.assertEqual(self.events(), [])

    def test_event_is_appended_even_if_no_program_reads_the_output(self):
        with running_show("covered", "--duration", "0.3", "--events", self.file) as process:
            process.stdout.close()
            self.assertEqual(process.wait(TIMEOUT), 0)
        self.assertEqual([event["event"] for event in self.events()], ["launch_end"])

    def test_events_file_contains_only_the_event_if_standard_output_is_closed(self):
        # If the program opened the file as descriptor 1, its output would also go to the file.
        process = start(
            "show", "--display", "headless", "--duration", "0.1", "--present", "modal",
            "--events", self.file, preexec_fn=lambda: os.close(1),
        )
        process.communicate(timeout=TIMEOUT)
        self.assertEqual(process.returncode, 0)
        self.assertEqual([event["event"] for event in self.events()], ["launch_end"])

    def test_full_disk_makes_the_run_fail_but_the_event_is_reported(self):
        result = show("--duration", "0.1", "--events", "/dev/full")
        self.assertEqual(result.returncode, 1)
        self.assertIn("event recorded: launch_end", result.stdout)
        self.assertIn("/dev/full", result.stderr.splitlines()[-1])


if __name__ == "__main__":
    unittest.main()
