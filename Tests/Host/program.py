"""Runs the program `launchscreen` in tests."""

import os
import subprocess
from pathlib import Path

PROGRAM = os.environ["LAUNCHSCREEN"]
ROOT = Path(__file__).resolve().parents[2]
# The time limit for a run, in seconds. It is long enough for a busy machine and a sanitizer.
TIMEOUT = 120

# Omits the display variables, so that the program does not open windows on the developer's display.
_environment = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY")}


def run(*arguments, **settings):
    """Runs the program to its end. Returns a `subprocess.CompletedProcess` with text output."""
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
    # With a buffer, `readline` would read ahead. `communicate` would then lose the buffered data.
    return subprocess.Popen([PROGRAM, *arguments], bufsize=0, env=_environment, **settings)
