#!/usr/bin/env python3
"""Compiles the public headers of the library together with headers of macOS, in both orders. Also
compiles the Objective-C interface.

usage: system_headers_test.py COMPILER...

The test does not need macOS: it uses the macros in SystemHeaders/MacOSMacros.h, and the free AppKit
of GNUstep if it is installed. A compiler that does not support Objective-C++ compiles only C++.
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
# Uses names that are macros on macOS, and a type that exists both in AppKit and in the library.
CLIENT_CODE = """
vel::dispatch_time_t soon() { return vel::dispatch_time(vel::kDispatchTimeNow, 1); }
vel::Strong<vel::NSWindow> windowOf(const vel::Strong<vel::NSWindow>& window) { return window; }
"""
# Hosts may import the Objective-C interface twice.
OBJECTIVE_C_HEADERS = "#import <VelLaunchScreen/ObjectiveC.h>\n" * 2
# All sources of the Objective-C interface, as one source.
OBJECTIVE_C_SOURCES = "".join(
    f'#include "{source.relative_to(ROOT)}"\n' for source in sorted((ROOT / "Bindings/ObjectiveC").glob("*.mm"))
)
FLAGS = ["-fsyntax-only", f"-I{ROOT}", f"-I{ROOT}/include", f"-I{CHECKS}/SystemHeaders"]
STRICT = ["-Wall", "-Wextra", "-Werror"]

COMPILERS = sys.argv[1:]
HAS_APPKIT = Path("/usr/include/GNUstep/AppKit/AppKit.h").exists() and shutil.which("gnustep-config")


def compile_text(compiler, language, text, *flags):
    """Returns the compiler's messages if the text does not compile, otherwise an empty string."""
    standard = "-std=gnu99" if language == "objective-c" else "-std=c++20"
    result = subprocess.run(
        [compiler, standard, *FLAGS, *flags, "-x", language, "-"],
        input=text,
        capture_output=True,
        text=True,
        timeout=120,
        check=False,
    )
    return "" if result.returncode == 0 else result.stderr or "failed without a message"


def language_of(compiler):
    """Returns the language to test: Objective-C++ if the compiler supports it, otherwise C++."""
    return "c++" if compile_text(compiler, "objective-c++", "@class Window;\n") else "objective-c++"


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.strip()


def appkit_flags():
    flags = shlex.split(output_of("gnustep-config", "--objc-flags"))
    # GCC has the headers of the Objective-C runtime. Clang uses them too.
    runtime_headers = output_of("g++", "-print-file-name=include")
    kept_flags = [flag for flag in flags if flag.startswith(("-I", "-D", "-f"))]
    return [*kept_flags, "-idirafter", runtime_headers]


class SystemHeadersTest(unittest.TestCase):
    def check_both_orders(self, compiler, language, system_headers, *flags):
        for text in (system_headers + LIBRARY, LIBRARY + system_headers):
            with self.subTest(compiler=compiler, language=language, first=text.split("\n")[0]):
                self.assertEqual(compile_text(compiler, language, text + CLIENT_CODE, *flags), "")

    def test_the_librarys_headers_compile_with_the_macros_of_macos(self):
        for compiler in COMPILERS:
            self.check_both_orders(compiler, language_of(compiler), MACROS, *STRICT)

    @unittest.skipUnless(HAS_APPKIT, "the free AppKit is not installed")
    def test_the_librarys_headers_compile_with_the_headers_of_appkit(self):
        for compiler in COMPILERS:
            if language_of(compiler) == "objective-c++":
                self.check_both_orders(compiler, "objective-c++", APPKIT, *appkit_flags())

    @unittest.skipUnless(HAS_APPKIT, "the free AppKit is not installed")
    def test_the_objective_c_interface_compiles(self):
        for compiler in COMPILERS:
            if language_of(compiler) == "objective-c++":
                # The compilers do not warn about headers that they find with -isystem.
                flags = [flag.replace("-I", "-isystem", 1) for flag in appkit_flags()]
                flags += [*STRICT, "-Wno-unused-parameter"]
                with self.subTest(compiler=compiler):
                    source_messages = compile_text(compiler, "objective-c++", OBJECTIVE_C_SOURCES, *flags)
                    self.assertEqual(source_messages, "")
                    header_messages = compile_text(compiler, "objective-c", OBJECTIVE_C_HEADERS, *flags)
                    self.assertEqual(header_messages, "")

    # Shows that `test_the_librarys_headers_compile_with_the_macros_of_macos` can fail.
    def test_a_macro_with_a_name_of_the_library_breaks_the_compilation(self):
        macro = "#define kDispatchTimeNow (0ull)\n"
        for compiler in COMPILERS:
            self.assertNotEqual(compile_text(compiler, "c++", macro + LIBRARY), "")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
