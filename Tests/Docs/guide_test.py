#!/usr/bin/env python3
"""Compiles the snippets of docs/guide.md and runs its programs. They use the library that is
installed in PREFIX."""

import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from docs import PROGRAM, ROOT

sys.path.insert(0, str(ROOT / "Tests/Support/Wayland"))
from sway import Sway  # noqa: E402

PAGE = (ROOT / "docs/guide.md").read_text(encoding="utf-8")
PREFIX = Path(os.environ["PREFIX"])
# Each snippet is a tuple: the language, the file name (or an empty string), the text.
SNIPPETS = re.findall(r"^```(\w+)(?: (\S+))?\n(.*?)^```$", PAGE, re.MULTILINE | re.DOTALL)
# A C snippet without a file name contains only statements. The test compiles them in this function.
SNIPPET_FRAME = """#include <VelLaunchScreen/vel_launch_screen.h>
void snippet(VelLaunchScreen* screen, VelCreateOptions options, VelRequest request,
             uint64_t window_id, void* ns_window);
void snippet(VelLaunchScreen* screen, VelCreateOptions options, VelRequest request,
             uint64_t window_id, void* ns_window) {
  (void)window_id, (void)ns_window;
%s
  (void)options;
  (void)request;
  (void)screen;
}
"""
COMMAND_TIMEOUT_SECONDS = 240


def without_indentation(text):
    return "\n".join(line.strip() for line in text.splitlines())


class Guide(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        for _, name, text in SNIPPETS:
            if name:
                (self.folder / name).write_text(text, encoding="utf-8")

    def run_in_folder(self, *command, wayland_display=""):
        environment = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
        environment["PATH"] = f"{Path(PROGRAM).parent}:{environment['PATH']}"
        environment["PKG_CONFIG_PATH"] = str(PREFIX / "lib/pkgconfig")
        environment["LD_LIBRARY_PATH"] = str(PREFIX / "lib")
        if wayland_display:
            environment["WAYLAND_DISPLAY"] = wayland_display
        result = subprocess.run(
            command, cwd=self.folder, env=environment, capture_output=True, text=True,
            stdin=subprocess.DEVNULL, timeout=COMMAND_TIMEOUT_SECONDS, check=False,
        )
        self.assertEqual(result.returncode, 0, (command, result.stdout, result.stderr))
        return result.stdout

    def test_the_guide_has_snippets_of_each_language(self):
        languages = [language for language, _, _ in SNIPPETS]
        self.assertEqual(set(languages), {"c", "cpp", "cmake", "json", "objc", "sh", "text"})
        self.assertGreater(languages.count("c"), 3)

    def test_commands_print_what_the_guide_shows(self):
        last_output = ""
        for language, _, text in SNIPPETS:
            if language == "sh" and "./wayland" in text:
                with Sway() as sway:
                    last_output = self.run_in_folder("sh", "-e", "-c", text, wayland_display=sway.wayland_display)
            elif language == "sh":
                last_output = self.run_in_folder("sh", "-e", "-c", text)
            elif language == "text":
                self.assertEqual(last_output, text)
        # The guide's last command plays away.json.
        self.assertIn('{"t":6.500000000,"event":"launch_end"}', last_output)
        self.assertTrue((self.folder / "away.svg").exists())

    def test_the_cpp_program_is_built_with_cmake_and_runs(self):
        build = self.folder / "build"
        self.run_in_folder("cmake", "-S", ".", "-B", build, f"-DCMAKE_PREFIX_PATH={PREFIX}")
        self.run_in_folder("cmake", "--build", build)
        self.assertEqual(self.run_in_folder(build / "first"), "event launch_end\n")

    def test_the_objective_c_snippets_are_parts_of_the_appkit_example(self):
        example = without_indentation((ROOT / "Examples/appkit-host/main.m").read_text(encoding="utf-8"))
        for language, _, text in SNIPPETS:
            if language == "objc":
                with self.subTest(text):
                    self.assertIn(without_indentation(text), example)

    def test_c_snippets_without_a_file_name_compile(self):
        for language, name, text in SNIPPETS:
            if language == "c" and not name:
                with self.subTest(text):
                    (self.folder / "snippet.c").write_text(SNIPPET_FRAME % text, encoding="utf-8")
                    self.run_in_folder(
                        os.environ["CC"], "-std=c99", "-Wall", "-Wextra", "-Wpedantic", "-Werror",
                        "-I", PREFIX / "include", "-c", "snippet.c",
                    )


if __name__ == "__main__":
    unittest.main()
