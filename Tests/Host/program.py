"""Runs the program; shared by the tests of it."""

import os
import subprocess
from pathlib import Path

PROGRAM = os.environ["LAUNCHSCREEN"]
ROOT = Path(__file__).resolve().parents[2]
# Far beyond what a run takes, also on a busy machine and under a sanitizer.
PATIENCE = 120

_environment = {name: value for name, value in os.environ.items() if name != "DISPLAY"}


def run(*arguments, **settings):
    """Runs the program to its end; answers its status and what it wrote, as text."""
    settings.setdefault("stdin", subprocess.DEVNULL)
    return subprocess.run(
        [PROGRAM, *arguments],
        capture_output=True,
        text=True,
        timeout=PATIENCE,
        env=_environment,
        check=False,
        **settings,
    )


def start(*arguments, **settings):
    """Starts the program; what it writes can be read from the answer."""
    settings.setdefault("stdin", subprocess.DEVNULL)
    settings.setdefault("stdout", subprocess.PIPE)
    settings.setdefault("stderr", subprocess.PIPE)
    # Unbuffered, so that no line is held back between readline and communicate.
    return subprocess.Popen([PROGRAM, *arguments], bufsize=0, env=_environment, **settings)
