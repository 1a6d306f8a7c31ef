#!/usr/bin/env python3
"""Tests that `launchscreen show` restores the window before a signal ends the program."""

import signal
import unittest

from show import reports, running_show, wait_for_end


class Signals(unittest.TestCase):
    def test_signal_restores_the_window_before_the_program_ends(self):
        for sent_signal in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            for arguments in ([], ["--content-controller"]):
                with self.subTest(signal=sent_signal, arguments=arguments):
                    with running_show("controls removed", "--duration", "60", *arguments) as process:
                        process.send_signal(sent_signal)
                        status, output = wait_for_end(process)
                    self.assertEqual(status, 128 + sent_signal)
                    self.assertIn("controls restored", reports(output))
                    self.assertEqual(reports(output)[-1], "uncovered")
                    self.assertNotIn("event recorded", output)

    def test_signal_dismisses_a_modal_window_and_a_sheet(self):
        for presentation in ("modal", "sheet"):
            with self.subTest(presentation):
                with running_show("covered", "--duration", "60", "--present", presentation,
                                  "--content-controller") as process:
                    process.send_signal(signal.SIGTERM)
                    status, output = wait_for_end(process)
                self.assertEqual(status, 128 + signal.SIGTERM)
                self.assertEqual(reports(output)[-2:], ["dismissed", "uncovered"])

    def test_signal_after_the_dismissal_does_not_dismiss_again(self):
        with running_show("dismissed", "--duration", "0.1") as process:
            process.send_signal(signal.SIGINT)
            status, output = wait_for_end(process)
        self.assertEqual(status, 128 + signal.SIGINT)
        self.assertEqual(reports(output).count("dismissed"), 1)
        self.assertEqual(reports(output)[-1], "uncovered")


if __name__ == "__main__":
    unittest.main()
