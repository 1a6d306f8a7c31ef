#!/usr/bin/env python3
"""Tests the line that `launchscreen show` keeps up to date on a terminal."""

import fcntl
import os
import pty
import signal
import struct
import subprocess
import termios
import unittest

from program import TIMEOUT, start


class Terminal:
    """A terminal in which `launchscreen show` runs. The program's standard error is discarded."""

    def __init__(self, *arguments, columns=80):
        self.master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        # Without NOFLSH, Ctrl-C would discard output that the test has not read yet.
        attributes = termios.tcgetattr(slave)
        attributes[3] |= termios.NOFLSH
        termios.tcsetattr(slave, termios.TCSANOW, attributes)
        self.process = start(
            "show", "--display", "headless", *arguments,
            stdin=slave, stdout=slave, stderr=subprocess.DEVNULL, start_new_session=True,
            preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0),
        )
        os.close(slave)
        self.output = ""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        os.close(self.master)

    def _read(self):
        try:
            data = os.read(self.master, 4096)
        except OSError:  # the program has ended
            return False
        self.output += data.decode()
        return bool(data)

    def wait_for(self, text):
        while text not in self.output:
            assert self._read(), self.output

    def type(self, text):
        os.write(self.master, text.encode())

    def wait_for_end(self):
        """Reads the rest of the output and returns the exit status."""
        while self._read():
            pass
        return self.process.wait(TIMEOUT)


class TerminalLine(unittest.TestCase):
    def test_output_uses_only_one_line_of_the_terminal(self):
        with Terminal("--duration", "0.5", columns=100) as terminal:
            self.assertEqual(terminal.wait_for_end(), 0)
            self.assertEqual(terminal.output.count("\n"), 1)
            lines = terminal.output.removesuffix("\r\n").split("\r")
        self.assertTrue(all(len(line) < 100 for line in lines), lines)
        self.assertIn(f"  0.5 s left  [{'-' * 40}]", [line.rstrip() for line in lines])
        bar_lengths = [line.count("#") for line in lines if "s left" in line]
        self.assertEqual(bar_lengths, sorted(bar_lengths))
        self.assertGreater(len(set(bar_lengths)), 3)
        self.assertRegex(
            lines[-1],
            r"s  controls restored, dismissed, event recorded: launch_end, uncovered *\Z",
        )

    def test_line_ends_with_a_newline_if_a_signal_ends_the_program(self):
        with Terminal("--duration", "60") as terminal:
            terminal.wait_for("s left")
            terminal.type("\x03")  # Ctrl-C
            self.assertEqual(terminal.wait_for_end(), 128 + signal.SIGINT)
        self.assertRegex(terminal.output, r"controls restored, uncovered\r\n\Z")

    def test_enter_key_dismisses_the_launch_screen_in_skip_mode(self):
        with Terminal("--mode", "skip", "--duration", "60") as terminal:
            terminal.wait_for("press Enter to dismiss")
            terminal.type("\n")
            self.assertEqual(terminal.wait_for_end(), 0)
        self.assertRegex(terminal.output, r"dismissed, uncovered *\r\n\Z")

    def test_output_uses_only_one_line_of_a_narrow_terminal(self):
        with Terminal("--duration", "0.2", columns=30) as terminal:
            self.assertEqual(terminal.wait_for_end(), 0)
        self.assertEqual(terminal.output.count("\n"), 1)
        self.assertTrue(all(len(line) < 30 for line in terminal.output.split("\r")))


if __name__ == "__main__":
    unittest.main()
