"""Runs the program `launchscreen` for its tests."""

import os
import subprocess
from pathlib import Path

PROGRAM = os.environ["LAUNCHSCREEN"]
ROOT = Path(__file__).resolve().parents[2]
# The time limit for a run, in seconds. It is much longer than any run, even on a busy machine and
# with a sanitizer.
TIMEOUT = 120

# Omits the display variables, so that the program does not open windows on the developer's display.
_environment = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY")}


def run(*arguments, **settings):
    """Runs the program to its end. Returns the exit status and the output as text."""
    settings.setdefault("stdin", subprocess.DEVNULL)
    return subprocess.run(
        [PROGRAM, *arguments],
        capture_output=True,
        text=True,
        timeout=TIMEOUT,
        env=_environment,
        check=False,
        **settings,
    )


def start(*arguments, **settings):
    """Starts the program and returns its process. The caller can read the output of the process."""
    settings.setdefault("stdin", subprocess.DEVNULL)
    settings.setdefault("stdout", subprocess.PIPE)
    settings.setdefault("stderr", subprocess.PIPE)
    # `bufsize=0` turns off the buffer. With a buffer, `readline` would read ahead, and `communicate` would
    # not return that data.
    return subprocess.Popen([PROGRAM, *arguments], bufsize=0, env=_environment, **settings)
