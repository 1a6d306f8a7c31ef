#!/usr/bin/env python3
"""Runs Doxygen on the public headers and checks the HTML pages that Doxygen writes."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

from docs import ROOT


def doxygen(folder, *settings):
    """Runs Doxygen with the Doxyfile and additional settings. Doxygen writes into `folder`."""
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

    def test_doxygen_writes_the_reference_without_warnings(self):
        result = doxygen(self.folder)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        pages = {page.name for page in (self.folder / "html").iterdir()}
        for page in ("classvel_1_1LaunchScreenManager.html", "structVelCallbacks.html"):
            self.assertIn(page, pages)

    def test_the_reference_has_the_comments_of_the_c_header(self):
        doxygen(self.folder)
        page = (self.folder / "html/Bindings_2C_2vel__launch__screen_8h.html").read_text(encoding="utf-8")
        self.assertIn("creates a launch screen for a window and stores its handle", page)

    # Shows that `test_doxygen_writes_the_reference_without_warnings` can fail.
    def test_doxygen_warns_about_a_faulty_comment(self):
        faulty_header = self.folder / "faulty.h"
        faulty_header.write_text("/// \\param missing Not a parameter.\nvoid operation(int value);\n")
        result = doxygen(self.folder, f"INPUT += {faulty_header}")
        self.assertIn("warning", result.stderr)


if __name__ == "__main__":
    unittest.main()
