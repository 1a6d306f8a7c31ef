#!/usr/bin/env python3
"""Tests the picture that `launchscreen play --timeline` draws."""

import itertools
import json
import re
import tempfile
import unittest
from dataclasses import dataclass
from pathlib import Path
from xml.etree import ElementTree

from font import Font
from program import ROOT, run

EXAMPLES = sorted((ROOT / "Examples/scenarios").glob("*.json"))
DOCUMENTED_PICTURE = ROOT / "docs/pictures/timeline.svg"
DOCUMENTED_EXAMPLE = ROOT / "Examples/scenarios/switch-away-and-back.json"
SVG = "{http://www.w3.org/2000/svg}"

FONT = Font("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf")
# The height of text above and below its baseline, relative to the font size.
ASCENT, DESCENT = 0.76, 0.24


@dataclass
class Box:
    """The area of a text or a dot in the picture."""

    text: str
    left: float
    top: float
    right: float
    bottom: float

    def overlaps(self, other):
        return (
            self.left < other.right
            and other.left < self.right
            and self.top < other.bottom
            and other.top < self.bottom
        )


def text_box(element):
    size = 16 if element.get("class") == "title" else 13
    width = FONT.width(element.text, size)
    x, y = float(element.get("x")), float(element.get("y"))
    left = x - {"middle": width / 2, "end": width}.get(element.get("text-anchor"), 0)
    return Box(element.text, left, y - ASCENT * size, left + width, y + DESCENT * size)


def dot_box(element):
    x, y, radius = (float(element.get(name)) for name in ("cx", "cy", "r"))
    return Box("a dot", x - radius, y - radius, x + radius, y + radius)


