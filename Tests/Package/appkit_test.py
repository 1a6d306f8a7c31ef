#!/usr/bin/env python3
"""Tests the components AppKit and ObjectiveC of the installed CMake package. The tests build hosts: programs
that use the library. The hosts run without a display, so they can only check that AppKit and the
Objective-C interface are linked."""

import os
import re
import unittest

from package import BUILD, CONSUMERS, PREFIX, cmake_build, make_folder, run, try_run

HEADERS = PREFIX / "include/VelLaunchScreen"


class AppKitTest(unittest.TestCase):
    def test_hosts_in_c_and_objective_c_build_and_use_appkit(self):
        folder = make_folder("appkit")
        cmake_build("appkit", folder, f"-DCMAKE_PREFIX_PATH={PREFIX}")
        os.environ.pop("DISPLAY", None)
        output = run(folder / "host_appkit", HOME=str(folder))
        self.assertIn("AppKit cannot open the display", output)
        output = run(folder / "host_objc", HOME=str(folder))
        self.assertEqual(output, "engine launch_screen, has no manager\n")

    def check_that_the_component_appkit_is_not_found(self, reason, prefix, *settings):
        folder = make_folder("appkit_not_found")
        result = try_run(
            "cmake", "-S", CONSUMERS / "appkit", "-B", folder, f"-DCMAKE_PREFIX_PATH={prefix}", *settings
        )
        self.assertNotEqual(result.returncode, 0)
        message = " ".join(result.stderr.split())
        self.assertIn(f"The component AppKit is not available. Missing: {reason}", message)

    def test_the_component_appkit_is_not_found_without_gnustep_config(self):
        # An empty path simulates a missing gnustep-config.
        self.check_that_the_component_appkit_is_not_found("gnustep-config", PREFIX, "-DVEL_GNUSTEP_CONFIG=")

    def test_the_component_appkit_is_not_found_if_the_appkit_back_end_is_not_installed(self):
        prefix = make_folder("without_appkit")
        # The AppKit back end is in a different installation component: `appkit`.
        for component in ("runtime", "development"):
            run("cmake", "--install", BUILD, "--component", component, "--prefix", prefix)
        self.check_that_the_component_appkit_is_not_found("the AppKit back end", prefix)

    def test_objective_c_h_includes_exactly_the_installed_headers(self):
        text = (HEADERS / "ObjectiveC.h").read_text(encoding="utf-8")
        included_headers = set(re.findall(r'#import "Bindings/ObjectiveC/(.+)"', text))
        installed_headers = {header.name for header in (HEADERS / "Bindings/ObjectiveC").iterdir()}
        self.assertEqual(installed_headers, included_headers)


if __name__ == "__main__":
    unittest.main()
