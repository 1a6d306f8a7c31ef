#!/usr/bin/env python3
"""Installs the Debian packages on this system, uses them, and removes them. The test is skipped
if the user is not root or if one of the packages is already installed."""

import fcntl
import os
import sys
import tempfile
import time
import unittest

from debian import PACKAGES, contents, is_installed, package_files
from package import CC, CONSUMERS, EXPECTED_OUTPUT, SOURCE, TIMEOUT, WARNING_FLAGS
from package import cmake_build, make_folder, pkg_config, run, try_run

SKIPPED_STATUS = 77  # SKIP_RETURN_CODE in CMakeLists.txt
TEST_LOCK = os.path.join(tempfile.gettempdir(), f"vellaunchscreen-{os.geteuid()}.lock")


def reason_to_skip():
    """Returns why the packages cannot be installed here, or None if the packages can be installed."""
    if os.geteuid() != 0:
        return "only root can install packages"
    installed_packages = [package for package in PACKAGES if is_installed(package)]
    if not installed_packages:
        return None
    return f"this system has {', '.join(installed_packages)} already"


def dpkg(*arguments):
    """Runs dpkg. Tries again while another process holds dpkg's lock. Returns what dpkg wrote to stderr."""
    deadline = time.monotonic() + TIMEOUT
    while True:
        result = try_run("dpkg", *arguments, LC_ALL="C", DEBIAN_FRONTEND="noninteractive")
        if "locked by another process" not in result.stderr or time.monotonic() > deadline:
            break
        time.sleep(0.2)
    if result.returncode != 0:
        raise AssertionError(f"dpkg {arguments}\n{result.stdout}{result.stderr}")
    return result.stderr


class DebianInstallTest(unittest.TestCase):
    """The tests run in the order of their numbers. All use the packages that setUpClass installs."""

    @classmethod
    def setUpClass(cls):
        packages = package_files()
        cls.installed_paths = set().union(*map(contents, packages.values()))
        cls.addClassCleanup(cls.remove)
        cls.messages = dpkg("--install", *packages.values())

    @classmethod
    def remove(cls):
        installed_packages = [package for package in PACKAGES if is_installed(package)]
        if installed_packages:
            dpkg("--purge", *installed_packages)

    def test_1_the_packages_install_without_messages(self):
        self.assertEqual(self.messages, "")
        self.assertTrue(all(map(is_installed, PACKAGES)))

    def test_2_pkg_config_finds_the_library(self):
        program = make_folder("debian_c") / "host"
        flags = pkg_config("--cflags", "--libs")
        run(CC, "-std=c99", *WARNING_FLAGS, CONSUMERS / "host.c", *flags, "-o", program)
        self.assertEqual(run(program), EXPECTED_OUTPUT)

    def test_3_cmake_finds_the_library(self):
        folder = make_folder("debian_cmake")
        cmake_build("find_package", folder)
        # CMake has found the library in /usr/lib, where the Debian packages install it.
        self.assertIn("_DIR:PATH=/usr/lib", (folder / "CMakeCache.txt").read_text(encoding="utf-8"))
        self.assertEqual(run(folder / "host_cpp"), EXPECTED_OUTPUT)
        self.assertEqual(run(folder / "host_c"), EXPECTED_OUTPUT)

    def test_4_the_program_plays_a_scenario(self):
        scenario = SOURCE / "Examples/scenarios/normal-run.json"
        self.assertIn("launch_end", run("/usr/bin/launchscreen", "play", scenario))

    def test_5_purging_leaves_no_files(self):
        self.assertEqual(dpkg("--purge", *PACKAGES), "")
        self.assertFalse(any(map(is_installed, PACKAGES)))
        # Folders that other packages share, such as /usr/lib, may remain.
        paths = {name for name in self.installed_paths if "launchscreen" in name.lower()}
        self.assertEqual({name for name in paths if os.path.lexists(name)}, set())
        self.assertNotIn("VelLaunchScreen", run("/sbin/ldconfig", "--print-cache"))


def main():
    # This test can run in two build folders at the same time. Only one of the two processes may install and
    # remove the packages.
    with open(TEST_LOCK, "a", encoding="utf-8") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        if reason := reason_to_skip():
            print("skipped:", reason)
            sys.exit(SKIPPED_STATUS)
        unittest.main(failfast=True)


if __name__ == "__main__":
    main()
