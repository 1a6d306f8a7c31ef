#!/usr/bin/env python3
"""Builds programs that use the library, without CMake and with the flags from pkg-config."""

import ctypes
import unittest

from package import CC, CONSUMERS, CXX, EXPECTED_OUTPUT, LIB, PREFIX, WARNING_FLAGS
from package import loader_environment, make_folder, pkg_config, run


class PkgConfigTest(unittest.TestCase):
    def build_and_run(self, *compile_command):
        program = make_folder("pkg_config") / "host"
        flags = pkg_config("--cflags", "--libs", prefix=PREFIX)
        run(*compile_command, *WARNING_FLAGS, *flags, "-o", program)
        self.assertEqual(run(program, **loader_environment(PREFIX)), EXPECTED_OUTPUT)

    def test_a_host_in_c99_records_the_launch_end_event(self):
        self.build_and_run(CC, "-std=c99", CONSUMERS / "host.c")

    def test_the_c99_host_also_works_if_it_is_compiled_as_cpp(self):
        # "-x none" ends the effect of "-x c++".
        self.build_and_run(CXX, "-std=c++11", "-x", "c++", CONSUMERS / "host.c", "-x", "none")

    def test_a_host_in_cpp_records_the_launch_end_event(self):
        self.build_and_run(CXX, "-std=c++20", CONSUMERS / "host.cpp")

    def test_pkg_config_and_the_library_report_the_same_major_and_minor_version(self):
        library = ctypes.CDLL(PREFIX / LIB / "libVelLaunchScreen.so")
        library.vel_version_number.restype = ctypes.c_double
        (version,) = pkg_config("--modversion", prefix=PREFIX)
        self.assertEqual(version.rsplit(".", 1)[0], str(library.vel_version_number()))


if __name__ == "__main__":
    unittest.main()
