#!/usr/bin/env python3
"""Tests of include_rule.py. The include rule says which folders may include which headers."""

import tempfile
import unittest
from pathlib import Path

import include_rule

# The paths and texts of files that follow the include rule.
VALID_FILES = {
    "Platform/Foundation/NSObject.h": "",
    "Platform/WindowSystem/WindowSystem.h": '#include "Platform/Foundation/NSObject.h"\n',
    "Platform/WindowSystem/Headless/HeadlessWindow.h": "",
    "Platform/WindowSystem/Backends/Backends.h": "",
    "Platform/Dispatch/Dispatch.h": "",
    "Platform/AppKit/NSWindow.h": '#include "Platform/WindowSystem/WindowSystem.h"\n',
    "HostInterfaces/MetricsCenter.h": "",
    "LaunchScreen/View/Cover.h": "",
    "Host/main.cpp": '#include "LaunchScreen/View/Cover.h"\n#include <CLI/CLI.hpp>\n',
}


class IncludeRuleTest(unittest.TestCase):
    def faults_after_adding(self, path, text):
        with tempfile.TemporaryDirectory() as root:
            for name, content in {**VALID_FILES, path: text}.items():
                file = Path(root, name)
                file.parent.mkdir(parents=True, exist_ok=True)
                file.write_text(content, encoding="utf-8")
            return list(include_rule.faults(root))

    def assert_fault(self, path, text, line_number=1):
        faults = self.faults_after_adding(path, text)
        self.assertEqual(len(faults), 1, faults)
        self.assertTrue(faults[0].startswith(f"{path}:{line_number}: "), faults[0])

    def assert_no_fault(self, path, text):
        self.assertEqual(self.faults_after_adding(path, text), [])

    def test_includes_that_the_include_rule_does_not_allow_are_faults(self):
        for path, included_path in (
            ("Platform/Foundation/A.cpp", "Platform/Dispatch/Dispatch.h"),
            ("Platform/Foundation/A.cpp", "Platform/WindowSystem/WindowSystem.h"),
            ("Platform/Dispatch/A.cpp", "Platform/AppKit/NSWindow.h"),
            ("Platform/WindowSystem/A.h", "Platform/WindowSystem/Headless/HeadlessWindow.h"),
            ("Platform/WindowSystem/Headless/A.h", "Platform/AppKit/NSWindow.h"),
            ("Platform/AppKit/A.cpp", "Platform/WindowSystem/Headless/HeadlessWindow.h"),
            ("Platform/AppKit/A.cpp", "HostInterfaces/MetricsCenter.h"),
            ("HostInterfaces/A.h", "LaunchScreen/View/Cover.h"),
            ("LaunchScreen/A.cpp", "Platform/WindowSystem/WindowSystem.h"),
            ("LaunchScreen/View/A.cpp", "Platform/WindowSystem/Backends/Backends.h"),
            ("Bindings/C/A.cpp", "Host/main.cpp"),
        ):
            with self.subTest(path=path, included_path=included_path):
                self.assert_fault(path, f'#include "{included_path}"\n')

    def test_includes_that_the_include_rule_allows_are_not_faults(self):
        for path, included_path in (
            ("Platform/Dispatch/A.cpp", "Platform/Foundation/NSObject.h"),
            ("Platform/AppKit/A.cpp", "Platform/WindowSystem/WindowSystem.h"),
            ("LaunchScreen/A.cpp", "LaunchScreen/View/Cover.h"),
            ("LaunchScreen/A.cpp", "HostInterfaces/MetricsCenter.h"),
            ("Bindings/C/A.cpp", "Platform/WindowSystem/Backends/Backends.h"),
            ("Tests/AppKit/A.cpp", "Platform/WindowSystem/Headless/HeadlessWindow.h"),
        ):
            with self.subTest(path=path, included_path=included_path):
                self.assert_no_fault(path, f'#include "{included_path}"\n')

    def test_a_fault_contains_its_line_number(self):
        text = "/* one\n two */\n#  include  \"Host/main.cpp\"\n"
        self.assert_fault("LaunchScreen/A.cpp", text, line_number=3)

    def test_includes_of_project_headers_must_be_quoted_paths_from_the_root(self):
        self.assert_fault("Platform/AppKit/A.cpp", '#include "NSWindow.h"\n')
        self.assert_fault("Platform/AppKit/A.cpp", "#include <Platform/AppKit/NSWindow.h>\n")

    def test_only_some_folders_may_include_posix_headers(self):
        self.assert_fault("Platform/Foundation/A.cpp", "#include <unistd.h>\n")
        self.assert_fault("Host/A.cpp", "#include <sys/ioctl.h>\n")
        self.assert_no_fault("Platform/Foundation/Linux/A.cpp", "#include <sys/epoll.h>\n")
        self.assert_no_fault("Host/Posix/A.cpp", "#include <poll.h>\n")

    def test_only_some_folders_may_include_headers_of_other_projects(self):
        self.assert_fault("Platform/AppKit/A.cpp", "#include <xcb/xcb.h>\n")
        self.assert_fault("Host/A.cpp", "#include <xcb/xcb.h>\n")
        self.assert_fault("LaunchScreen/A.cpp", "#include <nlohmann/json.hpp>\n")
        self.assert_no_fault("Platform/WindowSystem/X11/A.cpp", "#include <xcb/xcb.h>\n")
        self.assert_no_fault("Platform/AppKit/A.cpp", "#include <vector>\n")

    def test_only_the_folder_backends_may_test_platform_macros(self):
        for line in (
            "#ifdef __APPLE__",
            "#ifndef _WIN32",
            "#if defined(__linux__) && 1",
            "# elif defined __unix__",
            "#if TARGET_OS_OSX",
        ):
            with self.subTest(line=line):
                self.assert_fault("Platform/AppKit/A.cpp", line + "\n")
                self.assert_no_fault("Platform/WindowSystem/Backends/A.cpp", line + "\n")
        self.assert_no_fault("Platform/AppKit/A.cpp", "#ifdef VEL_HAS_X11\n")

    def test_comments_are_ignored(self):
        self.assert_no_fault("Platform/AppKit/A.cpp", '// #ifdef _WIN32\n/*\n#include "X.h"\n*/\n')

    def test_a_file_outside_the_listed_folders_is_a_fault(self):
        self.assert_fault("Elsewhere/A.cpp", "\n")


if __name__ == "__main__":
    unittest.main()
