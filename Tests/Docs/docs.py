"""Paths for the tests of the documents."""

import os
from pathlib import Path

# The program launchscreen.
PROGRAM = os.environ["LAUNCHSCREEN"]
ROOT = Path(__file__).resolve().parents[2]
