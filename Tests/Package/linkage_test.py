#!/usr/bin/env python3
"""Checks whether CMake builds a shared or a static library."""

import json
import unittest

from package import CONSUMERS, SOURCE, fresh_folder, run

LIBRARY_ALONE = ("-DVEL_TESTS=OFF", "-DVEL_HOST=OFF")


def kind(source, *settings):
    """Returns the type of the library's target in CMake's file API."""
    folder = fresh_folder("linkage")
    api = folder / ".cmake" / "api" / "v1"
    (api / "query" / "codemodel-v2").mkdir(parents=True)
    run("cmake", "-S", source, "-B", folder, *settings)
    (target,) = (api / "reply").glob("target-VelLaunchScreen-*.json")
    return json.loads(target.read_text())["type"]


class LinkageTest(unittest.TestCase):
    def test_it_is_shared_by_default(self):
        self.assertEqual(kind(SOURCE, *LIBRARY_ALONE), "SHARED_LIBRARY")

    def test_it_is_static_without_build_shared_libs(self):
        static = kind(SOURCE, *LIBRARY_ALONE, "-DBUILD_SHARED_LIBS=OFF")
        self.assertEqual(static, "STATIC_LIBRARY")

    def test_a_subproject_follows_the_parent_project(self):
        project = (CONSUMERS / "subproject", f"-DVEL_SOURCE={SOURCE}")
        self.assertEqual(kind(*project), "STATIC_LIBRARY")
        self.assertEqual(kind(*project, "-DBUILD_SHARED_LIBS=ON"), "SHARED_LIBRARY")


if __name__ == "__main__":
    unittest.main()
