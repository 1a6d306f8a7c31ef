#!/usr/bin/env python3
"""Checks which functions the export macros export and import on Linux, macOS and Windows.

usage: export_macro_test.py CLANG

The test needs only Clang: the tested headers include no system headers of macOS or Windows.
"""

import subprocess
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
CLANG = sys.argv[1]
LINUX = "x86_64-linux-gnu"
MACOS = "arm64-apple-macos13"
WINDOWS = "x86_64-pc-windows-msvc"
# The macro, the language and the header of each interface.
INTERFACES = [
    ("VEL_EXPORT", "c++", "Platform/Foundation/Export.h"),
    ("VEL_C_EXPORT", "c", "Bindings/C/vel_launch_screen.h"),
]


def compile_functions(target, language, header, code, *macro_flags):
    """Compiles `code` to LLVM IR. Returns a dictionary from each function's name to its line."""
    flags = ["-ffreestanding", "-fvisibility=hidden", f"-I{ROOT}", f"--target={target}"]
    output = subprocess.run(
        [CLANG, "-S", "-emit-llvm", "-o", "-", *flags, *macro_flags, "-x", language, "-"],
        input=f'#include "{header}"\n{code}',
        capture_output=True,
        text=True,
        timeout=60,
        check=True,
    ).stdout
    lines = [line for line in output.splitlines() if line.startswith(("define", "declare"))]
    names = ("markedFunction", "internalFunction")
    return {name: line for line in lines for name in names if name in line}


def compile_definitions(target, interface, *macro_flags):
    """Compiles a markedFunction with the export macro and an internalFunction without it."""
    macro, language, header = interface
    code = f"{macro} void markedFunction(void) {{}}\nvoid internalFunction(void) {{}}\n"
    return compile_functions(target, language, header, code, *macro_flags)


def compile_call(target, interface, *macro_flags):
    """Compiles a call of a markedFunction that is declared with the export macro."""
    macro, language, header = interface
    code = f"{macro} void markedFunction(void);\nvoid internalFunction(void) {{ markedFunction(); }}\n"
    return compile_functions(target, language, header, code, *macro_flags)


class ExportMacroTest(unittest.TestCase):
    def test_linux_and_macos_hide_only_functions_without_the_macro(self):
        for target in (LINUX, MACOS):
            for interface in INTERFACES:
                code = compile_definitions(target, interface)
                self.assertNotIn("hidden", code["markedFunction"], (target, interface))
                self.assertIn("hidden", code["internalFunction"], (target, interface))

    def test_the_build_of_a_dll_exports_only_functions_with_the_macro(self):
        for interface in INTERFACES:
            code = compile_definitions(WINDOWS, interface, "-DVEL_DLL_EXPORTS")
            self.assertIn("dllexport", code["markedFunction"])
            self.assertNotIn("dllexport", code["internalFunction"])

    def test_a_program_that_uses_the_dll_imports_functions_with_the_macro(self):
        for interface in INTERFACES:
            code = compile_call(WINDOWS, interface, "-DVEL_DLL")
            self.assertIn("dllimport", code["markedFunction"])

    def test_a_static_library_on_windows_neither_exports_nor_imports_functions(self):
        for interface in INTERFACES:
            definitions = compile_definitions(WINDOWS, interface)
            self.assertNotIn("dllexport", definitions["markedFunction"])
            self.assertNotIn("dllimport", compile_call(WINDOWS, interface)["markedFunction"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
