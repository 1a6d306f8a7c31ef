#!/usr/bin/env python3
"""Compiles and links the library for macOS, and checks which symbols the library exports.

usage: macos_exports_test.py CLANG LINKER

The test runs on Linux, without the headers and libraries of macOS. The headers come from libc++, from Linux
and from Tests/OtherSystems/MacOS. The functions of macOS stay undefined, so the linked library cannot run.
"""

import concurrent.futures
import os
import re
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
SIMULATED_HEADERS = ROOT / "Tests/OtherSystems/MacOS"
CLANG, LINKER = sys.argv[1:]
# The Linux headers are for x86-64, so the library is compiled for a Mac with an x86-64 processor.
TARGET = "x86_64-apple-macos13"
LIBCXX_HEADERS = Path("/usr/lib/llvm-16/include/c++/v1")
FLAGS = [
    f"--target={TARGET}", "-U__nonnull", "-D_GNU_SOURCE", "-D__NO_CTYPE", "-std=c++20", "-fvisibility=hidden", "-fvisibility-inlines-hidden", "-fPIC",
    "-nostdinc++", "-isystem", LIBCXX_HEADERS, "-isystem", SIMULATED_HEADERS,
    "-isystem", "/usr/include/x86_64-linux-gnu", "-isystem", "/usr/include",
    "-include", SIMULATED_HEADERS / "ProcessFunctions.h", f"-I{ROOT}", '-DVEL_VERSION="1.0.0"', "-w",
]  # fmt: skip
# The sources of the library on macOS, by folder.
FOLDERS = {
    "Platform/Foundation": ["*.cpp", "MacOS/*.cpp", "Posix/*.cpp"],
    "Platform/WindowSystem": ["*.cpp", "Headless/*.cpp", "Backends/*.cpp"],
    "Platform/Dispatch": ["*.cpp"],
    "Platform/AppKit": ["*.cpp"],
    "HostInterfaces": ["*.cpp"],
    "LaunchScreen": ["**/*.cpp"],
    "Bindings/Json": ["*.cpp"],
    "Bindings/C": ["*.cpp"],
}
# Lists what the library must export: the names of classes, functions and variables.
EXPORTS = ROOT / "Tests/Package/exports.txt"
# Matches what precedes the name of a class in a demangled name, for example "vtable for ".
CLASS_SYMBOL = re.compile(r"^(?:vtable|VTT|typeinfo name|typeinfo|(?:non-)?virtual thunk)(?: for| to) ")
# Matches the name of a class, function or variable in namespace vel. Matches only the class in the name of
# a class member.
VEL_NAME = re.compile(r"^vel::(?:detail::)?\w+")


def run(*command, text=None):
    result = subprocess.run(
        command, input=text, capture_output=True, text=True, timeout=240, check=False
    )
    if result.returncode != 0:
        raise AssertionError(f"{command}\n{result.stderr}")
    return result.stdout


def compile_folder(folder, patterns, output):
    """Compiles the sources of a folder as one source, and returns the object file."""
    sources = sorted(source for pattern in patterns for source in (ROOT / folder).glob(pattern))
    text = "".join(f'#include "{source.relative_to(ROOT)}"\n' for source in sources)
    run(CLANG, *FLAGS, "-c", "-x", "c++", "-", "-o", output, text=text)
    return output


def exported_symbols(library):
    """Returns the defined external symbols of a 64-bit Mach-O file, without the leading underscore."""
    data = library.read_bytes()
    command_count = struct.unpack_from("<I", data, 16)[0]
    offset = 32
    for _ in range(command_count):
        command, size = struct.unpack_from("<II", data, offset)
        if command == 2:  # LC_SYMTAB
            symbols_offset, count, strings_offset = struct.unpack_from("<III", data, offset + 8)
            break
        offset += size
    names = set()
    for index in range(count):
        name_offset, kind = struct.unpack_from("<IB", data, symbols_offset + 16 * index)
        is_external = kind & 0x01 and not kind & 0x10  # N_EXT and not N_PEXT
        if is_external and kind & 0x0E != 0:  # N_TYPE is not N_UNDF
            start = strings_offset + name_offset
            end = data.index(b"\0", start)
            names.add(data[start:end].decode().removeprefix("_"))
    return names


def public_names(symbols):
    """Demangles the symbols. Replaces each symbol of a class in namespace vel with the name of the class."""
    names = set()
    for line in run("c++filt", text="\n".join(sorted(symbols))).splitlines():
        name = CLASS_SYMBOL.sub("", line)
        match = VEL_NAME.match(name)
        names.add(match.group() if match else name)
    return names


class MacOSExportsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            cls.objects = list(
                pool.map(
                    lambda item: compile_folder(*item, cls.folder / (item[0].replace("/", "-") + ".o")),
                    FOLDERS.items(),
                )
            )

    def link(self, *options):
        library = self.folder / "library.dylib"
        run(
            LINKER, "-arch", "x86_64", "-platform_version", "macos", "13.0", "13.0", "-dylib",
            "-undefined", "dynamic_lookup", "-o", library, *options, *self.objects,
        )  # fmt: skip
        return public_names(exported_symbols(library))

    def test_the_library_exports_exactly_the_names_in_exports_txt(self):
        exports = self.link("-exported_symbols_list", ROOT / "cmake/exports.mach-o")
        self.assertEqual(exports, set(EXPORTS.read_text(encoding="utf-8").split()))

    def test_the_library_exports_more_names_without_the_linkers_export_list(self):
        exports = self.link()
        self.assertGreater(exports, set(EXPORTS.read_text(encoding="utf-8").split()))
        # The compiler instantiates templates of the standard library.
        self.assertTrue(any(name.startswith("std::") for name in exports))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
