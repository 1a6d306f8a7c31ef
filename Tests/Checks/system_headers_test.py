#!/usr/bin/env python3
"""Compiles the public headers of the library together with headers of macOS, in both orders.

usage: system_headers_test.py COMPILER...

The headers of macOS are represented by the macros in SystemHeaders/MacOSMacros.h, and by the free
AppKit if gnustep-config is installed. A compiler without Objective-C++ compiles only C++.
"""

import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECKS = Path(__file__).resolve().parent
ROOT = CHECKS.parent.parent
LIBRARY = '#include "VelLaunchScreen/VelLaunchScreen.h"\n#include "Bindings/C/vel_launch_screen.h"\n'
MACROS = '#include "MacOSMacros.h"\n'
APPKIT = "#import <AppKit/AppKit.h>\n"
# Uses names that are macros on macOS, and a type that exists in both.
USE = """
vel::dispatch_time_t soon() { return vel::dispatch_time(vel::kDispatchTimeNow, 1); }
vel::Strong<vel::NSWindow> windowOf(const vel::Strong<vel::NSWindow>& window) { return window; }
"""
FLAGS = ["-std=c++20", "-fsyntax-only", f"-I{ROOT}", f"-I{ROOT}/include", f"-I{CHECKS}/SystemHeaders"]
STRICT = ["-Wall", "-Wextra", "-Werror"]

COMPILERS = sys.argv[1:]


def compile_text(compiler, language, text, *flags):
    """Returns the compiler's messages. The result is empty if the text compiles without a warning."""
    result = subprocess.run(
        [compiler, *FLAGS, *flags, "-x", language, "-"],
        input=text,
        capture_output=True,
        text=True,
        timeout=120,
        check=False,
    )
    return "" if result.returncode == 0 else result.stderr or "failed without a message"


def language_of(compiler):
    """Returns Objective-C++, which includes C++, if the compiler knows it, otherwise C++."""
    return "c++" if compile_text(compiler, "objective-c++", "@class Window;\n") else "objective-c++"


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.strip()


def appkit_flags():
    flags = shlex.split(output_of("gnustep-config", "--objc-flags"))
    # GCC has the headers of the Objective-C runtime. Clang uses them too.
    runtime_headers = output_of("g++", "-print-file-name=include")
    kept = [flag for flag in flags if flag.startswith(("-I", "-D", "-f"))]
    return [*kept, "-idirafter", runtime_headers]


class SystemHeadersTest(unittest.TestCase):
    def check_both_orders(self, compiler, language, system_headers, *flags):
        for text in (system_headers + LIBRARY, LIBRARY + system_headers):
            with self.subTest(compiler=compiler, language=language, first=text.split("\n")[0]):
                self.assertEqual(compile_text(compiler, language, text + USE, *flags), "")

    def test_the_macros_of_macos_do_not_disturb_the_librarys_headers(self):
        for compiler in COMPILERS:
            self.check_both_orders(compiler, language_of(compiler), MACROS, *STRICT)

    @unittest.skipUnless(
        Path("/usr/include/GNUstep/AppKit/AppKit.h").exists() and shutil.which("gnustep-config"),
        "the free AppKit is not installed",
    )
    def test_the_headers_of_appkit_do_not_disturb_the_librarys_headers(self):
        for compiler in COMPILERS:
            if language_of(compiler) == "objective-c++":
                self.check_both_orders(compiler, "objective-c++", APPKIT, *appkit_flags())

    def test_a_macro_that_replaces_a_name_of_the_library_is_found(self):
        macro = "#define kDispatchTimeNow (0ull)\n"
        for compiler in COMPILERS:
            self.assertNotEqual(compile_text(compiler, "c++", macro + LIBRARY), "")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
