#!/usr/bin/env python3
"""Checks whether CMake builds a shared or a static library."""

import json
import unittest

from package import CONSUMERS, SOURCE, make_folder, run

ONLY_THE_LIBRARY = ("-DVEL_TESTS=OFF", "-DVEL_HOST=OFF")


def library_type(source, *settings):
    """Configures a project. Returns the type of the library's target from CMake's file API."""
    folder = make_folder("linkage")
    api = folder / ".cmake" / "api" / "v1"
    (api / "query" / "codemodel-v2").mkdir(parents=True)
    run("cmake", "-S", source, "-B", folder, *settings)
    (target_file,) = (api / "reply").glob("target-VelLaunchScreen-*.json")
    return json.loads(target_file.read_text())["type"]


class LinkageTest(unittest.TestCase):
    def test_the_library_is_shared_by_default(self):
        self.assertEqual(library_type(SOURCE, *ONLY_THE_LIBRARY), "SHARED_LIBRARY")

    def test_the_library_is_static_if_build_shared_libs_is_off(self):
        static_type = library_type(SOURCE, *ONLY_THE_LIBRARY, "-DBUILD_SHARED_LIBS=OFF")
        self.assertEqual(static_type, "STATIC_LIBRARY")

    def test_the_library_is_static_in_a_parent_project_unless_build_shared_libs_is_on(self):
        arguments = (CONSUMERS / "subproject", f"-DVEL_SOURCE={SOURCE}")
        self.assertEqual(library_type(*arguments), "STATIC_LIBRARY")
        self.assertEqual(library_type(*arguments, "-DBUILD_SHARED_LIBS=ON"), "SHARED_LIBRARY")


if __name__ == "__main__":
    unittest.main()
