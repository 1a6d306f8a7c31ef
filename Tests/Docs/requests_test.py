#!/usr/bin/env python3
"""Plays what each row of the tables in docs/requests.md describes and checks the result."""

import json
import re
import subprocess
import unittest

from docs import PROGRAM, ROOT

PAGE = (ROOT / "docs/requests.md").read_text(encoding="utf-8")
MODAL_WINDOW_MODE, SHEET_MODE = 2, 1
STATE_FAILED = 4
# These values stand in place of an expected time.
STAYS = None  # the launch screen is not dismissed
NO_EVENT = None  # no analytics event is recorded


def rows(heading):
    """Returns the rows of the table in a section, each as a list of cells."""
    section = PAGE.split(f"\n## {heading}\n")[1].split("\n## ")[0]
    lines = [line for line in section.splitlines() if line.startswith("| ")]
    assert len(lines) > 2, f"the table of {heading} has no rows"
    return [[cell.strip() for cell in line.strip("|").split("|")] for line in lines[2:]]


class Play:
    """Plays a scenario: requests a launch screen, presents it and performs `steps`. Stores the
    lines of the trace. `windows` are the host's windows besides the player window. `host` contains
    more members for the "host" of the scenario. The value of `host["player"]` is different: it
    contains more members for the player window."""

    def __init__(self, parameters, steps=(), presentation_mode=0, windows=(), until=30, **host):
        scenario = {
            "host": {"windows": [{"name": "player", **host.pop("player", {})}, *windows], **host},
            "steps": [
                {"do": "activate"},
                {"do": "request", "parameters": parameters},
                {"do": "contentView"},
                {"do": "present", "window": "player", "mode": presentation_mode},
                *steps,
            ],
            "until": until,
        }
        process = subprocess.run(
            [PROGRAM, "play", "-"], input=json.dumps(scenario), capture_output=True, text=True, check=True
        )
        self.lines = [json.loads(line) for line in process.stdout.splitlines()]

    def first_line(self, name, value=None):
        """Returns the first line that has the member `name`, or None. If `value` is not None, the
        member must have this value."""
        lines = (line for line in self.lines if name in line and value in (None, line[name]))
        return next(lines, None)

    def time_of(self, name, value=None):
        """Returns the time of the line that `first_line` returns, or None."""
        line = self.first_line(name, value)
        return line and line["t"]

    @property
    def outcome(self):
        """Returns the time of the dismissal and the time of the analytics event. Each is None if
        the trace has no such line."""
        return self.time_of("cover", "viewDidDisappear"), self.time_of("event")

    @property
    def refusal(self):
        """Returns the reason in the log line that refuses the request, or None. The line has the
        form `Class (-[Class operation:]): reason`."""
        for line in self.lines:
            if "]): " in line.get("log", ""):
                return line["log"].split("]): ")[1]
        return None


def request_parameters(**changes):
    """Returns the default parameters with changes; a change to None removes the parameter."""
    parameters = {"event": "end", "max_duration_time": 5, **changes}
    return {name: value for name, value in parameters.items() if value is not None}


def step(time, do, **members):
    return {"at": time, "do": do, **members}


def make_key(time, window):
    return step(time, "makeKey", window=window)


DISMISS = {"do": "dismiss", "by": "manager"}
OTHER_WINDOW = {"name": "other", "className": "OtherWindow"}
CHILD_WINDOW = {"name": "child", "parent": "player"}
WITH_CONTROLLER = {"contentViewController": "PlayerViewController"}
CONSENT_WINDOW = {"name": "consent", "contentViewController": "GDPRViewController"}
MODAL = {"presentation_mode": MODAL_WINDOW_MODE, "windows": [CHILD_WINDOW, OTHER_WINDOW]}

