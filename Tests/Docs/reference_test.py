#!/usr/bin/env python3
"""Doxygen makes the reference of the public headers, and has nothing to complain about."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

from docs import ROOT


def doxygen(folder, *settings):
    """Runs doxygen on the project, into a folder; answers the process."""
    settings = [f"@INCLUDE = {ROOT / 'Doxyfile'}", f"OUTPUT_DIRECTORY = {folder}", *settings]
    return subprocess.run(
        [os.environ["DOXYGEN"], "-"],
        input="\n".join(settings),
        cwd=ROOT,
        capture_output=True,
        text=True,
        check=False,
    )


class Reference(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def test_is_made_without_warnings(self):
        made = doxygen(self.folder)
        self.assertEqual((made.returncode, made.stderr), (0, ""))
        pages = {page.name for page in (self.folder / "html").iterdir()}
        for page in ("classvel_1_1LaunchScreenManager.html", "structVelCallbacks.html"):
            self.assertIn(page, pages)

    def test_has_the_comments_of_the_headers_in_c(self):
        doxygen(self.folder)
        page = (self.folder / "html/Bindings_2C_2vel__launch__screen_8h.html").read_text(encoding="utf-8")
        self.assertIn("Makes a launch screen for a window and stores it", page)

    def test_would_have_warned(self):
        faulty = self.folder / "faulty.h"
        faulty.write_text("/// \\param nothing that there is\nvoid operation(int there);\n")
        made = doxygen(self.folder, f"INPUT += {faulty}")
        self.assertIn("warning", made.stderr)


if __name__ == "__main__":
    unittest.main()
