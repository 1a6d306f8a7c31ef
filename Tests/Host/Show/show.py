"""Runs `launchscreen show` for its tests.

The parameter `settings` holds keyword arguments for `subprocess`. By default, the standard input is /dev/null.
"""

import contextlib
import re

from program import TIMEOUT, run, start

# The beginning of a log line: the time, the program, its process and its thread.
LOG_PREFIX = r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} launchscreen\[\d+:\d+\] "
# A report: its time and its text.
REPORT = re.compile(r" *(\d+\.\d{3}) s  (.+)")


def show(*arguments, **settings):
    return run("show", "--display", "headless", *arguments, **settings)


def reports(output):
    """Returns the text of each report in `output`. Fails if the times are not in order."""
    lines = [REPORT.fullmatch(line) for line in output.splitlines()]
    assert all(lines), output
    times = [float(line[1]) for line in lines]
    assert times == sorted(times), output
    return [line[2] for line in lines]


@contextlib.contextmanager
def running_show(expected_output, *arguments, **settings):
    """Starts the program and waits until it prints `expected_output`. Kills the program after the `with` block."""
    process = start("show", "--display", "headless", *arguments, **settings)
    try:
        process.received_output = b""
        while expected_output.encode() not in process.received_output:
            line = process.stdout.readline()
            assert line, process.received_output
            process.received_output += line
        yield process
    finally:
        process.kill()
        process.wait()
        for stream in (process.stdin, process.stdout, process.stderr):
            if stream:
                stream.close()


def wait_for_end(process):
    """Waits until a process from `running_show` ends. Returns the exit status and all output."""
    remaining_output, _ = process.communicate(timeout=TIMEOUT)
    return process.returncode, (process.received_output + remaining_output).decode()