# For each row of the table "Windows, focus and closing": the steps, the other arguments of Play,
# and the expected `Play.outcome`.
WINDOW_ROWS = {
    "nothing": ([], {}, (5.1, 5.6)),
    "the covered window resigns key": ([step(1, "resignKey")], {}, (STAYS, NO_EVENT)),
    "the covered window becomes key again": (
        [step(1, "resignKey"), make_key(2.05, "player")], {}, (6.15, 6.65)),
    "another window of the host becomes key": (
        [make_key(1, "other"), make_key(2, "player")], {"windows": [OTHER_WINDOW]}, (6.1, 6.6)),
    "another window of the host is key, then a third window becomes key and resigns key": (
        [make_key(1, "other"), make_key(2, "child"), step(3, "resignKey")],
        {"windows": [OTHER_WINDOW, CHILD_WINDOW]}, (STAYS, NO_EVENT)),
    "the user switches to another application, and comes back": (
        [step(1, "deactivateApp"), step(2, "activateApp")], {}, (6.1, 6.6)),
    "the covered window is miniaturised": (
        [step(1, "miniaturize", window="player"), step(2, "deminiaturize", window="player")],
        {}, (STAYS, NO_EVENT)),
    "another window is miniaturised and deminiaturised": (
        [step(1, "miniaturize", window="other"), step(2, "deminiaturize", window="other")],
        {"windows": [OTHER_WINDOW]}, (5.1, 5.6)),
    "a child window of the covered window becomes key": (
        [make_key(1, "child"), make_key(2, "player")], {"windows": [CHILD_WINDOW]}, (6.1, 6.6)),
    "modal: the player window becomes key": ([make_key(1, "player")], MODAL, (5.1, 5.6)),
    "modal: a child window of the player window becomes key": (
        [make_key(1, "child")], MODAL, (5.1, 5.6)),
    "modal: a window of another class becomes key": (
        [make_key(1, "other")], MODAL, (STAYS, NO_EVENT)),
    "sheet: the player window becomes key": (
        [make_key(1, "player"), make_key(2, "sheet-1")],
        {"presentation_mode": SHEET_MODE, "player": WITH_CONTROLLER}, (6.1, 6.6)),
    "a consent dialog resigns key": (
        [step(1, "openWindow", **CONSENT_WINDOW), make_key(1, "consent"), make_key(2, "other")],
        {"windows": [OTHER_WINDOW]}, (6.1, 6.6)),
    "the window is dragged for a second": (
        [step(1.05, "runLoopMode", mode="eventTracking"), step(2.05, "runLoopMode", mode="default")],
        {}, (6.0, 6.5)),
    "the covered window is closed": ([step(1, "closeWindow", window="player")], {}, (1, 1.5)),
    "modal: the cover's window is closed": (
        [step(1, "closeWindow", window="modal-1")], MODAL, (1, 1.5)),
    "modal: the player window is closed": (
        [step(1, "closeWindow", window="player")], MODAL, (5.1, 5.6)),
    "the host dismisses while time is left": ([{"at": 1, **DISMISS}], {}, (5.1, 3.5)),
    "the host dismisses while time is left, and the window resigns key within 2 s": (
        [{"at": 1, **DISMISS}, step(1.5, "resignKey")], {}, (5.1, 3.5)),
    "the host dismisses while time is left and the user is away for more than 2 s": (
        [step(1, "resignKey"), {"at": 1.5, **DISMISS}, make_key(6, "player")], {}, (10.1, 7.5)),
    "skip mode: the host dismisses": ([{"at": 1, **DISMISS}], {}, (1, NO_EVENT)),
    "skip mode: the host dismisses while the user is away": (
        [step(1, "resignKey"), {"at": 1.5, **DISMISS}, make_key(6, "player")], {}, (6, NO_EVENT)),
    "skip mode: the time is used up": ([], {}, (5.1, NO_EVENT)),
    "the host dismisses the content itself": (
        [step(1, "dismiss", by="content")], {}, (1, 1.5)),
    "the host's delegate refuses when the time is used up": (
        [{"at": 8, **DISMISS}],
        {"viewDelegate": {"operations": ["canContentViewDisappear:"], "canDisappear": False}},
        (STAYS, NO_EVENT)),
    "something is presented on the cover when the time is used up": (
        [step(1, "presentOver"), make_key(1, "player"), step(7, "dismissOver"), {"at": 8, **DISMISS}],
        {}, (8, 8.5)),
    "the host deactivates the manager": ([step(1, "deactivate")], {}, (STAYS, NO_EVENT)),
}


