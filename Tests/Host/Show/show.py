"""Runs `launchscreen show`; shared by the tests of it."""

import contextlib
import re

from program import PATIENCE, run, start

LOG_LINE = r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} launchscreen\[\d+:\d+\] "
HAPPENING = re.compile(r" *(\d+\.\d{3}) s  (.+)")


def show(*arguments, **settings):
    return run("show", "--display", "headless", *arguments, **settings)


def happenings(output):
    """What happened, without the times, which must not go back."""
    found = [HAPPENING.fullmatch(line) for line in output.splitlines()]
    assert all(found), output
    times = [float(line[1]) for line in found]
    assert times == sorted(times), output
    return [line[2] for line in found]


@contextlib.contextmanager
def showing(until, *arguments, **settings):
    """The program, once it has printed a line with `until`; gone when the block ends."""
    process = start("show", "--display", "headless", *arguments, **settings)
    try:
        process.read_so_far = b""
        while until.encode() not in process.read_so_far:
            line = process.stdout.readline()
            assert line, process.read_so_far
            process.read_so_far += line
        yield process
    finally:
        process.kill()
        process.wait()
        for stream in (process.stdin, process.stdout, process.stderr):
            if stream:
                stream.close()


def ended(process):
    """The status and all the output of a process that `showing` started."""
    rest, _ = process.communicate(timeout=PATIENCE)
    return process.returncode, (process.read_so_far + rest).decode()
