"""Where the documents are, and what they are held against; shared by the tests of them."""

import os
from pathlib import Path

PROGRAM = os.environ["LAUNCHSCREEN"]
ROOT = Path(__file__).resolve().parents[2]
