#!/usr/bin/env python3
"""Builds CMake projects that find the installed library with find_package."""

import unittest

from package import CONSUMERS, EXPECTED_OUTPUT, PREFIX, cmake_build, make_folder, run, try_run


class FindPackageTest(unittest.TestCase):
    def test_a_cpp_host_and_a_c_host_print_the_expected_output(self):
        folder = make_folder("find_package")
        cmake_build("find_package", folder, f"-DCMAKE_PREFIX_PATH={PREFIX}")
        self.assertEqual(run(folder / "host_cpp"), EXPECTED_OUTPUT)
        self.assertEqual(run(folder / "host_c"), EXPECTED_OUTPUT)

    def test_cmake_fails_if_a_host_requests_a_later_library_version(self):
        project = make_folder("find_later")
        text = (CONSUMERS / "find_package/CMakeLists.txt").read_text(encoding="utf-8")
        (project / "CMakeLists.txt").write_text(text.replace("1.0", "2.0"), encoding="utf-8")
        build = project / "build"
        result = try_run("cmake", "-S", project, "-B", build, f"-DCMAKE_PREFIX_PATH={PREFIX}")
        self.assertNotEqual(result.returncode, 0)
        self.assertIn('compatible with requested version "2.0"', result.stderr)


if __name__ == "__main__":
    unittest.main()
