"""Paths for the tests of the documents."""

import os
from pathlib import Path

# The path of the program `launchscreen`.
PROGRAM = os.environ["LAUNCHSCREEN"]
# The root folder of the repository.
ROOT = Path(__file__).resolve().parents[2]
