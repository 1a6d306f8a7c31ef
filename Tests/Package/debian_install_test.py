#!/usr/bin/env python3
"""The Debian packages install, serve and leave cleanly. They are installed on this very system, and
removed from it again; skipped where that cannot be done, or would do harm."""

import fcntl
import os
import sys
import tempfile
import time
import unittest

from debian import PACKAGES, contents, is_installed, made_packages
from package import CC, CONSUMERS, PATIENCE, RUN, SOURCE, STRICT
from package import cmake_build, fresh_folder, pkg_config, run, try_run

SKIPPED = 77
LOCK = os.path.join(tempfile.gettempdir(), f"vellaunchscreen-{os.geteuid()}.lock")


def why_not():
    """Why the packages cannot be installed here; none if they can."""
    if os.geteuid() != 0:
        return "only root can install packages"
    present = [package for package in PACKAGES if is_installed(package)]
    return f"this system has {', '.join(present)} already" if present else None


def dpkg(*arguments):
    """Runs dpkg, as soon as nobody else does; answers what it complained about."""
    give_up = time.monotonic() + PATIENCE
    while True:
        done = try_run("dpkg", *arguments, LC_ALL="C", DEBIAN_FRONTEND="noninteractive")
        if "locked by another process" not in done.stderr or time.monotonic() > give_up:
            break
        time.sleep(0.2)
    if done.returncode != 0:
        raise AssertionError(f"dpkg {arguments}\n{done.stdout}{done.stderr}")
    return done.stderr


class DebianInstallTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        made = made_packages()
        cls.names = set().union(*map(contents, made.values()))
        cls.addClassCleanup(cls.remove)
        cls.complaints = dpkg("--install", *made.values())

    @classmethod
    def remove(cls):
        present = [package for package in PACKAGES if is_installed(package)]
        if present:
            dpkg("--purge", *present)

    def test_1_installing_leaves_nothing_to_complain_about(self):
        self.assertEqual(self.complaints, "")
        self.assertTrue(all(map(is_installed, PACKAGES)))

    def test_2_a_host_in_c99_builds_and_runs_to_the_event(self):
        program = fresh_folder("debian_c") / "host"
        flags = pkg_config("--cflags", "--libs")
        run(CC, "-std=c99", *STRICT, CONSUMERS / "host.c", *flags, "-o", program)
        self.assertEqual(run(program), RUN)

    def test_3_a_cmake_project_builds_and_runs_to_the_event(self):
        folder = fresh_folder("debian_cmake")
        cmake_build("find_package", folder)
        self.assertIn("_DIR:PATH=/usr/lib", (folder / "CMakeCache.txt").read_text(encoding="utf-8"))
        self.assertEqual(run(folder / "host_cpp"), RUN)
        self.assertEqual(run(folder / "host_c"), RUN)

    def test_4_the_program_plays_a_script(self):
        script = SOURCE / "Examples/scenarios/normal-run.json"
        self.assertIn("launch_end", run("/usr/bin/launchscreen", "play", script))

    def test_5_removing_leaves_nothing_behind(self):
        self.assertEqual(dpkg("--purge", *PACKAGES), "")
        self.assertFalse(any(map(is_installed, PACKAGES)))
        ours = {name for name in self.names if "launchscreen" in name.lower()}
        self.assertEqual({name for name in ours if os.path.lexists(name)}, set())
        self.assertNotIn("VelLaunchScreen", run("/sbin/ldconfig", "--print-cache"))


def main():
    # For another build this test may be at it just now, on the same system.
    with open(LOCK, "a", encoding="utf-8") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        if reason := why_not():
            print("skipped:", reason)
            sys.exit(SKIPPED)
        unittest.main(failfast=True)


if __name__ == "__main__":
    main()
