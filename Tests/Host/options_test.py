#!/usr/bin/env python3
"""Tests that each option of `launchscreen` is in the help, the manual, the completion and a test."""

import re
import subprocess
import unittest

from program import ROOT, run

MANUAL = ROOT / "docs/launchscreen.1"
COMPLETION = ROOT / "Host/completion/launchscreen.bash"
# Every command has these options. The program without a command has only these options.
COMMON = {"--help", "--version"}
OPTION = re.compile(r"--[a-z][a-z0-9-]*")


def help_entries(*command):
    """Returns the entry of each option and command in the help. An entry can have several lines."""
    text = run(*command, "--help").stdout
    return re.findall(r"^  (\S.*(?:\n {3,}\S.*)*)", text, re.MULTILINE)


def commands():
    text = run("--help").stdout
    return re.findall(r"^  ([a-z]+) ", text[text.index("Subcommands:") :], re.MULTILINE)


def help_options(*command):
    """Maps each option in the help to the set of its values. The set is empty if the help lists no values."""
    options = {}
    for entry in help_entries(*command):
        if entry.startswith("-"):
            values = re.match(r"\S+(?: \S*:\{(\S*)\})?", entry)[1]
            options[OPTION.search(entry.split()[0])[0]] = set(values.split(",")) if values else set()
    return options


def manual_sections():
    """Maps each section and subsection name to its text. A command's subsection has the command's name."""
    text = MANUAL.read_text(encoding="utf-8").replace("\\-", "-")
    parts = re.split(r"^\.S[HS] (.*)\n", text, flags=re.MULTILINE)
    return dict(zip(parts[1::2], parts[2::2]))


def manual_options(section):
    return set(re.findall(r"^\.TP\n\.[A-Z]+ (--[a-z-]+)", manual_sections()[section], re.MULTILINE))


def completions(*words):
    """Returns the completions that bash offers for the last word.

    `words` are the words after `launchscreen`. Bash splits `--mode=skip` into three words: `--mode`, `=` and
    `skip`.
    """
    script = (
        f'source "{COMPLETION}"; COMP_WORDS=(launchscreen "$@"); COMP_CWORD=$#; _launchscreen;'
        ' printf "%s\\n" "${COMPREPLY[@]}"'
    )
    completion_process = subprocess.run(
        ["bash", "-c", script, "bash", *words], capture_output=True, text=True, check=True
    )
    return set(completion_process.stdout.split())


class Options(unittest.TestCase):
    def test_the_help_is_parsed(self):
        # Other tests loop over the results of `commands` and `help_options`. If a result were empty, such a
        # test would check nothing.
        self.assertIn("show", commands())
        self.assertIn("--duration", help_options("show"))
        self.assertEqual(help_options("show")["--mode"], {"forced", "skip"})

    def test_the_program_without_a_command_has_only_the_common_options(self):
        self.assertEqual(set(help_options()), COMMON)
        self.assertEqual(manual_options("OPTIONS"), COMMON)
        self.assertEqual(completions(""), COMMON | set(commands()))

    def test_manual_has_exactly_the_options_of_the_help(self):
        for command in commands():
            with self.subTest(command):
                self.assertEqual(manual_options(command) | COMMON, set(help_options(command)))

    def test_completion_has_exactly_the_options_of_the_help(self):
        for command in commands():
            with self.subTest(command):
                offered_options = {word for word in completions(command, "") if word.startswith("-")}
                self.assertEqual(offered_options, set(help_options(command)))

    def test_values_in_the_help_are_also_in_the_manual_and_the_completion(self):
        for command in commands():
            for option, values in help_options(command).items():
                with self.subTest(command=command, option=option):
                    if values:
                        self.assertEqual(completions(command, option, ""), values)
                        self.assertEqual(completions(command, option, "=", ""), values)
                    for value in values:
                        self.assertRegex(manual_sections()[command], rf"\b{value}\b")

    def test_completion_continues_the_typed_word(self):
        self.assertEqual(completions("show", "--dis"), {"--display"})
        self.assertEqual(completions("show", "--mode", "s"), {"skip"})
        self.assertEqual(completions("show", "--mode", "="), {"forced", "skip"})
        self.assertEqual(completions("sh"), {"show"})

    def test_every_option_is_in_a_test(self):
        tests = "".join(
            file.read_text(encoding="utf-8")
            for pattern in ("*.cpp", "*.py")
            for file in (ROOT / "Tests/Host").rglob(pattern)
            if file.name != "options_test.py"
        )
        for command in commands():
            for option in help_options(command):
                with self.subTest(command=command, option=option):
                    self.assertIn(f'"{option}"', tests)

    def test_manual_has_no_formatting_errors(self):
        try:
            groff_process = subprocess.run(
                ["groff", "-man", "-ww", "-z", "-Tutf8", str(MANUAL)],
                capture_output=True, text=True, check=False,
            )
        except FileNotFoundError:
            self.skipTest("groff is not installed")
        self.assertEqual((groff_process.returncode, groff_process.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()
