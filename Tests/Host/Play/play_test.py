#!/usr/bin/env python3
"""Tests the input of `launchscreen play` and its errors for invalid scenarios."""

import tempfile
import unittest
from pathlib import Path

from program import ROOT, run

EXAMPLE = ROOT / "Examples" / "scenarios" / "switch-away-and-back.json"
SMALL_SCENARIO = '{"steps": [{"do": "activate"}], "until": 1}'


class Plays(unittest.TestCase):
    def test_standard_input_gives_the_same_trace_as_a_file(self):
        file_result = run("play", str(EXAMPLE))
        with EXAMPLE.open() as file:
            input_result = run("play", "-", stdin=file)
        self.assertEqual(file_result.returncode, 0)
        self.assertEqual(file_result.stderr, "")
        self.assertEqual(input_result.stdout, file_result.stdout)
        self.assertEqual(input_result.returncode, 0)

    def test_second_play_of_a_scenario_gives_the_same_trace(self):
        self.assertEqual(run("play", str(EXAMPLE)).stdout, run("play", str(EXAMPLE)).stdout)


class Refusals(unittest.TestCase):
    def error_for(self, content):
        """Returns the error for a file with this content. The error must be a single line."""
        with tempfile.TemporaryDirectory() as folder:
            file = Path(folder) / "scenario.json"
            file.write_bytes(content if isinstance(content, bytes) else content.encode())
            result = run("play", str(file))
            self.assertEqual(result.returncode, 2, result.stdout)
            self.assertEqual(result.stdout, "")
            self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
            prefix = f"launchscreen: {file}: "
            self.assertTrue(result.stderr.startswith(prefix), result.stderr)
            return result.stderr[len(prefix):]

    def test_invalid_json_is_refused(self):
        for content in (b"", b"{", b"[" * 100_000, b'{"steps":' * 100_000, b'{"steps": [}',
                        b'{"until": "\xff\xfe"}', b'{"until": 1}\0{"', b"\0", SMALL_SCENARIO.encode() * 2):
            with self.subTest(content[:20]):
                self.error_for(content)

    def test_error_begins_with_the_json_pointer_to_the_invalid_value(self):
        template = '{{"steps": [{{"do": "activate"}}, {}]}}'
        for content, json_pointer in (
            (template.format('{"do": "vanish"}'), "/steps/1/do"),
            (template.format('{"do": "makeKey"}'), "/steps/1/window"),
            (template.format('{"do": "makeKey", "window": "nobody"}'), "/steps/1/window"),
            (template.format('{"do": "activate", "at": -1}'), "/steps/1/at"),
            (template.format('{"do": "activate", "at": 1000001}'), "/steps/1/at"),
            (template.format('{"do": "activate", "colour": "red"}'), "/steps/1/colour"),
            (template.format('{"do": "activate", "broker": 1}'), "/steps/1/broker"),
            ('{"steps": [{"do": "activate", "at": 2}, {"do": "activate", "at": 1}]}',
             "/steps/1/at"),
            ('{"host": {"windows": [{"name": "a"}, {"name": "a"}]}}', "/host/windows/1/name"),
            ('{"host": {"windows": [{"className": "A"}]}}', "/host/windows/0/name"),
            ('{"host": {"windows": [{"name": "a", "parent": "b"}, {"name": "b"}]}}',
             "/host/windows/0/parent"),
            ('{"until": "soon"}', "/until"),
            ('{"end": 1}', "/end"),
        ):
            with self.subTest(content):
                self.assertEqual(self.error_for(content).split(": ")[0], json_pointer)

    def test_file_that_cannot_be_read_is_reported(self):
        for name in ("/nowhere/at/all.json", str(ROOT)):
            result = run("play", name)
            self.assertEqual(result.returncode, 2)
            self.assertEqual(result.stdout, "")
            self.assertEqual(result.stderr.count("\n"), 1)
            self.assertIn(name, result.stderr)


if __name__ == "__main__":
    unittest.main()
