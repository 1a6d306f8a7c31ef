#!/usr/bin/env python3
"""Whether the library is a shared or a static one, the project decides that it is built in."""

import json
import unittest

from package import CONSUMERS, SOURCE, fresh_folder, run

LIBRARY_ALONE = ("-DVEL_TESTS=OFF", "-DVEL_HOST=OFF")


def kind(source, *settings):
    """What CMake makes of the library, in its own words."""
    folder = fresh_folder("linkage")
    api = folder / ".cmake" / "api" / "v1"
    (api / "query" / "codemodel-v2").mkdir(parents=True)
    run("cmake", "-S", source, "-B", folder, *settings)
    (target,) = (api / "reply").glob("target-VelLaunchScreen-*.json")
    return json.loads(target.read_text())["type"]


class LinkageTest(unittest.TestCase):
    def test_by_itself_it_is_shared(self):
        self.assertEqual(kind(SOURCE, *LIBRARY_ALONE), "SHARED_LIBRARY")

    def test_by_itself_it_is_static_on_request(self):
        static = kind(SOURCE, *LIBRARY_ALONE, "-DBUILD_SHARED_LIBS=OFF")
        self.assertEqual(static, "STATIC_LIBRARY")

    def test_in_a_project_it_is_what_that_makes_of_its_libraries(self):
        project = (CONSUMERS / "subproject", f"-DVEL_SOURCE={SOURCE}")
        self.assertEqual(kind(*project), "STATIC_LIBRARY")
        self.assertEqual(kind(*project, "-DBUILD_SHARED_LIBS=ON"), "SHARED_LIBRARY")


if __name__ == "__main__":
    unittest.main()
