#!/usr/bin/env python3
"""Checks the exports and the dependencies of the shared library, and the installed headers."""

import os
import re
import unittest
from pathlib import Path

from package import CXX, LIB, PREFIX, run

LIBRARY = PREFIX / LIB / "libVelLaunchScreen.so"
HEADERS = PREFIX / "include"
EXPORTS = Path(__file__).resolve().parent / "exports.txt"

# The demangled names of a class's virtual tables, type information and thunks begin with these words.
CLASS_SYMBOL = re.compile(r"^(?:vtable|VTT|typeinfo name|typeinfo|(?:non-)?virtual thunk)(?: for| to) ")
# The name of a class, function or variable in namespace vel. In the name of a class member, this
# expression matches only the class.
VEL_NAME = re.compile(r"^vel::(?:detail::)?\w+")


def exported_names():
    """Returns the exported names. A class and its members count as one name."""
    names = set()
    for line in run("nm", "--dynamic", "--defined-only", "--demangle", LIBRARY).splitlines():
        name = CLASS_SYMBOL.sub("", line.split(maxsplit=2)[2])
        match = VEL_NAME.match(name)
        names.add(match.group() if match else name)
    return names


def dynamic_values(tag):
    """Returns the values of a tag in the library's dynamic section."""
    section = run("readelf", "--dynamic", "--wide", LIBRARY)
    return re.findall(rf"\({tag}\).*\[(.*)\]", section)


class LibraryTest(unittest.TestCase):
    def test_the_exports_are_those_in_exports_txt(self):
        listed_names = EXPORTS.read_text(encoding="utf-8").split()
        self.assertEqual(listed_names, sorted(listed_names))
        self.assertEqual(exported_names(), set(listed_names))

    def test_the_soname_has_the_major_version(self):
        self.assertEqual(dynamic_values("SONAME"), ["libVelLaunchScreen.so.1"])
        self.assertEqual(os.readlink(LIBRARY), "libVelLaunchScreen.so.1")
        self.assertEqual(os.readlink(LIBRARY.with_suffix(".so.1")), "libVelLaunchScreen.so.1.0.0")

    def test_the_library_depends_only_on_xcb_wayland_client_and_standard_libraries(self):
        needed_libraries = {name.split(".so")[0] for name in dynamic_values("NEEDED")}
        standard_libraries = {"libc", "libm", "libgcc_s", "libstdc++", "ld-linux-x86-64"}
        self.assertLessEqual(
            needed_libraries - standard_libraries,
            {"libxcb", "libxcb-randr", "libxcb-render", "libxcb-shape", "libwayland-client"},
        )

    def test_the_library_contains_no_search_path_for_libraries(self):
        self.assertEqual(dynamic_values("RPATH") + dynamic_values("RUNPATH"), [])


class HeadersTest(unittest.TestCase):
    def test_all_installed_cpp_headers_are_included_by_the_umbrella_header(self):
        umbrella_header = HEADERS / "VelLaunchScreen/VelLaunchScreen.h"
        make_rule = run(CXX, "-std=c++20", "-MM", f"-I{umbrella_header.parent}", umbrella_header)
        included_headers = set(re.findall(r"\S+\.h\b", make_rule))
        installed_headers = {str(header) for header in HEADERS.rglob("*") if header.is_file()}
        c_header = str(umbrella_header.with_name("vel_launch_screen.h"))
        # appkit_test.py checks the headers of the Objective-C interface.
        objective_c_headers = {header for header in installed_headers if "ObjectiveC" in header}
        self.assertEqual(installed_headers - objective_c_headers, included_headers | {c_header})


if __name__ == "__main__":
    unittest.main()