class Timeline(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.picture = self.folder / "picture.svg"

    def draw(self, scenario):
        """Plays a scenario from a path or a dictionary and returns the parsed picture."""
        if isinstance(scenario, dict):
            file = self.folder / "scenario.json"
            file.write_text(json.dumps(scenario), encoding="utf-8")
            scenario = file
        result = run("play", str(scenario), "--timeline", str(self.picture))
        # The status is 3 if the play stopped early.
        self.assertIn(result.returncode, (0, 3), result.stderr)
        return ElementTree.parse(self.picture).getroot()

    def assert_readable(self, svg):
        """Fails if a text overlaps another text or a dot, or extends beyond the picture."""
        texts = [text_box(element) for element in svg.iter(SVG + "text")]
        self.assertGreater(len(texts), 10)
        width, height = float(svg.get("width")), float(svg.get("height"))
        for box in texts:
            self.assertGreaterEqual(box.left, 0, box)
            self.assertGreaterEqual(box.top, 0, box)
            self.assertLessEqual(box.right, width, box)
            self.assertLessEqual(box.bottom, height, box)
        for first_box, second_box in itertools.combinations(texts, 2):
            self.assertFalse(first_box.overlaps(second_box), (first_box, second_box))
        for text, dot in itertools.product(texts, map(dot_box, svg.iter(SVG + "circle"))):
            self.assertFalse(text.overlaps(dot), (text, dot))

    def test_text_of_every_example_is_readable(self):
        self.assertGreater(len(EXAMPLES), 12)
        for example in EXAMPLES:
            with self.subTest(example.stem):
                self.assert_readable(self.draw(example))

    def test_trace_is_the_same_with_a_picture(self):
        for example in EXAMPLES:
            with self.subTest(example.stem):
                with_picture = run("play", str(example), "--timeline", str(self.picture))
                without_picture = run("play", str(example))
                self.assertEqual(
                    (with_picture.returncode, with_picture.stdout, with_picture.stderr),
                    (without_picture.returncode, without_picture.stdout, without_picture.stderr),
                )

    def test_picture_in_the_documents_is_what_the_program_draws(self):
        self.draw(DOCUMENTED_EXAMPLE)
        self.assertEqual(self.picture.read_text(), DOCUMENTED_PICTURE.read_text())

    def test_text_of_extreme_scenarios_is_readable(self):
        name = "a window <&\"'> \x01\uffff é 🎮 " + 40 * "W"
        simultaneous_steps = [{"do": "makeKey", "window": name}] * 50
        presentation_steps = [{"do": "contentView"}, {"do": "present", "window": name, "mode": 0}]
        times = (0, 1e-9, 1e-8, 0.7, 9, 1000, 1_000_000)
        for until, duration in itertools.product(times, (1e-40, 0.1, 7, 3e38)):
            with self.subTest(until=until, duration=duration):
                parameters = {"event": name, "max_duration_time": duration}
                last_steps = [{"at": until, "do": "send", "operation": "sendAnalyticsEvent"}]
                # A long countdown is slow, so a long play does not present the launch screen.
                steps = [*(presentation_steps if until < 1000 else ()), *simultaneous_steps, *last_steps]
                steps.insert(0, {"do": "request", "parameters": parameters})
                host = {"windows": [{"name": name}]}
                self.assert_readable(self.draw({"host": host, "steps": steps, "until": until}))

    def test_picture_has_marks_of_every_kind(self):
        svg = self.draw(ROOT / "Examples/scenarios/refused-close-sends-event-early.json")
        classes = {element.get("class") for element in svg.iter(SVG + "circle")}
        kinds = "Request Script HostCall Refusal WindowStyle Dismissal Event"
        self.assertEqual(classes, set(kinds.split()))
        classes = {element.get("class") for element in svg.iter(SVG + "rect")}
        self.assertEqual(classes, {"background", "key", "cover"})

    def test_each_colour_scheme_defines_every_colour(self):
        svg = self.draw(DOCUMENTED_EXAMPLE)
        style = svg.find(SVG + "style").text
        light_scheme, dark_scheme = style.split("@media (prefers-color-scheme:dark)")
        selectors = {f".{element.get('class').split()[0]}" for element in svg.iter()
                     if element.tag in (SVG + "rect", SVG + "circle")} | {"text"}
        for scheme in light_scheme, dark_scheme:
            rules = dict(re.findall(r"([^{}\n]+)\{([^{}]*)\}", scheme))
            for selector in selectors:
                self.assertRegex(rules[selector], r"fill:#\w+")

    def test_background_fills_the_picture(self):
        svg = self.draw(DOCUMENTED_EXAMPLE)
        background = svg.find(SVG + "rect").attrib
        self.assertEqual(background["class"], "background")
        self.assertEqual((background["width"], background["height"]), (svg.get("width"), svg.get("height")))

    def test_play_that_stops_early_is_drawn(self):
        example = ROOT / "Examples/scenarios/deactivate-during-callback.json"
        self.assertIn("the play stopped early", [text.text for text in self.draw(example).iter()])

    def test_picture_file_that_cannot_be_opened_is_reported_before_the_play(self):
        result = run("play", str(DOCUMENTED_EXAMPLE), "--timeline", "/nonexistent/picture.svg")
        self.assertEqual((result.returncode, result.stdout), (2, ""))
        self.assertEqual(
            result.stderr,
            "launchscreen: --timeline: /nonexistent/picture.svg: No such file or directory\n",
        )

    def test_scenario_that_cannot_be_read_does_not_change_the_picture_file(self):
        self.picture.write_text("kept")
        result = run("play", "/nonexistent/scenario.json", "--timeline", str(self.picture))
        self.assertEqual((result.returncode, result.stdout), (2, ""))
        self.assertEqual(self.picture.read_text(), "kept")

    def test_full_disk_is_reported(self):
        result = run("play", str(DOCUMENTED_EXAMPLE), "--timeline", "/dev/full")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(
            result.stderr, "launchscreen: --timeline: /dev/full: cannot be written\n"
        )


if __name__ == "__main__":
    unittest.main()