class Requests(unittest.TestCase):
    def assert_times(self, times, expected_times):
        for time, expected in zip(times, expected_times):
            self.assertEqual(time is None, expected is None, (times, expected_times))
            if time is not None:
                self.assertAlmostEqual(time, expected, places=6)

    def test_each_row_about_windows_is_true(self):
        self.assertEqual([row[0] for row in rows("Windows, focus and closing")], list(WINDOW_ROWS))
        for row, (steps, play_arguments, expected) in WINDOW_ROWS.items():
            with self.subTest(row):
                parameters = request_parameters(mode="skip" if row.startswith("skip mode") else "forced")
                self.assert_times(Play(parameters, steps, **play_arguments).outcome, expected)

    def test_each_row_about_the_countdown_is_true(self):
        table = rows("The countdown")
        self.assertGreater(len(table), 5)
        for duration, dismissal in table:
            with self.subTest(duration):
                play = Play(request_parameters(max_duration_time=float(duration.strip("`"))))
                self.assert_times(play.outcome[:1], [float(dismissal.split()[0])])

    def test_each_row_about_modes_is_true(self):
        # A cell contains a JSON value in backticks or one of these words.
        values_of_words = {"missing": None, "anything else": "Skip"}  # only "skip" is skip mode
        for value, effect in rows("`mode`"):
            with self.subTest(value):
                cell = value.split(",")[0]  # removes ", exactly" after `"skip"`
                mode = values_of_words[cell] if cell in values_of_words else json.loads(cell.strip("`"))
                outcome = Play(request_parameters(mode=mode), [{"at": 1, **DISMISS}]).outcome
                may_dismiss_early = "any time" in effect
                self.assert_times(outcome, (1, NO_EVENT) if may_dismiss_early else (5.1, 3.5))

    def test_each_row_about_event_and_max_duration_time_is_true(self):
        # A cell contains a JSON value in backticks or one of these words.
        values_of_words = {"missing": None, "a text": "some_event"}
        for parameter in "event", "max_duration_time":
            for value, effect in rows(f"`{parameter}`"):
                with self.subTest(parameter=parameter, value=value):
                    is_word = value in values_of_words
                    parameter_value = values_of_words[value] if is_word else json.loads(value.strip("`"))
                    play = Play(request_parameters(**{"max_duration_time": 2, parameter: parameter_value}))
                    refusal = re.match("Refused: `(.*)`", effect)
                    self.assertEqual(play.refusal, refusal and refusal[1])
                    expected_failure = re.search("the content fails with", effect)
                    has_failed = play.lines[-1]["inspect"]["content"]["state"] == STATE_FAILED
                    self.assertEqual(has_failed, expected_failure is not None)
                    if not refusal and not expected_failure:
                        self.assert_times(play.outcome, (2, 2.5))
                        event = play.first_line("event")["event"]
                        self.assertEqual(event, parameter_value if parameter == "event" else "end")

    def test_the_refusal_of_a_request_without_parameters_is_on_the_page(self):
        self.assertIn(f"refused with `{Play(None).refusal}`", PAGE)

    def test_the_log_lines_of_a_refusal_and_a_presentation_are_on_the_page(self):
        refusal_line = Play(request_parameters(event=None)).first_line("log")["log"]
        presentation_line = Play(request_parameters()).first_line("log")["log"]
        for line in refusal_line, presentation_line:
            self.assertIn(f"\n    {line}\n", PAGE)


if __name__ == "__main__":
    unittest.main()
