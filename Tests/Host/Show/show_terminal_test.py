#!/usr/bin/env python3
"""`launchscreen show` on a terminal: one line, kept up to date."""

import fcntl
import os
import pty
import signal
import struct
import subprocess
import termios
import unittest

from program import PATIENCE, start


class Terminal:
    """A terminal, and the program on it as its foreground job; its log goes elsewhere."""

    def __init__(self, *arguments, columns=80):
        self.master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        # Ctrl-C drops what has been written and not yet read, also what a quick program answers to it.
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
            found = os.read(self.master, 4096)
        except OSError:  # the program has gone
            return False
        self.output += found.decode()
        return bool(found)

    def wait_for(self, text):
        while text not in self.output:
            assert self._read(), self.output

    def type(self, text):
        os.write(self.master, text.encode())

    def end(self):
        """The exit status, when all the output has been read."""
        while self._read():
            pass
        return self.process.wait(PATIENCE)


class LiveLine(unittest.TestCase):
    def test_run_takes_one_line(self):
        with Terminal("--duration", "0.5", columns=100) as terminal:
            self.assertEqual(terminal.end(), 0)
            self.assertEqual(terminal.output.count("\n"), 1)
            writings = terminal.output.removesuffix("\r\n").split("\r")
        self.assertTrue(all(len(writing) < 100 for writing in writings), writings)
        self.assertIn(f"  0.5 s left  [{'-' * 40}]", [writing.rstrip() for writing in writings])
        bars = [writing.count("#") for writing in writings if "s left" in writing]
        self.assertEqual(bars, sorted(bars))
        self.assertGreater(len(set(bars)), 3)
        self.assertRegex(
            writings[-1],
            r"s  controls given back, dismissed, event recorded: launch_end, uncovered *\Z",
        )

    def test_line_is_ended_before_a_signal_ends_the_program(self):
        with Terminal("--duration", "60") as terminal:
            terminal.wait_for("s left")
            terminal.type("\x03")  # Ctrl-C
            self.assertEqual(terminal.end(), 128 + signal.SIGINT)
        self.assertRegex(terminal.output, r"controls given back, uncovered\r\n\Z")

    def test_enter_dismisses_in_skip_mode(self):
        with Terminal("--mode", "skip", "--duration", "60") as terminal:
            terminal.wait_for("press Enter to dismiss")
            terminal.type("\n")
            self.assertEqual(terminal.end(), 0)
        self.assertRegex(terminal.output, r"dismissed, uncovered *\r\n\Z")

    def test_narrow_terminal_keeps_to_one_line(self):
        with Terminal("--duration", "0.2", columns=30) as terminal:
            self.assertEqual(terminal.end(), 0)
        self.assertEqual(terminal.output.count("\n"), 1)
        self.assertTrue(all(len(writing) < 30 for writing in terminal.output.split("\r")))


if __name__ == "__main__":
    unittest.main()
