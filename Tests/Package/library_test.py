#!/usr/bin/env python3
"""What the shared library offers and needs, and which headers come with it."""

import os
import re
import unittest
from pathlib import Path

from package import CXX, LIB, PREFIX, run

LIBRARY = PREFIX / LIB / "libVelLaunchScreen.so"
HEADERS = PREFIX / "include"
EXPORTS = Path(__file__).resolve().parent / "exports.txt"

# What a name is that is not one of a function or variable: the table of a class, for instance.
ABOUT = re.compile(r"^(?:vtable|VTT|typeinfo name|typeinfo|(?:non-)?virtual thunk)(?: for| to) ")
# A class, function or variable in the namespace; what is inside a class goes with the class.
OURS = re.compile(r"^vel::(?:detail::)?\w+")


def exported():
    """The names that the library offers: those of C, and those of C++ by class."""
    names = set()
    for line in run("nm", "--dynamic", "--defined-only", "--demangle", LIBRARY).splitlines():
        name = ABOUT.sub("", line.split(maxsplit=2)[2])
        ours = OURS.match(name)
        names.add(ours.group() if ours else name)
    return names


def dynamic(tag):
    """The values of a tag in the library's dynamic section."""
    section = run("readelf", "--dynamic", "--wide", LIBRARY)
    return re.findall(rf"\({tag}\).*\[(.*)\]", section)


class LibraryTest(unittest.TestCase):
    def test_offers_what_the_list_says_and_nothing_else(self):
        listed = EXPORTS.read_text(encoding="utf-8").split()
        self.assertEqual(listed, sorted(listed))
        self.assertEqual(exported(), set(listed))

    def test_has_the_major_version_in_its_soname(self):
        self.assertEqual(dynamic("SONAME"), ["libVelLaunchScreen.so.1"])
        self.assertEqual(os.readlink(LIBRARY), "libVelLaunchScreen.so.1")
        self.assertEqual(os.readlink(LIBRARY.with_suffix(".so.1")), "libVelLaunchScreen.so.1.0.0")

    def test_needs_the_standard_libraries_and_xcb_alone(self):
        needed = {name.split(".so")[0] for name in dynamic("NEEDED")}
        standard = {"libc", "libm", "libgcc_s", "libstdc++", "ld-linux-x86-64"}
        self.assertLessEqual(needed - standard, {"libxcb", "libxcb-randr", "libxcb-render"})

    def test_looks_for_them_where_the_system_says(self):
        self.assertEqual(dynamic("RPATH") + dynamic("RUNPATH"), [])


class HeadersTest(unittest.TestCase):
    def test_those_that_the_umbrella_brings_in_are_installed_and_no_others(self):
        umbrella = HEADERS / "VelLaunchScreen/VelLaunchScreen.h"
        rule = run(CXX, "-std=c++20", "-MM", f"-I{umbrella.parent}", umbrella)
        brought = set(re.findall(r"\S+\.h\b", rule))
        installed = {str(header) for header in HEADERS.rglob("*") if header.is_file()}
        in_c = str(umbrella.with_name("vel_launch_screen.h"))
        self.assertEqual(installed, brought | {in_c})


if __name__ == "__main__":
    unittest.main()
