"""Runs `launchscreen show` for its tests.

`settings` are keyword arguments for `program.run` or `program.start`.
"""

import contextlib
import re

from program import TIMEOUT, run, start

# The beginning of a log line: the time, the program's name, the process ID and the thread ID.
LOG_PREFIX = r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} launchscreen\[\d+:\d+\] "
# A report is a line of output with a time and a text.
REPORT = re.compile(r" *(\d+\.\d{3}) s  (.+)")


def show(*arguments, **settings):
    return run("show", "--display", "headless", *arguments, **settings)


def reports(output):
    """Returns the text of each report in `output`. Fails if the times are not in order."""
    matches = [REPORT.fullmatch(line) for line in output.splitlines()]
    assert all(matches), output
    times = [float(match[1]) for match in matches]
    assert times == sorted(times), output
    return [match[2] for match in matches]


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
